#include "pki/cms/tree_filling.h"

#include "asn1/der/der_parser.h"
#include "asn1/template/template_cache.h"

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

bool FillDer(CCryptoParser& parser, std::string_view name, const element& der)
{
    return FillTree(parser, name, CCryptoDERParser().Decode(der.bytes()));
}

CCryptoParser TemplateToFill(const char* templateText)
{
    const elementNode* const items = ParsedTemplate(templateText);
    return CCryptoParser(items != nullptr ? items->clone(true) : nullptr);
}

} // namespace ccrypto
