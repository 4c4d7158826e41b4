#include "core/log/log_writers.h"

#include "core/base/bounded_text.h"
#include "core/log/log.h"
#include "core/log/overlong_texts.h"

#include <cstdarg>

using namespace ccrypto;

void WriteLog_G(const char* format, ...)
{
    if (!logging::Shows(0))
        return;
    BoundedText text;
    std::va_list arguments;
    va_start(arguments, format);
    const bool fits = text.appendFormatted(format, arguments);
    va_end(arguments);
    logging::WriteLine(0, {}, fits ? text.view() : overlong::writeLogG);
}

void WriteErrorEx_G(const char* format, ...)
{
    if (!logging::Shows(0))
        return;
    BoundedText text;
    std::va_list arguments;
    va_start(arguments, format);
    const bool fits = text.append("ERROR: ") && text.appendFormatted(format, arguments);
    va_end(arguments);
    logging::WriteLine(0, {}, fits ? text.view() : overlong::writeErrorExG);
}
