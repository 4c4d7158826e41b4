#include "tools/cryptotool/io/text_decoding.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/der/pem.h"
#include "core/text/hex.h"

using namespace ccrypto;

namespace ccrypto {

namespace {

struct HexReading {
    bool isHex = false;
    bool isMarked = false; ///< with colons, commas or "0x", which base64 does not have
    std::string digits;
};

HexReading ReadHexText(std::string_view text)
{
    constexpr std::string_view separatingBlanks = " \t\r\n\f\v";
    HexReading reading;
    bool isGroupStart = true;
    while (!text.empty()) {
        const char character = text.front();
        const bool isPrefix = isGroupStart && (text.starts_with("0x") || text.starts_with("0X"));
        const bool isSeparator = character == ':' || character == ',';
        if (!isPrefix && !isSeparator && !IsHexDigit(character) && separatingBlanks.find(character) == std::string_view::npos)
            return {};
        reading.isMarked = reading.isMarked || isPrefix || isSeparator;
        isGroupStart = !isPrefix && !IsHexDigit(character);
        if (!isPrefix && !isGroupStart)
            reading.digits += character;
        text.remove_prefix(isPrefix ? 2 : 1);
    }
    reading.isHex = !reading.digits.empty();
    return reading;
}

/// Whether the bytes are elements, one after the other, to their end. What is inside of them is not looked at.
bool IsWholeDer(const element& bytes)
{
    CCryptoDERAnalyzer analyzer(bytes.bytes(), false);
    DerHeader header;
    std::uint32_t position = 0;
    while (position < bytes.length()) {
        if (analyzer.read(position, bytes.length(), header) != CCryptoDERAnalyzer::Result::element)
            return false;
        position = header.valueStart + header.length;
    }
    return !bytes.isEmpty();
}

TextDecoding DecodeAsBase64(std::string_view text, element& bytes, std::string& reason)
{
    if (!DecodeBase64(text, bytes, reason))
        return TextDecoding::broken;
    if (!bytes.isEmpty())
        return TextDecoding::decoded;
    reason = "it is empty";
    return TextDecoding::broken;
}

} // namespace

TextDecoding DecodeText(std::string_view text, element& bytes, std::string& reason)
{
    const HexReading hex = ReadHexText(text);
    const bool isBase64 = IsBase64Text(text);
    if (!hex.isHex)
        return isBase64 ? DecodeAsBase64(text, bytes, reason) : TextDecoding::none;
    const bool isRead = BytesFromHex(hex.digits, bytes);
    if (isBase64 && !hex.isMarked && !(isRead && IsWholeDer(bytes))) {
        element others;
        if (DecodeBase64(text, others, reason) && IsWholeDer(others)) {
            bytes = std::move(others);
            return TextDecoding::decoded;
        }
    }
    reason = "hexadecimal text has an odd number of digits";
    return isRead ? TextDecoding::decoded : TextDecoding::broken;
}

} // namespace ccrypto
