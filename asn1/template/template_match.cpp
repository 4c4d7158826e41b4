#include "asn1/template/template_match.h"

#include "asn1/der/ber_tlv.h"
#include "asn1/der/der_analyzer.h"
#include "asn1/der/encoding_form.h"
#include "asn1/der/push_der_buffer.h"
#include "asn1/template/value_notation.h"
#include "asn1/tree/node_parts.h"
#include "core/text/hex.h"

#include <algorithm>

using namespace ccrypto;

namespace {

constexpr std::uint32_t maxTemplateDepth = 160;

bool IsPlaceholder(const elementNode& node)
{
    return node.type() == ElementType::identifier;
}

/// A name that stands for all of a value.
bool StandsForValue(const elementNode& node)
{
    return IsPlaceholder(node) && node.next() == nullptr && node.value() == nullptr;
}

/// The name in a bracket list that stands for the tag number or the unused bits; null when there is none.
const elementNode* NumberPlaceholder(const elementNode& item)
{
    const elementNode* word = item.brackets();
    while (word != nullptr && (!IsPlaceholder(*word) || word->isNamed("EXCLUDE")))
        word = word->next();
    return word;
}

bool SameNumber(const element& left, const element& right)
{
    const auto magnitude = [](std::string_view bytes) {
        bytes.remove_prefix(std::min(bytes.find_first_not_of('\0'), bytes.size()));
        return bytes;
    };
    return left.negative() == right.negative() && magnitude(left.view()) == magnitude(right.view());
}

/// The item that closes the tag of a data object which begins with this item: the item itself, or the first with content after
/// octets without any. \return null when no data object is described.
const elementNode* TaggedItem(const elementNode& item)
{
    const elementNode* tagged = &item;
    while (tagged != nullptr && tagged->type() == ElementType::bytes && tagged->value() == nullptr)
        tagged = tagged->next();
    if (tagged == nullptr || tagged->value() == nullptr)
        return nullptr;
    const bool isNamed = tagged != &item && IsPlaceholder(*tagged);
    return isNamed || ccrypto::IsDataObject(*tagged) ? tagged : nullptr;
}

/// The value of a node; null where a data object is empty.
const elementNode* ContentsOf(const elementNode& data)
{
    const elementNode* const value = data.value();
    const bool isEmptyObject = ccrypto::IsDataObject(data) && IsBareValue(*value) && value->token().isEmpty();
    return isEmptyObject ? nullptr : value;
}

bool Agrees(const elementNode& item, const elementNode& data)
{
    if (!IsAsn1Type(item.type()) || item.type() != data.type())
        return false;
    if (!IsTagClass(item.type()))
        return true;
    const element* const wanted = BracketNumber(item);
    const element* const number = BracketNumber(data);
    if (number == nullptr)
        return false;
    return wanted != nullptr ? SameNumber(*wanted, *number) : NumberPlaceholder(item) != nullptr;
}

/// A node without its value: an element by its type, anything else by its length alone.
CCryptoString Describe(const elementNode& node)
{
    if (ccrypto::IsDataObject(node))
        return CCryptoString("#") + HexText(node.token().bytes());
    if (!IsAsn1Type(node.type()))
        return CCryptoString("a value of ") + element(node.token().length()).toString() + " bytes";
    CCryptoString text = TokenText(node.type());
    if (!IsTagClass(node.type()))
        return text;
    const element* const number = BracketNumber(node);
    const elementNode* const name = NumberPlaceholder(node);
    return text + "[" +
           (number != nullptr ? number->toString()
            : name != nullptr ? name->token().toString()
                              : CCryptoString()) +
           "]";
}

CCryptoString DescribeItem(const elementNode& item)
{
    return IsPlaceholder(item) ? item.token().toString() : Describe(item);
}

/// "SEQUENCE / CONTEXT_SPECIFIC[0] / item 3"
CCryptoString PlaceOf(const elementNode& item)
{
    std::uint32_t place = 1;
    const elementNode* first = &item;
    for (; first->previous() != nullptr; first = first->previous())
        ++place;
    CCryptoString text = CCryptoString("item ") + element(place).toString();
    for (const elementNode* owner = first->parent(); owner != nullptr; owner = first->parent()) {
        text = DescribeItem(*owner) + " / " + text;
        first = owner;
        while (first->previous() != nullptr)
            first = first->previous();
    }
    return text;
}

} // namespace

