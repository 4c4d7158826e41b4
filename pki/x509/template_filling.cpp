#include "pki/x509/template_filling.h"

#include "asn1/der/der_cursor.h"
#include "asn1/parser/parser.h"
#include "asn1/template/template_cache.h"
#include "asn1/tree/node_parts.h"
#include "asn1/types/asn1_object.h"

namespace ccrypto {

namespace {

/// What is constant in an optional item would be written without the value that it belongs to.
bool RemoveOptionalItem(CCryptoParser& parser, std::string_view name)
{
    elementNode* node = parser.index_node(name);
    while (node != nullptr && !HasModifier(*node, ElementType::optional))
        node = node->owner();
    return node == nullptr || parser.remove_node(node);
}

} // namespace

element FillTemplate(const char* templateText, std::initializer_list<TemplateFilling> fillings)
{
    const elementNode* const items = ParsedTemplate(templateText);
    if (items == nullptr)
        return {};
    CCryptoParser parser(items->clone(true));
    for (const TemplateFilling& filling : fillings) {
        const bool isDone =
            filling.value.isEmpty() ? RemoveOptionalItem(parser, filling.name) : parser.fill(filling.name, filling.value);
        if (!isDone)
            return {};
    }
    return parser.ToDer();
}

element SequenceOfItems(const element& items)
{
    return items.isEmpty() ? element() : FillTemplate("SEQUENCE[CONSTRUCTED]{items}", {{"items", Octets(items)}});
}

element ContentOf(const element& der)
{
    return OctetsOfSpan(DerCursor(der.bytes()).read().value);
}

} // namespace ccrypto
