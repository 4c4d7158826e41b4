#pragma once

#include "core/string.h"

#include <cstdint>

/// How an operation ended, from good to bad.
enum class ResultStatus : std::int32_t { none = 0, info = 1, warning = 2, error = 3 };

/// The result of one operation: a status, a text and the last system error. Texts given one after the other are joined by a blank.
class CCryptoErrorHandler {
public:
    CCryptoErrorHandler() = default;
    virtual ~CCryptoErrorHandler() = default;

    std::int32_t status() const { return status_; }
    const CCryptoString& message() const { return message_; }
    /// The last system error code recorded; 0 when none was.
    std::uint32_t errorCode() const { return errorCode_; }

    void setInfo(const CCryptoString& text);
    void setWarning(const CCryptoString& text);
    /// The process-wide last-error text becomes `text` too.
    void setError(const CCryptoString& text);
    /// Records the system's error `code` with the system's own text for it, or " Last error (%08X)" when it has none.
    void setWindowsError(std::uint32_t code);
    /// The same for the calling thread's last error.
    void setLastWindowsError();

    /// The first error of the current chain: "operation:message" of the innermost operation that failed. A copy.
    static CCryptoString LastErrorText();
    static void ClearLastErrorText();

    /// Reads texts for error codes from a document of the form
    /// `<settings><ErrorCode_0x8010000C>No card in the reader</ErrorCode_0x8010000C></settings>`; codes are decimal, or hexadecimal
    /// behind "0x". setWindowsError prefers these texts to the system's. A malformed item is reported as
    /// "Incorrect format for error description item: %s" and skipped.
    /// \return false, logged, when the file cannot be read or holds no settings.
    static bool LoadXmlErrorsDesriptions(const CCryptoString& fileName);

protected:
    std::int32_t status_ = 0;
    std::uint32_t errorCode_ = 0;
    CCryptoString message_;
};
