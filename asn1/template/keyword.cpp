#include "asn1/template/keyword.h"

#include <algorithm>
#include <array>

namespace ccrypto {

namespace {

struct Keyword {
    std::string_view word;
    ElementType type;
};

/// Sorted by the bytes of the words.
constexpr Keyword keywords[] = {
    {"APPLICATION", ElementType::application},
    {"BIT_STRING", ElementType::bitString},
    {"BMPString", ElementType::bmpString},
    {"BOOLEAN", ElementType::boolean},
    {"CONSTRUCTED", ElementType::constructed},
    {"CONTEXT_SPECIFIC", ElementType::contextSpecific},
    {"ENUMERATED", ElementType::enumerated},
    {"EXPLICIT", ElementType::explicitTag},
    {"EXTERNAL", ElementType::external},
    {"GeneralString", ElementType::generalString},
    {"GeneralizedType", ElementType::generalizedType},
    {"GraphicsString", ElementType::graphicsString},
    {"IA5String", ElementType::ia5String},
    {"IMPLICIT", ElementType::implicit},
    {"INTEGER", ElementType::asn1Integer},
    {"NULL", ElementType::asn1Null},
    {"NumericString", ElementType::numericString},
    {"OBJECT_IDENTIFIER", ElementType::objectIdentifier},
    {"OCTET_STRING", ElementType::octetString},
    {"OPTIONAL", ElementType::optional},
    {"ObjectDescriptor", ElementType::objectDescriptor},
    {"PRIMITIVE", ElementType::primitive},
    {"PRIVATE", ElementType::privateClass},
    {"PrintableString", ElementType::printableString},
    {"REAL", ElementType::real},
    {"SEQUENCE", ElementType::sequence},
    {"SET", ElementType::set},
    {"TeletexString", ElementType::teletexString},
    {"UTCTime", ElementType::utcTime},
    {"UTF8String", ElementType::utf8String},
    {"UniversalString", ElementType::universalString},
    {"VideoString", ElementType::videotexString},
    {"VideotexString", ElementType::videotexString},
    {"VisibleString", ElementType::visibleString},
    {"case", ElementType::caseWord},
    {"include", ElementType::include},
    {"null", ElementType::null},
};

static_assert(std::ranges::is_sorted(keywords, {}, &Keyword::word));

} // namespace

ElementType KeywordType(std::string_view word)
{
    const auto* const found = std::ranges::lower_bound(keywords, word, {}, &Keyword::word);
    return found != std::end(keywords) && found->word == word ? found->type : ElementType::identifier;
}

} // namespace ccrypto