bool CCryptoTemplateMatch::Match(const elementNode* templateItems, const elementNode* data)
{
    ElementNodePtr kept = takeMade(data);
    clearBindings();
    if (kept != nullptr)
        keep(std::move(kept));
    failedStep_ = {};
    failedPlace_ = {};
    if (matchWhole(templateItems, data, 0))
        return true;
    failedStep_ = describeFailure();
    failedPlace_ = PlaceOf(*failedItem_);
    clearBindings();
    return false;
}

/// The tree that this match made and `data` is a part of; null for other data.
ElementNodePtr CCryptoTemplateMatch::takeMade(const elementNode* data)
{
    while (!made_.empty() && data != nullptr && data->parent() != nullptr)
        data = data->parent();
    const auto found = std::ranges::find(made_, data, &ElementNodePtr::get);
    return found != made_.end() ? std::move(*found) : nullptr;
}

void CCryptoTemplateMatch::clearBindings()
{
    bindings_.clear();
    made_.clear();
    following_ = nullptr;
    surplus_ = nullptr;
    failedItem_ = nullptr;
    failedData_ = nullptr;
}

const TemplateBinding* CCryptoTemplateMatch::find(std::string_view name) const
{
    const auto found = std::ranges::find(bindings_, name, &TemplateBinding::name);
    return found != bindings_.end() ? &*found : nullptr;
}

CCryptoString CCryptoTemplateMatch::describeFailure() const
{
    const CCryptoString item = DescribeItem(*failedItem_) + ": ";
    switch (failedReason_) {
    case Reason::noData:
        return item + "no data is left";
    case Reason::otherForm:
        return item + "the data holds a " +
               (FormOfData(*failedData_) == EncodingForm::constructed ? "constructed " : "primitive ") + Describe(*failedData_);
    case Reason::otherValue:
        return item + "the value differs";
    case Reason::tooDeep:
        return item + "the template is nested too deep";
    default:
        return item + "the data holds " + Describe(*failedData_);
    }
}

void CCryptoTemplateMatch::bind(const elementNode& placeholder, const elementNode* node, bool withSiblings)
{
    bindings_.push_back({placeholder.token().view(), node, withSiblings});
}

const elementNode* CCryptoTemplateMatch::keep(ElementNodePtr made)
{
    return made_.emplace_back(std::move(made)).get();
}

bool CCryptoTemplateMatch::fail(const elementNode& item, const elementNode* data, Reason reason)
{
    failedItem_ = &item;
    failedData_ = data;
    failedReason_ = reason;
    return false;
}

bool CCryptoTemplateMatch::matchWhole(const elementNode* items, const elementNode* data, std::uint32_t depth)
{
    const elementNode* position = data;
    if (!matchList(items, position, depth))
        return false;
    if (depth == 0)
        following_ = position;
    else if (surplus_ == nullptr)
        surplus_ = position;
    const bool tookNothing = items != nullptr && data != nullptr && position == data;
    return !tookNothing || fail(*items, data, Reason::otherType);
}

bool CCryptoTemplateMatch::matchList(const elementNode* item, const elementNode*& data, std::uint32_t depth)
{
    for (; item != nullptr; item = item->next()) {
        const elementNode* const tagged = TaggedItem(*item);
        if (tagged != nullptr ? !matchDataObject(*item, *tagged, data, depth) : !matchItem(*item, data, depth))
            return false;
        item = tagged != nullptr ? tagged : item;
    }
    return true;
}

bool CCryptoTemplateMatch::matchDataObject(const elementNode& item, const elementNode& tagged, const elementNode*& data,
                                           std::uint32_t depth)
{
    if (depth >= maxTemplateDepth)
        return fail(item, data, Reason::tooDeep);
    if (data == nullptr)
        return HasModifier(tagged, ElementType::optional) || fail(tagged, data, Reason::noData);
    if (!matchTag(item, tagged, *data))
        return HasModifier(tagged, ElementType::optional) || fail(tagged, data, Reason::otherType);
    if (!matchValue(tagged, tagged.value(), *data, ContentsOf(*data), depth))
        return false;
    data = data->next();
    return true;
}

