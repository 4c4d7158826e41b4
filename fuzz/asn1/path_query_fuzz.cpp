#include "fuzz/asn1/forms.h"

namespace {

/// Templates inside a path are kept for the life of the process, and may name files.
bool IsTooMuch(std::string_view path)
{
    return path.size() > 256 || path.find("include") != std::string_view::npos;
}

} // namespace

/// A path, and behind a line feed the template it walks: it ends in the tree or nowhere.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto [path, text] = SplitLine(TextOf(data, size));
    const CCryptoParser tree(ParseTemplate(text));
    if (tree.isEmpty() || IsTooMuch(path))
        return 0;
    const elementNode* node = tree.find_path(path);
    while (node != nullptr && node->parent() != nullptr)
        node = node->parent();
    Require(node == nullptr || node == tree.root());
    return 0;
}
