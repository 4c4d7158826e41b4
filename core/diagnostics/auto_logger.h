#pragma once

#include "core/base/printf_format.h"
#include "core/diagnostics/error_handler.h"
#include "core/log/log.h"

#include <cstdarg>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <utility>

/// The scoped logger that every operation opens on entry, named with its qualified name: an entry line, messages, and an exit line
/// that tells how the operation ended; nesting is indentation. It carries the operation's result, too, whether logging is on or
/// off.
///
/// | mode | entry line | status at first | exit line                                            | message lines at exit |
/// |------|------------|-----------------|------------------------------------------------------|-----------------------|
/// | 0    | yes        | warning         | " - OUT", " - OUT WITH WARNING", " - OUT WITH ERROR" | yes                   |
/// | 1    | yes        | none            | as mode 0                                            | yes                   |
/// | 2    | no         | warning         | the message, or " - OK", " - WARNING", " - ERROR"    | no                    |
/// | 3    | no         | none            | as mode 2                                            | no                    |
///
/// An operation left without a result so ends "WITH WARNING", which makes forgotten results visible. With the log on, the argument
/// text of modes 0 and 1 is the first piece of the message, so that the message lines at exit repeat it. With the log off the
/// status is none at first in every mode.
///
/// Loggers nest strictly on their thread. A text of more than 1024 bytes, terminator included, is not cut: a fixed text stands in
/// its place; only the message at exit is cut, at 1011 bytes. Nothing secret goes into any of these texts.
///
/// With level 0 opening and closing a logger without arguments are a handful of instructions: nothing is written, locked, formatted
/// or allocated. What opens with level 0 is not counted as nested, and closes at depth 0 when the log was turned on meanwhile.
class CCryptoAutoLogger : public CCryptoErrorHandler {
public:
    /// `name` is not copied and must outlive the logger.
    explicit CCryptoAutoLogger(const char* name, std::uint32_t mode = 0) : name_(name), mode_(mode)
    {
        if (logging::Level() != 0) [[unlikely]]
            open();
    }
    /// `format`, which may be null, gives the argument text of the entry line, and in modes 2 and 3 of the exit line.
    CCryptoAutoLogger(const char* name, std::uint32_t mode, const char* format, ...) CORE_PRINTF_FORMAT(4, 5);
    ~CCryptoAutoLogger() override
    {
        if (shown_ != nullptr || logging::Level() != 0) [[unlikely]]
            close();
    }

    /// Sets the status to `level`, with a formatted text when one is given and `level` is not 0. \return `result` unchanged.
    template <typename Result>
    Result setRetValue(std::int32_t level, Result result)
    {
        status_ = level;
        return result;
    }
    template <typename Result>
    Result setRetValue(std::int32_t level, Result result, const char* format, ...) CORE_PRINTF_FORMAT(4, 5);
    template <typename Result>
    Result setRetValue(std::int32_t level, Result result, const CCryptoString& message)
    {
        setStatus(level, message);
        return result;
    }

    /// Status none when `ok`, else warning. \return `ok`.
    bool setResult(bool ok)
    {
        status_ = static_cast<std::int32_t>(ok ? ResultStatus::none : ResultStatus::warning);
        return ok;
    }

    /// One line at the logger's depth.
    void WriteLog(const char* format, ...) CORE_PRINTF_FORMAT(2, 3);
    /// One line "ERROR in NAME: " and the text.
    void WriteError(const char* format, ...) CORE_PRINTF_FORMAT(2, 3);
    /// One line "ERROR: " and the text.
    void WriteErrorEx(const char* format, ...) CORE_PRINTF_FORMAT(2, 3);
    /// The bytes: on one line in lower-case hexadecimal, or as a hex dump of 32 bytes a row.
    void WriteBytes(std::span<const std::uint8_t> bytes, bool inLine);
    /// Text shorter than 256 bytes on one line, anything else as a hex dump. A string with control characters other than the tab
    /// and line ends is not text.
    void WriteText(const CCryptoString& text);

protected:
    /// Ends the operation ahead of the destructor, which then writes nothing.
    void close();
    /// Ends the operation without a line or a lock; the thread's counter keeps it.
    void abandon()
    {
        shown_ = nullptr;
        depth_ = tooDeep;
    }

private:
    void open();
    void openWithArguments(const char* format, std::va_list arguments);
    void enter();
    void writeEntry();
    void writeExit();
    void writeMessage();
    void writeRule();
    void writeLine(std::string_view text);
    std::string_view exitSuffix() const;
    const char* name() const;
    void setStatus(std::int32_t level, const CCryptoString& text);
    void setStatusFormatted(std::int32_t level, const char* format, std::va_list arguments);
    bool quiet() const { return mode_ >= 2; }

    /// What is kept while the log is on.
    struct Shown {
        CCryptoString nameWithArgs;
        bool timed = false;
        std::int64_t startTime = 0;
        char timingPrefix[20] = {};
    };
    /// Out of line, to keep every scope that holds a logger short.
    struct DeleteShown {
        void operator()(Shown* shown) const;
    };

    /// Of an operation that has ended: no level shows it.
    static constexpr std::uint32_t tooDeep = 0xFFFFFFFF;

    const char* name_;
    std::uint32_t mode_;
    std::uint32_t depth_ = 0;
    /// There while the thread's counter includes this operation.
    std::unique_ptr<Shown, DeleteShown> shown_;
};

template <typename Result>
Result CCryptoAutoLogger::setRetValue(std::int32_t level, Result result, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    setStatusFormatted(level, format, arguments);
    va_end(arguments);
    return result;
}
