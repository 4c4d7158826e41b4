#include "bench/pki/path_bundle.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace ccrypto {

PathBundle ReadPathBundle(const char* keys)
{
    std::ifstream file(std::string(PATH_BUNDLES) + "/path_" + keys + ".bundle", std::ios::binary);
    const BundleBytes all((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    PathBundle bundle;
    std::size_t position = 0;
    for (BundleBytes* const part : {&bundle.leaf, &bundle.authority, &bundle.anchor, &bundle.anchorList, &bundle.authorityList}) {
        // A kind, two octets of length, and the DER.
        if (all.size() < position + 3) {
            std::fprintf(stderr, "no bundle of a path: %s\n", keys);
            std::exit(1);
        }
        const std::size_t length = all[position + 1] * 256U + all[position + 2];
        position += 3;
        part->assign(all.begin() + static_cast<std::ptrdiff_t>(position),
                     all.begin() + static_cast<std::ptrdiff_t>(position + length));
        position += length;
    }
    return bundle;
}

} // namespace ccrypto
