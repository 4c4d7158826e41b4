#pragma once

#include "core/base/c_text.h"
#include "core/diagnostics/error_handler.h"
#include "core/log/log.h"

#include <cstdarg>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ccrypto {

/// What a logger writes, and how an operation ends that gives no result; see CCryptoAutoLogger.
enum class LoggerMode : std::uint32_t {
    resultExpected = 0,      ///< an entry line; an operation without a result ends as a warning
    resultOptional = 1,      ///< an entry line; an operation without a result ends well
    quietResultExpected = 2, ///< the exit line alone; an operation without a result ends as a warning
    quiet = 3,               ///< the exit line alone; an operation without a result ends well
};

} // namespace ccrypto

/// The scoped logger that every operation opens on entry, named with its qualified name: an entry line, messages, and an exit line
/// that says how the operation ended; nesting is indentation. It carries the operation's result, too, whether logging is on or
/// off.
///
/// In the modes with an entry line the exit line ends with " - OUT", " - OUT WITH WARNING" or " - OUT WITH ERROR", and the message
/// is a line of its own. In the quiet modes the exit line is the name, with the arguments in parentheses, and the message, or
/// " - OK", " - WARNING" or " - ERROR". Quiet is meant for short operations with arguments: without them, nothing separates the
/// message from the name.
///
/// Where a result is expected, an operation that gives none ends "WITH WARNING", which makes forgotten results visible. With the
/// log on, the argument text of the modes with an entry line is the first piece of the message, so the message at exit repeats it.
/// With the log off the status is none at first in every mode.
///
/// Loggers nest strictly on their thread. A text of more than 1024 bytes, terminator included, is not cut: a fixed text stands in
/// its place; only the message at exit is cut, at 1011 bytes. Nothing secret goes into any of these texts.
///
/// With level 0 opening and closing a logger without arguments are a handful of instructions: nothing is written, locked, formatted
/// or allocated. What opens with level 0 is not counted as nested, and closes at depth 0 when the log was turned on meanwhile.
class CCryptoAutoLogger : public CCryptoErrorHandler {
public:
    /// `name` is not copied and must outlive the logger.
    explicit CCryptoAutoLogger(const char* name, ccrypto::LoggerMode mode = ccrypto::LoggerMode::resultExpected)
        : name_(name), mode_(mode)
    {
        if (ccrypto::logging::Level() != 0) [[unlikely]]
            open();
    }
    /// `format`, which may be null, gives the argument text of the entry line, and in the quiet modes of the exit line.
    CCryptoAutoLogger(const char* name, ccrypto::LoggerMode mode, const char* format, ...) CORE_PRINTF_FORMAT(4, 5);
    ~CCryptoAutoLogger() override
    {
        if (shown_ != nullptr || ccrypto::logging::Level() != 0) [[unlikely]]
            close();
    }

    /// The operation ends well with `result`: status none. \return `result` unchanged.
    template <typename Result>
    Result succeed(Result result)
    {
        return setRetValue(ccrypto::ResultStatus::none, std::move(result));
    }

    /// The operation fails with `result`: status error, and the formatted text says why. \return `result` unchanged.
    template <typename Result>
    Result fail(Result result)
    {
        return setRetValue(ccrypto::ResultStatus::error, std::move(result));
    }
    template <typename Result>
    Result fail(Result result, const char* format, ...) CORE_PRINTF_FORMAT(3, 4);

    /// As `fail`, for an operation that ends without success while its caller goes on: status warning.
    template <typename Result>
    Result warn(Result result)
    {
        return setRetValue(ccrypto::ResultStatus::warning, std::move(result));
    }
    template <typename Result>
    Result warn(Result result, const char* format, ...) CORE_PRINTF_FORMAT(3, 4);

    /// Sets the status to `level`, with a formatted text when one is given and `level` is not none. \return `result` unchanged.
    template <typename Result>
    Result setRetValue(ccrypto::ResultStatus level, Result result)
    {
        status_ = level;
        if (level == ccrypto::ResultStatus::error) [[unlikely]]
            setErrorWithoutText();
        return result;
    }
    template <typename Result>
    Result setRetValue(ccrypto::ResultStatus level, Result result, const char* format, ...) CORE_PRINTF_FORMAT(4, 5);
    template <typename Result>
    Result setRetValue(ccrypto::ResultStatus level, Result result, const CCryptoString& message)
    {
        setStatus(level, message);
        return result;
    }

    /// Status none when `ok`, else warning. \return `ok`.
    bool setResult(bool ok)
    {
        status_ = ok ? ccrypto::ResultStatus::none : ccrypto::ResultStatus::warning;
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
    void close() noexcept;
    /// Ends the operation without a line or a lock; the thread's counter keeps it.
    void abandon()
    {
        shown_ = nullptr;
        depth_ = tooDeep;
    }

private:
    [[gnu::noinline]] void open() noexcept;
    // Not inlined, and without exceptions: opening with the log off then saves no registers for them.
    [[gnu::noinline]] void openWithArguments(const char* format, std::va_list arguments) noexcept;
    void enter() noexcept;
    void writeEntry();
    void writeExit();
    void writeMessage();
    void writeRule();
    void writeLine(std::string_view text);
    std::string_view exitSuffix() const;
    const char* operation() const override { return name_ != nullptr ? name_ : ""; }
    /// The operation, in the quiet modes with its arguments.
    const char* name() const;
    void setStatus(ccrypto::ResultStatus level, const CCryptoString& text);
    void setStatusFormatted(ccrypto::ResultStatus level, const char* format, std::va_list arguments);
    bool quiet() const { return mode_ == ccrypto::LoggerMode::quiet || mode_ == ccrypto::LoggerMode::quietResultExpected; }

    /// What is kept while the log is on.
    struct Shown {
        CCryptoString nameWithArgs; ///< empty when there are no arguments, or they are in the message
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
    ccrypto::LoggerMode mode_;
    std::uint32_t depth_ = 0;
    /// There while the thread's counter includes this operation.
    std::unique_ptr<Shown, DeleteShown> shown_;
};

namespace ccrypto::internal {

// g++ for Windows finds the arguments after an empty class, such as std::nullopt, in the wrong places.
template <typename Result>
concept BeforeArguments = !std::is_empty_v<Result>;

} // namespace ccrypto::internal

template <typename Result>
Result CCryptoAutoLogger::fail(Result result, const char* format, ...)
{
    static_assert(ccrypto::internal::BeforeArguments<Result>);
    std::va_list arguments;
    va_start(arguments, format);
    setStatusFormatted(ccrypto::ResultStatus::error, format, arguments);
    va_end(arguments);
    return result;
}

template <typename Result>
Result CCryptoAutoLogger::warn(Result result, const char* format, ...)
{
    static_assert(ccrypto::internal::BeforeArguments<Result>);
    std::va_list arguments;
    va_start(arguments, format);
    setStatusFormatted(ccrypto::ResultStatus::warning, format, arguments);
    va_end(arguments);
    return result;
}

template <typename Result>
Result CCryptoAutoLogger::setRetValue(ccrypto::ResultStatus level, Result result, const char* format, ...)
{
    static_assert(ccrypto::internal::BeforeArguments<Result>);
    std::va_list arguments;
    va_start(arguments, format);
    setStatusFormatted(level, format, arguments);
    va_end(arguments);
    return result;
}
