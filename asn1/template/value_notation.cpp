#include "asn1/template/value_notation.h"

#include "asn1/text/decimal.h"
#include "asn1/text/unicode_text.h"
#include "core/text/hex.h"

#include <algorithm>

namespace ccrypto {

namespace {

struct KindName {
    std::string_view name;
    ElementType type;
    bool negative;
};

constexpr KindName kindNames[] = {
    {"", ElementType::bytes, false},
    {"text", ElementType::text, false},
    {"quotedText", ElementType::quotedText, false},
    {"utf8Text", ElementType::utf8Text, false},
    {"characterData", ElementType::characterData, false},
    {"integer", ElementType::integer, false},
    {"-integer", ElementType::integer, true},
    {"truth", ElementType::truth, false},
};

constexpr std::string_view characterDataMark = "characterData'";

bool IsMarkedCharacterData(std::string_view text)
{
    return text.size() > characterDataMark.size() && text.starts_with(characterDataMark) && text.ends_with('\'');
}

bool IsInQuotes(std::string_view text)
{
    return text.size() >= 2 && text.starts_with('\'') && text.ends_with('\'');
}

/// The kind of "KIND#hex"; null for any other text.
const KindName* MarkedKind(std::string_view text)
{
    const std::size_t mark = text.find('#');
    if (mark == std::string_view::npos || (text.size() - mark) % 2 == 0)
        return nullptr;
    const auto isLowerHex = [](char digit) { return (digit >= '0' && digit <= '9') || (digit >= 'a' && digit <= 'f'); };
    const auto* const kind = std::ranges::find(kindNames, text.substr(0, mark), &KindName::name);
    return kind != std::end(kindNames) && std::ranges::all_of(text.substr(mark + 1), isLowerHex) ? kind : nullptr;
}

/// Whether plain text needs the "\" to be read as such.
bool LooksMarked(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of('\\'), text.size()));
    return IsInQuotes(text) || IsMarkedCharacterData(text) || MarkedKind(text) != nullptr;
}

/// Whether text gives the same value and the same DER when it is read back from its characters.
bool SurvivesAsCharacters(const element& value, const elementNode* owner)
{
    const bool ascii = IsAscii(value.view());
    const bool isTwoByte = owner != nullptr && owner->type() == ElementType::bmpString;
    if (value.type() == ElementType::text)
        return ascii;
    return IsUtf8(value.view()) && (!isTwoByte || (value.type() == ElementType::utf8Text) != ascii);
}

/// Whether plain text would be read as a number.
bool ReadsAsNumber(std::string_view text, const elementNode* owner)
{
    element number;
    return HoldsNumber(owner) && SignedFromDecimal(text, number);
}

} // namespace

bool HoldsNumber(const elementNode* owner)
{
    return owner != nullptr && IsNumberType(owner->type());
}

bool FindValueKind(std::string_view name, ElementType& type, bool& negative)
{
    const auto* const kind = std::ranges::find(kindNames, name, &KindName::name);
    if (name.empty() || kind == std::end(kindNames))
        return false;
    type = kind->type;
    negative = kind->negative;
    return true;
}

std::string_view ValueKindName(const element& value)
{
    const auto* const kind = std::ranges::find_if(
        kindNames, [&value](const KindName& each) { return each.type == value.type() && each.negative == value.negative(); });
    return kind != std::end(kindNames) ? kind->name : std::string_view();
}

CCryptoString MarkedNotation(const element& value)
{
    return CCryptoString(ValueKindName(value)).append("#").append(HexText(value.bytes()).view());
}

CCryptoString StringNotation(const element& value, const elementNode* owner)
{
    const std::string_view text = value.view();
    switch (value.type()) {
    case ElementType::quotedText:
        return IsUtf8(text) ? CCryptoString("'").append(text).append("'") : MarkedNotation(value);
    case ElementType::characterData:
        return IsUtf8(text) ? CCryptoString(characterDataMark).append(text).append("'") : MarkedNotation(value);
    case ElementType::text:
    case ElementType::utf8Text:
        if (SurvivesAsCharacters(value, owner) && !ReadsAsNumber(text, owner))
            return CCryptoString(LooksMarked(text) ? "\\" : "").append(text);
        return MarkedNotation(value);
    default:
        return MarkedNotation(value);
    }
}

element FromStringNotation(std::string_view text, const elementNode* owner)
{
    element value;
    if (HoldsNumber(owner) && SignedFromDecimal(text, value))
        return value;
    if (const KindName* const kind = MarkedKind(text)) {
        // MarkedKind has seen that the digits make whole bytes.
        static_cast<void>(BytesFromHex(text.substr(text.find('#') + 1), value));
        value.setType(kind->type);
        value.setNegative(kind->negative);
        return value;
    }
    if (IsMarkedCharacterData(text)) {
        text.remove_prefix(characterDataMark.size());
        value = element(text.data(), static_cast<std::uint32_t>(text.size() - 1), ElementType::characterData);
        return value;
    }
    if (IsInQuotes(text)) {
        value = element(text.substr(1, text.size() - 2));
        value.setType(ElementType::quotedText);
        return value;
    }
    const bool isEscaped = text.starts_with('\\') && LooksMarked(text);
    value = element(text.substr(isEscaped ? 1 : 0));
    value.setType(IsAscii(value.view()) ? ElementType::text : ElementType::utf8Text);
    return value;
}

element WithoutSignOctet(const element& value, ElementType owner)
{
    const bool hasSignOctet = value.length() > 1 && value.data()[0] == 0 && value.data()[1] >= 0x80 && !value.negative();
    return IsNumberType(owner) && hasSignOctet ? element(value.data() + 1, value.length() - 1, ElementType::integer) : value;
}

CCryptoString DecimalNotation(const element& value, const elementNode* owner)
{
    if (value.type() != ElementType::integer)
        return {};
    return DecimalFromSigned(owner != nullptr ? WithoutSignOctet(value, owner->type()) : value);
}

} // namespace ccrypto
