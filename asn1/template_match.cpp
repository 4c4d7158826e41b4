#include "asn1/template_match.h"

#include "asn1/bracket_list.h"
#include "asn1/der_analyzer.h"

#include <algorithm>

namespace {

constexpr std::uint32_t deepestTemplate = 160;

bool IsPlaceholder(const elementNode& node)
{
    return node.type() == ElementType::identifier;
}

/// A value kind that the template gives for the data to be equal to.
bool IsConstant(const elementNode& node)
{
    switch (node.type()) {
    case ElementType::text:
    case ElementType::utf8Text:
    case ElementType::quotedText:
    case ElementType::bytes:
    case ElementType::integer:
    case ElementType::truth:
        return true;
    default:
        return false;
    }
}

bool SameBytes(const element& left, const element& right)
{
    return left.negative() == right.negative() && left.view() == right.view();
}

/// The bytes of an integer without the zero octet that keeps it positive.
std::string_view Magnitude(const element& value)
{
    std::string_view bytes = value.view();
    while (bytes.size() > 1 && bytes[0] == 0)
        bytes.remove_prefix(1);
    return bytes;
}

CCryptoString Describe(const elementNode& node)
{
    CCryptoString text = node.token().toString();
    if (IsTagClass(node.type())) {
        const element* const number = BracketNumber(node);
        text += number != nullptr ? CCryptoString("[") + number->toString() + "]" : CCryptoString("[]");
    }
    return text;
}

} // namespace

bool CCryptoTemplateMatch::Match(const elementNode* templateItems, const elementNode* data)
{
    bindings_.clear();
    failedItem_ = nullptr;
    failedData_ = nullptr;
    const elementNode* position = data;
    if (!matchList(templateItems, position, 0))
        return false;
    failedItem_ = nullptr;
    return true;
}

const TemplateBinding* CCryptoTemplateMatch::find(std::string_view name) const
{
    const auto found = std::ranges::find(bindings_, name, &TemplateBinding::name);
    return found != bindings_.end() ? &*found : nullptr;
}

CCryptoString CCryptoTemplateMatch::failedStep() const
{
    if (failedItem_ == nullptr)
        return {};
    const CCryptoString found =
        failedData_ != nullptr ? CCryptoString("the data holds ") + Describe(*failedData_) : "no data is left";
    return Describe(*failedItem_) + ": " + found;
}

void CCryptoTemplateMatch::bind(const elementNode& placeholder, const elementNode* node, bool withSiblings)
{
    bindings_.push_back({placeholder.token().view(), node, withSiblings});
}

bool CCryptoTemplateMatch::fail(const elementNode& item, const elementNode* data)
{
    failedItem_ = &item;
    failedData_ = data;
    return false;
}

bool CCryptoTemplateMatch::matchList(const elementNode* item, const elementNode*& data, std::uint32_t depth)
{
    for (; item != nullptr; item = item->next()) {
        if (!matchItem(*item, data, depth))
            return false;
    }
    return true;
}

bool CCryptoTemplateMatch::matchItem(const elementNode& item, const elementNode*& data, std::uint32_t depth)
{
    const bool isOptional = HasModifier(item, ElementType::optional);
    const std::size_t bound = bindings_.size();
    const elementNode* next = data;
    bool matched = false;
    if (depth >= deepestTemplate) {
        return fail(item, data);
    } else if (IsExcluded(item)) {
        matched = matchList(item.value(), next, depth + 1);
    } else if (data != nullptr && IsPlaceholder(item)) {
        bind(item, data, false);
        next = data->next();
        matched = true;
    } else if (data != nullptr && IsAsn1Type(item.type())) {
        matched = matchTyped(item, *data, depth);
        next = data->next();
    }
    if (matched) {
        data = next;
        return true;
    }
    bindings_.resize(bound);
    if (isOptional)
        return true;
    // What failed inside the item says more than that the item failed.
    return failedItem_ != nullptr && failedData_ != data ? false : fail(item, data);
}

bool CCryptoTemplateMatch::matchTyped(const elementNode& item, const elementNode& data, std::uint32_t depth)
{
    if (item.type() != data.type() || (IsTagClass(item.type()) && !matchTagNumber(item, data)))
        return fail(item, &data);
    if (item.type() == ElementType::bitString)
        return matchBitString(item, data, depth);
    return matchValue(item, data, depth);
}

bool CCryptoTemplateMatch::matchTagNumber(const elementNode& item, const elementNode& data)
{
    const element* const number = BracketNumber(data);
    const elementNode* first = item.brackets();
    if (first != nullptr && IsPlaceholder(*first) && !IsExcluded(item)) {
        bind(*first, data.find(LinkKind::brackets, ElementType::integer), false);
        return true;
    }
    const element* const wanted = BracketNumber(item);
    return wanted != nullptr && number != nullptr && wanted->toWord64() == number->toWord64();
}

bool CCryptoTemplateMatch::matchValue(const elementNode& item, const elementNode& data, std::uint32_t depth)
{
    const elementNode* const wanted = item.value();
    if (wanted == nullptr || item.type() == ElementType::asn1Null)
        return true;
    // A placeholder alone, plain or behind a wrapper that is left out, stands for the whole value.
    if (wanted->next() == nullptr) {
        if (IsPlaceholder(*wanted) && !HasModifier(*wanted, ElementType::optional)) {
            bind(*wanted, data.value(), true);
            return true;
        }
        if (IsExcluded(*wanted) && IsAsn1Type(wanted->type()))
            return matchValue(*wanted, data, depth + 1);
        if (IsConstant(*wanted))
            return matchConstant(item, wanted, data);
    }
    const elementNode* position = data.value();
    return matchList(wanted, position, depth + 1);
}

bool CCryptoTemplateMatch::matchBitString(const elementNode& item, const elementNode& data, std::uint32_t depth)
{
    const elementNode* const first = item.value();
    if (first == nullptr || first->next() == nullptr)
        return matchValue(item, data, depth);
    const elementNode* const number = data.find(LinkKind::brackets, ElementType::integer);
    if (IsPlaceholder(*first))
        bind(*first, number, false);
    else if (number == nullptr || number->token().toWord32() != first->token().toWord32())
        return fail(item, &data);

    // A number for a value says that there are no bits.
    const elementNode* value = data.value();
    if (value != nullptr && value->type() == ElementType::integer)
        value = nullptr;
    const elementNode& second = *first->next();
    if (IsPlaceholder(second)) {
        bind(second, value, true);
        return true;
    }
    return matchList(&second, value, depth + 1);
}

bool CCryptoTemplateMatch::matchConstant(const elementNode& item, const elementNode* constant, const elementNode& data)
{
    const elementNode* const value = data.value();
    const bool isInteger = constant->type() == ElementType::integer;
    const bool equal = value != nullptr && (isInteger ? constant->token().negative() == value->token().negative() &&
                                                            Magnitude(constant->token()) == Magnitude(value->token())
                                                      : SameBytes(constant->token(), value->token()));
    return equal || fail(item, &data);
}
