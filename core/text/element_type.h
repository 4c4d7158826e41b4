#pragma once

#include <cstdint>

// Windows' headers declare a global type `boolean`, which a scoped enumerator cannot clash with.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"

namespace ccrypto {

/// What an `element` is: a value of some kind, or a token of the template language. Codes 58 to 85 are the ASN.1 types; all fit a
/// byte.
enum class ElementType : std::uint32_t {
    none = 0,
    null = 1,
    identifier = 2,
    text = 4,       ///< 8-bit text
    quotedText = 5, ///< 8-bit text written in single quotes
    utf8Text = 6,
    bytes = 9,    ///< raw bytes, the kind of a byte buffer
    truth = 12,   ///< one byte, 0 or not
    integer = 13, ///< big-endian magnitude, the sign beside it
    optional = 15,
    include = 16,
    caseWord = 18,
    comma = 20,
    period = 21,
    semicolon = 22,
    colon = 23,
    backslash = 24,
    solidus = 25,
    exclamation = 26,
    percent = 27,
    characterData = 33, ///< text between markup
    equals = 36,
    equal = 37,
    notEqual = 38,
    greater = 40,
    greaterOrEqual = 41,
    less = 42,
    lessOrEqual = 43,
    plus = 44,
    increment = 45,
    minus = 46,
    decrement = 47,
    asterisk = 48,
    divide = 49,
    logicalOr = 50,
    logicalAnd = 51,
    leftBrace = 52,
    rightBrace = 53,
    leftBracket = 54,
    rightBracket = 55,
    leftParenthesis = 56,
    rightParenthesis = 57,
    application = 58,
    contextSpecific = 59,
    privateClass = 60,
    boolean = 61,
    asn1Integer = 62,
    bitString = 63,
    octetString = 64,
    asn1Null = 65,
    objectIdentifier = 66,
    objectDescriptor = 67,
    external = 68,
    real = 69,
    enumerated = 70,
    utf8String = 71,
    sequence = 72,
    set = 73,
    numericString = 74,
    printableString = 75,
    teletexString = 76,
    videotexString = 77,
    ia5String = 78,
    utcTime = 79,
    generalizedType = 80,
    graphicsString = 81,
    visibleString = 82,
    generalString = 83,
    universalString = 84,
    bmpString = 85,
    primitive = 86,
    implicit = 87,
    explicitTag = 88,
    constructed = 89,
    endOfInput = 90,
};

#pragma GCC diagnostic pop

/// How a token is written; null for value kinds and unknown codes.
const char* TokenText(ElementType type);

} // namespace ccrypto
