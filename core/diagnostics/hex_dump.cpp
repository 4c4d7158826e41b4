#include "core/diagnostics/hex_dump.h"

#include "core/base/bounded_text.h"

#include <string>

namespace ccrypto {

namespace {

constexpr std::size_t columnsOfFullRow = 98;
constexpr std::size_t columnsOfLastRow = 50;

void AppendHexByte(std::uint8_t byte, const char* digits, std::string& text)
{
    text += digits[byte >> 4];
    text += digits[byte & 0x0F];
}

char CharacterColumn(std::uint8_t byte)
{
    const bool shown = (byte >= ' ' && byte <= 'Z' && byte != '%') || (byte >= 'a' && byte <= 'z');
    return shown ? static_cast<char>(byte) : '.';
}

} // namespace

void AppendHexDumpRow(std::uint32_t depth, std::span<const std::uint8_t> bytes, BoundedText& row)
{
    std::string text(depth, '-');
    for (const std::uint8_t byte : bytes) {
        AppendHexByte(byte, "0123456789ABCDEF", text);
        text += ' ';
    }
    const std::size_t columns = bytes.size() == hexDumpRow ? columnsOfFullRow : columnsOfLastRow;
    if (text.size() < columns)
        text.resize(columns, ' ');
    text += ' ';
    for (const std::uint8_t byte : bytes)
        text += CharacterColumn(byte);
    row.append(text);
}

bool AppendHexadecimal(std::span<const std::uint8_t> bytes, BoundedText& text)
{
    std::string digits;
    if (bytes.size() < logTextLimit / 2) {
        for (const std::uint8_t byte : bytes)
            AppendHexByte(byte, "0123456789abcdef", digits);
        return text.append(digits);
    }
    return false;
}

} // namespace ccrypto
