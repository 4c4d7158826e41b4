#include "asn1/json/json_tree.h"

#include "asn1/json/json_lexer.h"
#include "asn1/template/value_notation.h"
#include "asn1/text/decimal.h"
#include "asn1/text/unicode_text.h"
#include "asn1/tree/item_list.h"

#include <algorithm>

namespace ccrypto {

namespace {

/// A value that JSON has a notation of its own for.
bool IsOrdinaryScalar(const elementNode& node)
{
    const element& value = node.token();
    switch (node.type()) {
    case ElementType::null:
        return IsBare(node);
    case ElementType::text:
        return IsBare(node) && IsAscii(value.view());
    case ElementType::utf8Text:
        return IsBare(node) && IsUtf8(value.view());
    case ElementType::characterData:
        return IsBare(node) && IsJsonNumberOfText(value);
    case ElementType::integer:
        return IsBare(node) && !DecimalFromSigned(value).isEmpty();
    case ElementType::truth:
        return IsBare(node) && IsPlainJsonTruth(value);
    default:
        return false;
    }
}

bool IsOrdinaryList(const elementNode* first, bool isObject, std::uint32_t depth);

/// An object, an array, or for a member a scalar, in the slots of a node.
bool HoldsOrdinaryValue(const elementNode& node, bool isMember, std::uint32_t depth)
{
    const elementNode* const scalar = node.shortValue();
    const elementNode* const array = node.brackets();
    const elementNode* const object = node.content();
    if (node.modifiers() != nullptr || node.operation() != nullptr)
        return false;
    if (scalar != nullptr)
        return isMember && array == nullptr && object == nullptr && scalar->next() == nullptr && IsOrdinaryScalar(*scalar);
    if (array == nullptr)
        return IsOrdinaryList(object, true, depth + 1);
    return object == nullptr && (IsEmptyJsonArray(array) || IsOrdinaryList(array, false, depth + 1));
}

bool IsOrdinaryList(const elementNode* first, bool isObject, std::uint32_t depth)
{
    if (depth >= maxTreeDepth)
        return false;
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        const bool isMember = node->type() == ElementType::identifier && IsUtf8(node->token().view());
        const bool fits =
            isObject ? isMember && HoldsOrdinaryValue(*node, true, depth)
                     : IsOrdinaryScalar(*node) || (node->type() == ElementType::none && HoldsOrdinaryValue(*node, false, depth));
        if (!fits)
            return false;
    }
    return true;
}

/// Whether the magnitude of a decimal number is below 2^53.
bool IsExactAsDouble(std::string_view decimal)
{
    constexpr std::string_view largest = "9007199254740991";
    const std::string_view digits = decimal.substr(decimal.starts_with('-') ? 1 : 0);
    return digits.size() < largest.size() || (digits.size() == largest.size() && digits <= largest);
}

} // namespace

bool HasPlainJsonValue(const elementNode& item)
{
    return item.content() == nullptr && IsSingleValue(item.shortValue());
}

bool IsJsonNumberOfText(const element& value)
{
    element number;
    return value.type() == ElementType::characterData && ccrypto::internal::IsJsonNumber(value.view()) &&
           !SignedFromDecimal(value.view(), number);
}

bool IsPlainJsonTruth(const element& value)
{
    return value.type() == ElementType::truth && value == element::FromTruth(value.toTruth());
}

JsonScalar JsonItemScalar(const element& value, const elementNode* owner)
{
    if (value.type() == ElementType::null)
        return {"null"};
    if (IsPlainJsonTruth(value))
        return {value.toTruth() ? "true" : "false"};
    CCryptoString decimal = DecimalNotation(value, owner);
    if (!decimal.isEmpty() && IsExactAsDouble(decimal.view()))
        return {std::move(decimal)};
    const bool isNumber = !decimal.isEmpty() && HoldsNumber(owner);
    return {isNumber ? std::move(decimal) : StringNotation(value, owner), true};
}

JsonScalar JsonOrdinaryScalar(const element& value)
{
    if (value.type() == ElementType::null)
        return {"null"};
    if (IsPlainJsonTruth(value))
        return {value.toTruth() ? "true" : "false"};
    CCryptoString decimal = DecimalNotation(value, nullptr);
    if (!decimal.isEmpty())
        return {std::move(decimal)};
    return {CCryptoString(value.view()), !IsJsonNumberOfText(value)};
}

bool IsJsonItemString(const element& value, const elementNode* owner, std::string_view text)
{
    const JsonScalar printed = JsonItemScalar(value, owner);
    const bool isNumber = value.type() == ElementType::integer && HoldsNumber(owner);
    return printed.text.view() == text && (printed.isString || isNumber);
}

bool IsJsonScalar(const elementNode& node)
{
    return IsBareValue(node) || (node.type() == ElementType::null && IsBare(node));
}

bool IsEmptyJsonArray(const elementNode* list)
{
    return list != nullptr && list->type() == emptyJsonArray && list->next() == nullptr && IsBare(*list);
}

bool IsOrdinaryJson(const elementNode* first)
{
    if (first->type() == ElementType::identifier)
        return IsOrdinaryList(first, true, 0);
    return first->next() == nullptr && first->content() == nullptr && IsOrdinaryList(first, false, 0);
}

} // namespace ccrypto
