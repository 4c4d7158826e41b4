#include "asn1/der/der_analyzer.h"
#include "asn1/der/der_cursor.h"
#include "asn1/oid/oid_names.h"
#include "asn1/template/template_cache.h"
#include "asn1/text/unicode_text.h"
#include "core/base/ascii.h"
#include "core/diagnostics/auto_logger.h"
#include "core/text/hex.h"
#include "pki/x509/attribute_text.h"
#include "pki/x509/name.h"

#include <algorithm>
#include <string>

namespace ccrypto {

namespace {

struct NameStringRow {
    const char* dotted;
    CCryptoString NameStrings::*text;
};

/// The fixed order.
constexpr NameStringRow nameStringRows[] = {
    {"2.5.4.6", &NameStrings::country},
    {"2.5.4.8", &NameStrings::state},
    {"2.5.4.7", &NameStrings::locality},
    {"2.5.4.10", &NameStrings::organisation},
    {"2.5.4.11", &NameStrings::organisationalUnit},
    {"2.5.4.65", &NameStrings::pseudonym},
    {"2.5.4.12", &NameStrings::title},
    {"2.5.4.5", &NameStrings::serialNumber},
    {"2.5.4.42", &NameStrings::givenName},
    {"2.5.4.4", &NameStrings::surname},
    {"1.2.840.113549.1.9.1", &NameStrings::email},
    {"2.5.4.3", &NameStrings::commonName},
};

bool IsPrintableCharacter(char character)
{
    constexpr std::string_view punctuation = " '()+,-./:=?";
    return IsAsciiLetter(character) || IsDigit(character) || punctuation.find(character) != std::string_view::npos;
}

bool IsPrintableText(std::string_view text)
{
    return std::ranges::all_of(text, IsPrintableCharacter);
}

bool IsNumericText(std::string_view text)
{
    return std::ranges::all_of(text, [](char character) { return IsDigit(character) || character == ' '; });
}

bool IsVisibleText(std::string_view text)
{
    return std::ranges::all_of(text, [](char character) { return character >= 0x20 && character < 0x7F; });
}

struct TextType {
    std::string_view word;
    bool (*holds)(std::string_view text);
};

constexpr TextType textTypes[] = {
    {"UTF8String", IsUtf8},           {"PrintableString", IsPrintableText}, {"IA5String", IsAscii},
    {"NumericString", IsNumericText}, {"VisibleString", IsVisibleText},     {"BMPString", IsUtf8},
};

/// The text between the quotes of the template language. Nothing but letters, digits and blanks stands for itself, so that no text
/// ends the quotes.
std::string QuotedText(std::string_view text)
{
    std::string quoted;
    for (const char character : text) {
        const auto octet = static_cast<std::uint8_t>(character);
        if (IsAsciiLetter(character) || IsDigit(character) || character == ' ')
            quoted += character;
        else
            quoted.append("\\x").append(HexText(std::span(&octet, 1)).view());
    }
    return quoted;
}

std::string_view DefaultType(std::string_view text)
{
    if (text.find('@') != std::string_view::npos)
        return "IA5String";
    return IsPrintableText(text) ? "PrintableString" : "UTF8String";
}

/// One element of a string type, by parsing its text; null for what does not read back as the same text.
ElementNodePtr BuildText(std::string_view typeWord, const CCryptoString& text)
{
    // Without its kind, text beyond ASCII may be taken for characters of eight bits, and none is written in two octets each.
    const char* const kind = IsAscii(text.view()) && typeWord != "BMPString" ? "" : "%utf8Text";
    const std::string item = std::string(typeWord) + "{" + kind + "\"" + QuotedText(text.view()) + "\"}";
    ElementNodePtr node = ParseInlineTemplate(item);
    const element der = node != nullptr ? CCryptoParser::ToDer(node.get()) : element();
    DerCursor cursor(der.bytes());
    const DerItem value = cursor.read();
    const bool isSame = value && cursor.atEnd() && AttributeText(UniversalType(value.identifier), value.value) == text;
    return isSame ? std::move(node) : nullptr;
}

} // namespace

bool AddTextAttribute(CCrypto_X509_ValueList& name, const Oid& oid, const CCryptoString& text, std::string_view typeWord)
{
    CCryptoAutoLogger logger("AddTextAttribute");
    if (oid.isNone())
        return logger.fail(false, "An attribute of a name has no object identifier");
    if (text.isEmpty()) {
        const char* const type = FindOidName(oid.dotted().view());
        return logger.fail(false, "A name has nothing for %s", type != nullptr ? type : oid.dotted().c_str());
    }
    const std::string_view word = typeWord.empty() ? DefaultType(text.view()) : typeWord;
    const auto type = std::ranges::find(textTypes, word, &TextType::word);
    if (type == std::end(textTypes))
        return logger.fail(false, "Not a type of text: %s", CCryptoString(word).c_str());
    if (!type->holds(text.view()))
        return logger.fail(false, "A text has characters that %s does not hold", type->word.data());
    const ElementNodePtr node = BuildText(word, text);
    if (node == nullptr)
        return logger.fail(false, "A text cannot be written as %s", type->word.data());
    auto value = std::make_unique<CCrypto_X509_Value>(oid, node.get());
    value->setRelativeName(name.isEmpty() ? 0 : name.values().back()->relativeName() + 1);
    name.add(std::move(value));
    return logger.setResult(true);
}

bool BuildName(const NameStrings& strings, CCrypto_X509_ValueList& name)
{
    CCryptoAutoLogger logger("BuildName");
    name.clear();
    for (const NameStringRow& row : nameStringRows) {
        const CCryptoString& text = strings.*row.text;
        if (!text.isEmpty() && !AddTextAttribute(name, Oid::FromDotted(row.dotted), text)) {
            name.clear();
            return logger.setResult(false);
        }
    }
    return logger.setResult(true);
}

} // namespace ccrypto
