#pragma once

#include <cstdint>
#include <vector>

namespace ccrypto {

using BundleBytes = std::vector<std::uint8_t>;

/// Leaf, authority and anchor, and the lists of the two issuers; DER.
struct PathBundle {
    BundleBytes leaf;
    BundleBytes authority;
    BundleBytes anchor;
    BundleBytes anchorList;
    BundleBytes authorityList;
};

/// \param keys "p256" or "rsa2048". Ends the program when the data is not there.
[[nodiscard]] PathBundle ReadPathBundle(const char* keys);

} // namespace ccrypto
