#include "asn1/xml/push_xml_buffer.h"

#include "asn1/template/item_notation.h"
#include "asn1/template/value_notation.h"
#include "asn1/xml/xml_tree.h"

using namespace ccrypto;

namespace {

/// A short value that is written as the element's text.
bool HasTextValue(const elementNode& item)
{
    return item.content() == nullptr && IsSingleValue(item.shortValue());
}

bool IsOrdinaryText(const elementNode& node)
{
    return node.type() == ElementType::characterData;
}

} // namespace

bool CPushXmlBuffer::pushDocument(const elementNode* first)
{
    ordinary_ = IsOrdinaryXml(first);
    isRoot_ = true;
    PushText("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    if (ordinary_) {
        const bool pushed = pushNode({*first, nullptr, 0});
        PushText("\n");
        return pushed;
    }
    if (first->next() == nullptr && XmlItemTag(first->token()).view() != xmlItemTag)
        return pushNode({*first, nullptr, 0});
    PushText("<");
    PushText(xmlListTag);
    pushAttribute(xmlNamespaceAttribute, xmlNamespace);
    isRoot_ = false;
    PushText(">\n");
    if (!pushList(first, nullptr, 1))
        return false;
    PushText("</");
    PushText(xmlListTag);
    PushText(">\n");
    return true;
}

bool CPushXmlBuffer::pushHead(const Place& place)
{
    const elementNode& node = place.node;
    if (!ordinary_)
        return pushItemHead(place);
    if (IsOrdinaryText(node)) {
        pushEscaped(node.token().view(), false);
        return true;
    }
    PushText("<");
    PushText(node.token().view());
    for (const elementNode* attribute = node.brackets(); attribute != nullptr; attribute = attribute->next())
        pushAttribute(attribute->token().view(), attribute->shortValue()->token().view());
    PushText(node.content() != nullptr ? ">" : "/>");
    return true;
}

bool CPushXmlBuffer::pushItemHead(const Place& place)
{
    const elementNode& node = place.node;
    const CCryptoString tag = XmlItemTag(node.token());
    pushIndent(place.depth);
    PushText("<");
    PushText(tag.view());
    if (isRoot_)
        pushAttribute(xmlNamespaceAttribute, xmlNamespace);
    isRoot_ = false;
    if (IsBareValue(node)) {
        PushText(">");
        return true;
    }
    if (tag.view() == xmlItemTag)
        pushAttribute(xmlTokenAttribute, TokenNotation(node.token(), nullptr).view());
    if (!pushAttributes(node))
        return false;
    PushText(node.content() != nullptr ? ">\n" : HasTextValue(node) ? ">" : "/>\n");
    return true;
}

bool CPushXmlBuffer::pushAttributes(const elementNode& node)
{
    CCryptoString brackets;
    CCryptoString modifiers;
    CCryptoString value;
    CCryptoString operation;
    if (!AppendList(node.brackets(), nullptr, ",", brackets) || !AppendList(node.modifiers(), nullptr, ",", modifiers) ||
        !AppendValue(node, value) || !AppendOperation(node, operation))
        return fail(tooDeep);
    if (node.brackets() != nullptr)
        pushAttribute(xmlBracketsAttribute, brackets.view());
    if (node.modifiers() != nullptr)
        pushAttribute(xmlModifiersAttribute, modifiers.view());
    if (node.shortValue() != nullptr && !HasTextValue(node))
        pushAttribute(xmlValueAttribute, value.view());
    if (node.operation() != nullptr)
        pushAttribute(xmlOperationAttribute, operation.view());
    return true;
}

bool CPushXmlBuffer::pushValue(const Place& place)
{
    const elementNode& node = place.node;
    if (ordinary_)
        return true;
    if (IsBareValue(node))
        pushEscaped(XmlText(node.token(), place.owner).view(), false);
    else if (HasTextValue(node))
        pushEscaped(XmlText(node.shortValue()->token(), &node).view(), false);
    return true;
}

bool CPushXmlBuffer::pushEnd(const Place& place)
{
    const elementNode& node = place.node;
    const bool isOpen =
        ordinary_ ? node.content() != nullptr : node.content() != nullptr || IsBareValue(node) || HasTextValue(node);
    if (!isOpen)
        return true;
    if (!ordinary_ && node.content() != nullptr)
        pushIndent(place.depth);
    PushText("</");
    PushText(ordinary_ ? node.token().view() : XmlItemTag(node.token()).view());
    PushText(ordinary_ ? ">" : ">\n");
    return true;
}

void CPushXmlBuffer::pushAttribute(std::string_view name, std::string_view value)
{
    PushText(" ");
    PushText(name);
    PushText("=\"");
    pushEscaped(value, true);
    PushText("\"");
}

void CPushXmlBuffer::pushEscaped(std::string_view text, bool isAttribute)
{
    for (const char character : text) {
        switch (character) {
        case '&':
            PushText("&amp;");
            break;
        case '<':
            PushText("&lt;");
            break;
        case '>':
            PushText("&gt;");
            break;
        case '\r':
            PushText("&#13;");
            break;
        case '"':
            PushText(isAttribute ? "&quot;" : "\"");
            break;
        case '\n':
            PushText(isAttribute ? "&#10;" : "\n");
            break;
        case '\t':
            PushText(isAttribute ? "&#9;" : "\t");
            break;
        default:
            PushByte(static_cast<std::uint8_t>(character));
        }
    }
}
