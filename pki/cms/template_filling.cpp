#include "pki/cms/template_filling.h"

#include "asn1/der/der_parser.h"

namespace ccrypto {

bool FillTree(CCryptoParser& parser, std::string_view name, ElementNodePtr tree)
{
    elementNode* const placeholder = parser.index_node(name);
    return placeholder != nullptr && tree != nullptr && parser.replace_node(placeholder, std::move(tree)) != nullptr;
}

bool FillContentOf(CCryptoParser& parser, std::string_view name, const element& der)
{
    const ElementNodePtr tree = CCryptoDERParser().Decode(der.bytes());
    return tree != nullptr && FillTree(parser, name, tree->release(LinkKind::content));
}

bool FillMembers(CCryptoParser& parser, std::string_view name, CCryptoASN1Collection& collection)
{
    const ElementNodePtr tree = collection.BuildTree();
    return tree != nullptr && FillTree(parser, name, tree->release(LinkKind::content));
}

} // namespace ccrypto
