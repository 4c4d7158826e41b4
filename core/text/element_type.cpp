#include "core/text/element_type.h"

#include <array>

namespace ccrypto {

namespace {

struct TokenSpelling {
    ElementType type;
    const char* text;
};

constexpr TokenSpelling tokenSpellings[] = {
    {ElementType::null, "null"},
    {ElementType::optional, "OPTIONAL"},
    {ElementType::include, "include"},
    {ElementType::caseWord, "case"},
    {ElementType::comma, ","},
    {ElementType::period, "."},
    {ElementType::semicolon, ";"},
    {ElementType::colon, ":"},
    {ElementType::backslash, "\\"},
    {ElementType::solidus, "/"},
    {ElementType::exclamation, "!"},
    {ElementType::percent, "%"},
    {ElementType::equals, "="},
    {ElementType::equal, "=="},
    {ElementType::notEqual, "!="},
    {ElementType::greater, ">"},
    {ElementType::greaterOrEqual, ">="},
    {ElementType::less, "<"},
    {ElementType::lessOrEqual, "<="},
    {ElementType::plus, "+"},
    {ElementType::increment, "++"},
    {ElementType::minus, "-"},
    {ElementType::decrement, "--"},
    {ElementType::asterisk, "*"},
    {ElementType::divide, "/"},
    {ElementType::logicalOr, "||"},
    {ElementType::logicalAnd, "&&"},
    {ElementType::leftBrace, "{"},
    {ElementType::rightBrace, "}"},
    {ElementType::leftBracket, "["},
    {ElementType::rightBracket, "]"},
    {ElementType::leftParenthesis, "("},
    {ElementType::rightParenthesis, ")"},
    {ElementType::application, "APPLICATION"},
    {ElementType::contextSpecific, "CONTEXT_SPECIFIC"},
    {ElementType::privateClass, "PRIVATE"},
    {ElementType::boolean, "BOOLEAN"},
    {ElementType::asn1Integer, "INTEGER"},
    {ElementType::bitString, "BIT_STRING"},
    {ElementType::octetString, "OCTET_STRING"},
    {ElementType::asn1Null, "NULL"},
    {ElementType::objectIdentifier, "OBJECT_IDENTIFIER"},
    {ElementType::objectDescriptor, "ObjectDescriptor"},
    {ElementType::external, "EXTERNAL"},
    {ElementType::real, "REAL"},
    {ElementType::enumerated, "ENUMERATED"},
    {ElementType::utf8String, "UTF8String"},
    {ElementType::sequence, "SEQUENCE"},
    {ElementType::set, "SET"},
    {ElementType::numericString, "NumericString"},
    {ElementType::printableString, "PrintableString"},
    {ElementType::teletexString, "TeletexString"},
    {ElementType::videotexString, "VideotexString"},
    {ElementType::ia5String, "IA5String"},
    {ElementType::utcTime, "UTCTime"},
    {ElementType::generalizedType, "GeneralizedType"},
    {ElementType::graphicsString, "GraphicsString"},
    {ElementType::visibleString, "VisibleString"},
    {ElementType::generalString, "GeneralString"},
    {ElementType::universalString, "UniversalString"},
    {ElementType::bmpString, "BMPString"},
    {ElementType::primitive, "PRIMITIVE"},
    {ElementType::implicit, "IMPLICIT"},
    {ElementType::explicitTag, "EXPLICIT"},
    {ElementType::constructed, "CONSTRUCTED"},
};

constexpr std::size_t codeCount = static_cast<std::size_t>(ElementType::constructed) + 1;

constexpr auto textByCode = [] {
    std::array<const char*, codeCount> texts{};
    for (const auto& [type, text] : tokenSpellings)
        texts[static_cast<std::size_t>(type)] = text;
    return texts;
}();

} // namespace

const char* TokenText(ElementType type)
{
    const auto code = static_cast<std::size_t>(type);
    return code < codeCount ? textByCode[code] : nullptr;
}

} // namespace ccrypto
