#include "core/base/bounded_text.h"
#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/hex_dump.h"
#include "core/log/log_writers.h"
#include "core/log/overlong_texts.h"

#include <algorithm>

using namespace ccrypto;

namespace {

constexpr std::uint32_t longestTextLine = 255;

bool IsText(std::string_view bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte == '\t' || byte == '\r' || byte == '\n' || (byte >= ' ' && byte != 0x7F);
    });
}

} // namespace

void CCryptoAutoLogger::WriteLog(const char* format, ...)
{
    if (!logging::Shows(depth_))
        return;
    BoundedText text;
    std::va_list arguments;
    va_start(arguments, format);
    const bool fits = text.appendFormatted(format, arguments);
    va_end(arguments);
    writeLine(fits ? text.view() : overlong::writeLog);
}

void CCryptoAutoLogger::WriteError(const char* format, ...)
{
    if (!logging::Shows(depth_))
        return;
    BoundedText text;
    std::va_list arguments;
    va_start(arguments, format);
    // The name and the text have 14 bytes less than the limit between them; the words around them and the terminator take 12.
    const bool fits = text.append("ERROR in ") && text.append(name()) && text.append(": ") &&
                      text.appendFormatted(format, arguments) && text.length() + 3 <= logTextLimit;
    va_end(arguments);
    writeLine(fits ? text.view() : overlong::writeError);
}

void CCryptoAutoLogger::WriteErrorEx(const char* format, ...)
{
    if (!logging::Shows(depth_))
        return;
    BoundedText text;
    std::va_list arguments;
    va_start(arguments, format);
    const bool fits = text.append("ERROR: ") && text.appendFormatted(format, arguments);
    va_end(arguments);
    writeLine(fits ? text.view() : overlong::writeErrorEx);
}

void CCryptoAutoLogger::WriteBytes(std::span<const std::uint8_t> bytes, bool inLine)
{
    if (!logging::Shows(depth_))
        return;
    if (inLine) {
        BoundedText text;
        writeLine(AppendHexadecimal(bytes, text) ? text.view() : overlong::writeLog);
        return;
    }
    for (; !bytes.empty(); bytes = bytes.subspan(std::min(bytes.size(), hexDumpRow))) {
        BoundedText row;
        AppendHexDumpRow(depth_, bytes.first(std::min(bytes.size(), hexDumpRow)), row);
        WriteLog_G("%s", row.c_str());
    }
}

void CCryptoAutoLogger::WriteText(const CCryptoString& text)
{
    if (!logging::Shows(depth_))
        return;
    if (text.length() <= longestTextLine && IsText(text.view()))
        WriteLog("%s", text.c_str());
    else
        WriteBytes(text.data().bytes(), false);
}
