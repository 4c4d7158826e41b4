#include "core/diagnostics/auto_logger.h"

#include "core/diagnostics/failure.h"
#include "core/diagnostics/operation_records.h"
#include "core/log/log_text.h"
#include "core/memory/out_of_memory.h"
#include "core/platform/clock.h"

#include <algorithm>
#include <cstdio>
#include <limits>

using namespace ccrypto;

namespace {

// Written in place of a text beyond logTextLimit.
constexpr std::string_view overlongArguments =
    "00:00:00 CCryptoAutoLogger::CCryptoAutoLogger big log message. It will not be displayed. Please check your code.";
constexpr std::string_view overlongResult =
    "00:00:00 CCryptoAutoLogger::setRetValue Very big log message. It will not be displayed. Please check your code.";

/// With the longest word before it, such a message fits the limit of a line.
constexpr std::size_t maxExitMessage = 1011;

constexpr std::string_view outerRule = "========================================";
constexpr std::string_view innerRule = "----------------------------------------";

struct StatusWords {
    std::string_view exit;        ///< after the name, in the modes with an entry line
    std::string_view quietExit;   ///< after the name, in the quiet modes
    std::string_view messageWord; ///< before the message; empty when it is not written
};

constexpr StatusWords statusWords[] = {
    {" - OUT", " - OK", ""},
    {" - OUT", " - OK", "INFO: "},
    {" - OUT WITH WARNING", " - WARNING", "WARNING: "},
    {" - OUT WITH ERROR", " - ERROR", "ERROR: "},
};

// Without the leading blank, which makes a number outside of the enumeration visible.
constexpr StatusWords unknownStatusWords = {"- OUT", "- OUT", ""};

const StatusWords& WordsOf(ResultStatus status)
{
    const auto number = static_cast<std::size_t>(status);
    return number < std::size(statusWords) ? statusWords[number] : unknownStatusWords;
}

} // namespace

CCryptoAutoLogger::CCryptoAutoLogger(const char* name, ccrypto::LoggerMode mode, const char* format, ...) : name_(name), mode_(mode)
{
    if (logging::Level() == 0) [[likely]]
        return;
    if (format == nullptr) {
        open();
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    openWithArguments(format, arguments);
    va_end(arguments);
}

void CCryptoAutoLogger::DeleteShown::operator()(Shown* shown) const
{
    delete shown;
}

void CCryptoAutoLogger::enter() noexcept
{
    ccrypto::internal::OrEndOutOfMemory([this] {
        depth_ = logging::EnterOperation();
        shown_.reset(new Shown);
    });
}

void CCryptoAutoLogger::open() noexcept
{
    enter();
    writeEntry();
}

void CCryptoAutoLogger::openWithArguments(const char* format, std::va_list arguments) noexcept
{
    enter();

    LogText formatted;
    const std::string_view text = formatted.appendFormatted(format, arguments) ? formatted.view() : overlongArguments;
    if (quiet()) {
        shown_->nameWithArgs.append(name()).append("(").append(text).append(") : ");
    } else {
        addText(text);
    }
    writeEntry();
}

void CCryptoAutoLogger::writeEntry()
{
    const bool warnsUnlessSet = mode_ == ccrypto::LoggerMode::resultExpected || mode_ == ccrypto::LoggerMode::quietResultExpected;
    status_ = warnsUnlessSet ? ResultStatus::warning : ResultStatus::none;
    if (!quiet()) {
        if (message().isEmpty())
            WriteLog("%s - IN", name());
        else
            WriteLog("%s(%s) - IN", name(), message().c_str());
    }
    shown_->timed = logging::Profiling();
    if (shown_->timed)
        shown_->startTime = platform::MonotonicMilliseconds();
}

void CCryptoAutoLogger::close() noexcept
{
    if (shown_ != nullptr)
        logging::LeaveOperation();
    if (logging::Shows(depth_))
        writeExit();
    abandon();
}

void CCryptoAutoLogger::writeExit()
{
    if (shown_ != nullptr && shown_->timed) {
        const std::int64_t elapsed =
            std::min<std::int64_t>(platform::MonotonicMilliseconds() - shown_->startTime, std::numeric_limits<std::int32_t>::max());
        std::snprintf(shown_->timingPrefix, sizeof shown_->timingPrefix, "%9d ms: ", static_cast<int>(elapsed));
    }
    if (status_ == ResultStatus::error) {
        CCryptoString chain(name());
        if (!message().isEmpty())
            chain.append(":").append(message().view());
        ccrypto::internal::StartLastErrorText(chain.view());
    }
    if (name()[0] != '\0') {
        const std::string_view suffix = exitSuffix();
        WriteLog("%s%.*s", name(), static_cast<int>(suffix.size()), suffix.data());
    }
    if (!quiet())
        writeMessage();
    writeRule();
}

std::string_view CCryptoAutoLogger::exitSuffix() const
{
    if (!quiet())
        return WordsOf(status_).exit;
    return message().isEmpty() ? WordsOf(status_).quietExit : message().view();
}

void CCryptoAutoLogger::writeMessage()
{
    const std::string_view word = WordsOf(status_).messageWord;
    if (word.empty() || message().isEmpty())
        return;
    LogText text;
    text.append(word);
    text.append(message().view().substr(0, maxExitMessage));
    writeLine(text.view());
}

void CCryptoAutoLogger::writeRule()
{
    if (depth_ == 0)
        writeLine(outerRule);
    else if (depth_ == 1)
        writeLine(innerRule);
}

void CCryptoAutoLogger::writeLine(std::string_view text)
{
    logging::WriteLine(depth_, shown_ != nullptr ? shown_->timingPrefix : "", text);
}

const char* CCryptoAutoLogger::name() const
{
    return shown_ != nullptr && !shown_->nameWithArgs.isEmpty() ? shown_->nameWithArgs.c_str() : operation();
}

void CCryptoAutoLogger::setStatus(ResultStatus level, const CCryptoString& text)
{
    if (level == ResultStatus::info)
        setInfo(text);
    else if (level == ResultStatus::warning)
        setWarning(text);
    else if (level == ResultStatus::error)
        setError(text);
    else
        status_ = level;
}

void CCryptoAutoLogger::setStatusFormatted(ResultStatus level, const char* format, std::va_list arguments)
{
    if (level == ResultStatus::none || format == nullptr) {
        setRetValue(level, 0);
        return;
    }
    LogText text;
    const bool fits = text.appendFormatted(format, arguments);
    setStatus(level, CCryptoString(fits ? text.view() : overlongResult));
}
