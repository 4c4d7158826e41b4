#include "core/diagnostics/auto_logger.h"
#include "core/log/log_text.h"
#include "core/log/log_writers.h"

#include <algorithm>
#include <string>

using namespace ccrypto;

namespace {

// Written in place of a text beyond logTextLimit.
constexpr std::string_view overlongLog = "CCryptoAutoLogger::WriteLog: Very log message that is not displayed.";
constexpr std::string_view overlongError = "CCryptoAutoLogger::WriteError: Very log message that is not displayed.";
constexpr std::string_view overlongErrorEx = "CCryptoAutoLogger::WriteErrorEx: Very log message that is not displayed.,";

/// Bytes of a full row of a hex dump.
constexpr std::size_t hexDumpRow = 32;

constexpr std::uint32_t maxTextLine = 255;

bool IsText(std::string_view bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte == '\t' || byte == '\r' || byte == '\n' || (byte >= ' ' && byte != 0x7F);
    });
}

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

/// One row of a hex dump of 1 to 32 bytes: `depth` times "-", the bytes as two upper-case digits and a space each, spaces up to
/// column 98, a space, and the bytes as characters, "." for all but space to "Z" without "%" and "a" to "z". A row of fewer than
/// 32 bytes is padded to column 50 only, so its characters are not aligned with those of a full row.
void AppendHexDumpRow(std::uint32_t depth, std::span<const std::uint8_t> bytes, LogText& row)
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

/// The bytes as two lower-case digits each. \return false when they do not fit.
bool AppendHexadecimal(std::span<const std::uint8_t> bytes, LogText& text)
{
    std::string digits;
    if (bytes.size() < logTextLimit / 2) {
        for (const std::uint8_t byte : bytes)
            AppendHexByte(byte, "0123456789abcdef", digits);
        return text.append(digits);
    }
    return false;
}

} // namespace

void CCryptoAutoLogger::WriteLog(const char* format, ...)
{
    if (!logging::Shows(depth_))
        return;
    LogText text;
    std::va_list arguments;
    va_start(arguments, format);
    const bool fits = text.appendFormatted(format, arguments);
    va_end(arguments);
    writeLine(fits ? text.view() : overlongLog);
}

void CCryptoAutoLogger::WriteError(const char* format, ...)
{
    if (!logging::Shows(depth_))
        return;
    LogText text;
    std::va_list arguments;
    va_start(arguments, format);
    // The name and the text have 14 bytes less than the limit between them; the words around them and the terminator take 12.
    const bool fits = text.append("ERROR in ") && text.append(name()) && text.append(": ") &&
                      text.appendFormatted(format, arguments) && text.length() + 3 <= logTextLimit;
    va_end(arguments);
    writeLine(fits ? text.view() : overlongError);
}

void CCryptoAutoLogger::WriteErrorEx(const char* format, ...)
{
    if (!logging::Shows(depth_))
        return;
    LogText text;
    std::va_list arguments;
    va_start(arguments, format);
    const bool fits = text.append("ERROR: ") && text.appendFormatted(format, arguments);
    va_end(arguments);
    writeLine(fits ? text.view() : overlongErrorEx);
}

void CCryptoAutoLogger::WriteBytes(std::span<const std::uint8_t> bytes, bool inLine)
{
    if (!logging::Shows(depth_))
        return;
    if (inLine) {
        LogText text;
        writeLine(AppendHexadecimal(bytes, text) ? text.view() : overlongLog);
        return;
    }
    for (; !bytes.empty(); bytes = bytes.subspan(std::min(bytes.size(), hexDumpRow))) {
        LogText row;
        AppendHexDumpRow(depth_, bytes.first(std::min(bytes.size(), hexDumpRow)), row);
        WriteLog_G("%s", row.c_str());
    }
}

void CCryptoAutoLogger::WriteText(const CCryptoString& text)
{
    if (!logging::Shows(depth_))
        return;
    if (text.length() <= maxTextLine && IsText(text.view()))
        WriteLog("%s", text.c_str());
    else
        WriteBytes(text.data().bytes(), false);
}