bool CCryptoTemplateMatch::matchTag(const elementNode& item, const elementNode& tagged, const elementNode& data)
{
    if (!ccrypto::IsDataObject(data))
        return false;
    std::string_view tag = data.token().view();
    for (const elementNode* part = &item; part != &tagged; part = part->next()) {
        if (!tag.starts_with(part->token().view()))
            return false;
        tag.remove_prefix(part->token().length());
    }
    if (!IsPlaceholder(tagged))
        return tag == tagged.token().view();
    if (!tag.empty())
        bind(tagged, keep(elementNode::Make(element(tag.data(), static_cast<std::uint32_t>(tag.size())))), false);
    return !tag.empty();
}

bool CCryptoTemplateMatch::matchItem(const elementNode& item, const elementNode*& data, std::uint32_t depth)
{
    if (depth >= maxTemplateDepth)
        return fail(item, data, Reason::tooDeep);
    if (IsExcluded(item))
        return matchExcluded(item, data, depth);
    if (data == nullptr)
        return HasModifier(item, ElementType::optional) || fail(item, data, Reason::noData);
    if (IsPlaceholder(item)) {
        bind(item, data, false);
        if (item.value() != nullptr && !matchValue(item, item.value(), *data, ContentsOf(*data), depth))
            return false;
    } else if (!Agrees(item, *data)) {
        return HasModifier(item, ElementType::optional) || fail(item, data, Reason::otherType);
    } else if (!matchTyped(item, *data, depth)) {
        return false;
    }
    data = data->next();
    return true;
}

bool CCryptoTemplateMatch::matchExcluded(const elementNode& item, const elementNode*& data, std::uint32_t depth)
{
    const elementNode* const start = data;
    const std::size_t bound = bindings_.size();
    if (matchList(item.value(), data, depth + 1))
        return true;
    // Without a tag of its own the item is absent when its first element is.
    const bool isAbsent = failedData_ == start && (failedReason_ == Reason::otherType || failedReason_ == Reason::noData);
    if (!isAbsent || !HasModifier(item, ElementType::optional))
        return false;
    bindings_.resize(bound);
    return true;
}

bool CCryptoTemplateMatch::matchTyped(const elementNode& item, const elementNode& data, std::uint32_t depth)
{
    const EncodingForm wanted = FormOfItem(item);
    const EncodingForm form = FormOfData(data);
    if (wanted != EncodingForm::either && form != EncodingForm::either && wanted != form)
        return fail(item, &data, Reason::otherForm);
    if (item.type() == ElementType::bitString)
        return matchBitString(item, data, depth);
    const elementNode* const name = NumberPlaceholder(item);
    if (name != nullptr && IsTagClass(item.type()) && BracketNumber(item) == nullptr)
        bind(*name, data.find(LinkKind::brackets, ElementType::integer), false);
    return matchValue(item, item.value(), data, data.value(), depth);
}

/// The unused bits before a value that is not decoded any further; `value` then begins after them.
/// \return null when there are none.
const elementNode* CCryptoTemplateMatch::splitUnusedBits(const elementNode*& value)
{
    if (value == nullptr || !IsValue(value->type()) || value->token().isEmpty())
        return nullptr;
    const elementNode* const first = value;
    value = first->next();
    const element& octets = first->token();
    if (octets.length() == 1)
        return first;
    ElementNodePtr rest = elementNode::Make(element(octets.data() + 1, octets.length() - 1));
    if (value != nullptr)
        rest->set(LinkKind::sibling, value->clone(true));
    value = keep(std::move(rest));
    return keep(elementNode::Make(element(octets.data(), 1, ElementType::integer)));
}

