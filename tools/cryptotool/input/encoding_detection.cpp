#include "tools/cryptotool/input/encoding_detection.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/der/pem.h"
#include "core/text/hex.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/file_input.h"

#include <algorithm>

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
    const bool isDecoded = DecodeBase64(text, bytes);
    if (isDecoded && !bytes.isEmpty())
        return TextDecoding::decoded;
    reason = isDecoded ? "it is empty" : LastReason("it is not base64");
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
        if (DecodeBase64(text, others) && IsWholeDer(others)) {
            bytes = std::move(others);
            return TextDecoding::decoded;
        }
    }
    if (isRead)
        return TextDecoding::decoded;
    reason = "hexadecimal text has an odd number of digits";
    return TextDecoding::broken;
}

bool IsText(std::string_view bytes)
{
    return std::ranges::all_of(bytes, [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return (byte >= 0x20 && byte != 0x7F) || (byte >= '\t' && byte <= '\r');
    });
}

std::string_view WithoutByteOrderMark(std::string_view text)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

bool SplitBlocks(element bytes, std::vector<DataBlock>& blocks, std::string& reason)
{
    const std::string_view text = WithoutByteOrderMark(bytes.view());
    if (text.empty()) {
        reason = "it is empty";
        return false;
    }
    // A file that begins as PEM is PEM, whatever follows.
    if (HasPemBlock(text) && (text.starts_with("-----BEGIN ") || IsText(text))) {
        if (ReadPem(text, blocks))
            return true;
        reason = LastReason("its PEM cannot be read");
        return false;
    }
    DataBlock block;
    const TextDecoding decoding = DecodeText(text, block.bytes, reason);
    if (decoding == TextDecoding::broken)
        return false;
    if (decoding == TextDecoding::none)
        block.bytes = std::move(bytes);
    blocks.push_back(std::move(block));
    return true;
}

bool ReadBlocks(Console& console, const std::string& name, std::vector<DataBlock>& blocks, std::string& reason)
{
    element bytes;
    return ReadWhole(console, name, bytes, reason) && SplitBlocks(std::move(bytes), blocks, reason);
}

} // namespace ccrypto
