#include "fuzz/asn1/forms.h"

using namespace ccrypto;

/// Any text: what is read prints, and the print is read and prints the same; so does its template text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CCryptoParser tree;
    if (tree.Load_XML_Memory(TextOf(data, size))) {
        RequireStableXml(tree);
        RequireStableJson(tree);
        RequireSameInText(tree, size);
    } else
        Require(tree.isEmpty());
    return 0;
}