bool CCryptoTemplateMatch::matchBitString(const elementNode& item, const elementNode& data, std::uint32_t depth)
{
    const elementNode* number =
        data.type() == ElementType::bitString ? data.find(LinkKind::brackets, ElementType::integer) : nullptr;
    const elementNode* value = data.value();
    if (number == nullptr)
        number = splitUnusedBits(value);
    else if (value != nullptr && value->type() == ElementType::integer)
        value = nullptr; // stands for the value where there are no bits
    const elementNode* wanted = item.value();
    if (wanted == nullptr && item.brackets() == nullptr)
        return true;
    if (number == nullptr)
        return fail(item, nullptr, Reason::noData);
    if (!matchUnusedBits(item, wanted, number))
        return false;

    const bool holdsUnusedBits = wanted != nullptr && wanted == item.value() && IsValue(wanted->type());
    if (!holdsUnusedBits || BracketNumber(item) != nullptr)
        return matchValue(item, wanted, data, value, depth);
    element octets;
    if (value != nullptr && !ValueOctets(data, value, octets))
        return fail(item, &data, Reason::otherValue);
    element all = number->token();
    all.append(octets.view());
    return matchOctets(item, wanted, data, std::move(all));
}

/// Moves `wanted` to what the template says of the bits themselves.
bool CCryptoTemplateMatch::matchUnusedBits(const elementNode& item, const elementNode*& wanted, const elementNode* number)
{
    if (const element* const bracketed = BracketNumber(item))
        return SameNumber(*bracketed, number->token()) || fail(item, number, Reason::otherValue);
    if (const elementNode* const name = NumberPlaceholder(item)) {
        bind(*name, number, false);
        return true;
    }
    if (wanted == nullptr || wanted->next() == nullptr)
        return true;
    if (IsPlaceholder(*wanted))
        bind(*wanted, number, false);
    else if (!IsValue(wanted->type()) || !SameNumber(wanted->token(), number->token()))
        return fail(item, number, Reason::otherValue);
    wanted = wanted->next();
    return true;
}

bool CCryptoTemplateMatch::matchValue(const elementNode& item, const elementNode* wanted, const elementNode& data,
                                      const elementNode* value, std::uint32_t depth)
{
    if (wanted == nullptr || item.type() == ElementType::asn1Null)
        return true;
    if (depth >= maxTemplateDepth)
        return fail(item, &data, Reason::tooDeep);
    const bool isAbsent = value == nullptr && HasModifier(*wanted, ElementType::optional);
    if (StandsForValue(*wanted)) {
        if (!isAbsent)
            bind(*wanted, value, true);
        return true;
    }
    const bool holdsObjects = ccrypto::IsDataObject(*wanted) || (value != nullptr && ccrypto::IsDataObject(*value));
    if (IsValue(wanted->type()) && !holdsObjects) {
        element octets;
        const bool written = value == nullptr || ValueOctets(data, value, octets);
        return written ? matchOctets(item, wanted, data, std::move(octets)) : fail(item, &data, Reason::otherValue);
    }
    if (wanted->next() == nullptr) {
        const bool isImplicitNull = wanted->type() == ElementType::asn1Null && value == nullptr && IsTagClass(item.type());
        if (isAbsent || isImplicitNull)
            return true;
        // What a wrapper that is left out holds stands for the value, too.
        const bool holdsValue =
            value == nullptr || !IsAsn1Type(value->type()) || (wanted->value() != nullptr && StandsForValue(*wanted->value()));
        if (IsExcluded(*wanted) && IsAsn1Type(wanted->type()) && holdsValue)
            return wanted->type() == ElementType::bitString ? matchBitString(*wanted, data, depth + 1)
                                                            : matchValue(*wanted, wanted->value(), data, value, depth + 1);
    }
    return matchWhole(wanted, value, depth + 1);
}

bool CCryptoTemplateMatch::matchOctets(const elementNode& item, const elementNode* wanted, const elementNode& data, element octets)
{
    for (; wanted != nullptr && IsValue(wanted->type()); wanted = wanted->next()) {
        element constant;
        if (!SingleValueOctets(item, *wanted, constant) || !octets.view().starts_with(constant.view()))
            return fail(item, &data, Reason::otherValue);
        octets.erase(0, constant.length());
    }
    if (wanted != nullptr && StandsForValue(*wanted)) {
        if (!octets.isEmpty() || !HasModifier(*wanted, ElementType::optional))
            bind(*wanted, octets.isEmpty() ? nullptr : keep(elementNode::Make(std::move(octets))), true);
        return true;
    }
    return (wanted == nullptr && octets.isEmpty()) || fail(item, &data, Reason::otherValue);
}
