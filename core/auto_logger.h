#pragma once

#include "core/error_handler.h"
#include "core/printf_format.h"

#include <cstdint>
#include <span>

/// The scoped logger that every operation opens on entry, named with its qualified name: an entry line, messages, and an exit line
/// that tells how the operation ended; nesting is indentation. It carries the operation's result, too, whether logging is on or
/// off.
///
/// | mode | entry line | status at first | exit line                                          | message lines at exit |
/// |------|------------|-----------------|----------------------------------------------------|-----------------------|
/// | 0    | yes        | warning         | " - OUT", " - OUT WITH WARNING", " - OUT WITH ERROR" | yes                 |
/// | 1    | yes        | none            | as mode 0                                          | yes                   |
/// | 2    | no         | warning         | the message, or " - OK", " - WARNING", " - ERROR"   | no                    |
/// | 3    | no         | none            | as mode 2                                          | no                    |
///
/// An operation left without a result so ends "WITH WARNING", which makes forgotten results visible. Loggers nest strictly on their
/// thread. With level 0 nothing is written, locked, formatted or allocated.
class CCryptoAutoLogger : public CCryptoErrorHandler {
public:
    /// `name` is not copied and must outlive the logger. `format`, which may be null, gives the argument text of the entry line.
    explicit CCryptoAutoLogger(const char* name, std::uint32_t mode = 0);
    CCryptoAutoLogger(const char* name, std::uint32_t mode, const char* format, ...) CORE_PRINTF_FORMAT(4, 5);
    ~CCryptoAutoLogger() override;
    CCryptoAutoLogger(const CCryptoAutoLogger&) = delete;
    CCryptoAutoLogger& operator=(const CCryptoAutoLogger&) = delete;

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
    Result setRetValue(std::int32_t level, Result result, const CCryptoString& message);

    /// Status 0 when `ok`, else warning. \return `ok`.
    bool setResult(bool ok)
    {
        status_ = ok ? 0 : 2;
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
    /// Text shorter than 256 bytes on one line, anything else as a hex dump.
    void WriteText(const CCryptoString& text);
};
