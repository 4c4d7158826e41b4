#include "fuzz/asn1/forms.h"

using namespace ccrypto;

/// A path, and after a line feed the template it walks: it ends in the tree or nowhere.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto [path, text] = SplitLine(TextOf(data, size));
    const CCryptoParser tree(ParseTemplate(text));
    if (tree.isEmpty())
        return 0;
    const elementNode* node = tree.find_path(path);
    while (node != nullptr && node->parent() != nullptr)
        node = node->parent();
    Require(node == nullptr || node == tree.root());
    return 0;
}
