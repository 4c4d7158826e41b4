#include "asn1/json/push_json_buffer.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/json/json_parser.h"
#include "asn1/json/json_tree.h"
#include "asn1/template/item_notation.h"
#include "asn1/template/value_notation.h"

#include <cstdio>

using namespace ccrypto;

bool CPushJSONBuffer::pushDocument(const elementNode* first)
{
    ordinary_ = IsOrdinaryJson(first);
    const std::uint32_t before = buffer_.length();
    if (!pushRoot(first))
        return false;
    // A document of one member named like a type might be read as items.
    const bool mayBeItems = ordinary_ && first->type() == ElementType::identifier && first->next() == nullptr;
    if (!mayBeItems || !CCryptoJSONParser().IsItems(buffer_.view().substr(before)))
        return true;
    buffer_.resize(before);
    ordinary_ = false;
    return pushRoot(first);
}

bool CPushJSONBuffer::pushRoot(const elementNode* first)
{
    if (ordinary_ && first->type() != ElementType::identifier)
        return pushNode({*first, nullptr, 0});
    if (!ordinary_ && first->next() == nullptr && IsAsn1Type(first->type()))
        return pushNode({*first, nullptr, 0});
    PushText("{");
    if (!ordinary_) {
        pushString(jsonItemsName);
        PushText(": [");
    }
    PushText("\n");
    if (!pushList(first, nullptr, 1))
        return false;
    PushText(ordinary_ ? "}\n" : "]}\n");
    return true;
}

const elementNode* CPushJSONBuffer::listOf(const Place& place) const
{
    if (!ordinary_ || place.node.brackets() == nullptr)
        return place.node.content();
    return IsEmptyJsonArray(place.node.brackets()) ? nullptr : place.node.brackets();
}

bool CPushJSONBuffer::pushHead(const Place& place)
{
    const elementNode& node = place.node;
    pushIndent(place.depth);
    if (!ordinary_)
        return IsJsonScalar(node) || pushItemName(node);
    if (node.type() == ElementType::identifier) {
        pushString(node.token().view());
        PushText(": ");
    }
    return true;
}

bool CPushJSONBuffer::pushItemName(const elementNode& node)
{
    CCryptoString head;
    if (!AppendHead(node, nullptr, ItemPlace::alone, head) || !AppendTail(node, !HasPlainJsonValue(node), head))
        return fail(tooDeep);
    PushText("{");
    pushString(head.view());
    PushText(": ");
    return true;
}

bool CPushJSONBuffer::pushValue(const Place& place)
{
    const elementNode& node = place.node;
    if (ordinary_)
        pushOrdinaryValue(node);
    else if (IsJsonScalar(node))
        pushScalar(node.token(), place.owner);
    else if (HasPlainJsonValue(node))
        pushScalar(node.shortValue()->token(), &node);
    else if (node.content() == nullptr)
        PushText(IsListType(node.type()) ? "[]" : "null");
    else
        PushText("[");
    if (listOf(place) != nullptr)
        PushText("\n");
    return true;
}

void CPushJSONBuffer::pushOrdinaryValue(const elementNode& node)
{
    if (IsJsonScalar(node))
        pushScalar(node.token(), nullptr);
    else if (node.shortValue() != nullptr)
        pushScalar(node.shortValue()->token(), nullptr);
    else
        PushText(node.brackets() != nullptr ? "[" : "{");
}

bool CPushJSONBuffer::pushEnd(const Place& place)
{
    const elementNode& node = place.node;
    if (listOf(place) != nullptr)
        pushIndent(place.depth);
    if (!ordinary_)
        PushText(IsJsonScalar(node) ? "" : node.content() != nullptr ? "]}" : "}");
    else if (!IsJsonScalar(node) && node.shortValue() == nullptr)
        PushText(node.brackets() != nullptr ? "]" : "}");
    PushText(node.next() != nullptr && place.depth != 0 ? ",\n" : "\n");
    return true;
}

void CPushJSONBuffer::pushScalar(const element& value, const elementNode* owner)
{
    const JsonScalar scalar = ordinary_ ? JsonOrdinaryScalar(value) : JsonItemScalar(value, owner);
    if (scalar.isString)
        pushString(scalar.text.view());
    else
        PushText(scalar.text.view());
}

void CPushJSONBuffer::pushString(std::string_view text)
{
    PushByte('"');
    for (const char character : text) {
        const auto byte = static_cast<std::uint8_t>(character);
        constexpr std::string_view special = "\"\\\b\f\n\r\t";
        constexpr std::string_view letters = "\"\\bfnrt";
        const std::size_t index = special.find(character);
        if (index != std::string_view::npos) {
            PushByte('\\');
            PushByte(static_cast<std::uint8_t>(letters[index]));
        } else if (byte < 0x20 || byte == 0x7F) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", byte);
            PushText(escape);
        } else {
            PushByte(byte);
        }
    }
    PushByte('"');
}
