#include "core/log/log_writers.h"

#include "core/log/log.h"
#include "core/log/log_text.h"

#include <cstdarg>
#include <string_view>

using namespace ccrypto;

namespace {

// Written in place of a text beyond logTextLimit.
constexpr std::string_view overlongLogG = "CCryptoAutoLogger::WriteLog_G: Very log message that is not displayed.";
constexpr std::string_view overlongErrorG = "CCryptoAutoLogger::WriteErrorEx_G: Very log message that is not displayed.";

} // namespace

void WriteLog_G(const char* format, ...)
{
    if (!logging::Shows(0))
        return;
    LogText text;
    std::va_list arguments;
    va_start(arguments, format);
    const bool fits = text.appendFormatted(format, arguments);
    va_end(arguments);
    logging::WriteLine(0, {}, fits ? text.view() : overlongLogG);
}

void WriteErrorEx_G(const char* format, ...)
{
    if (!logging::Shows(0))
        return;
    LogText text;
    std::va_list arguments;
    va_start(arguments, format);
    const bool fits = text.append("ERROR: ") && text.appendFormatted(format, arguments);
    va_end(arguments);
    logging::WriteLine(0, {}, fits ? text.view() : overlongErrorG);
}
