#pragma once

#include "core/text/string.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace ccrypto {

/// How an operation ended, from good to bad.
enum class ResultStatus : std::int32_t { none = 0, info = 1, warning = 2, error = 3 };

} // namespace ccrypto

/// The result of one operation: a status, a text and the last system error. Texts given in turn are joined by a space.
class CCryptoErrorHandler {
public:
    CCryptoErrorHandler() = default;
    virtual ~CCryptoErrorHandler() = default;
    CCryptoErrorHandler(const CCryptoErrorHandler&) = delete;
    CCryptoErrorHandler& operator=(const CCryptoErrorHandler&) = delete;

    [[nodiscard]] ccrypto::ResultStatus status() const { return status_; }
    /// Empty when no text was given.
    [[nodiscard]] const CCryptoString& message() const;
    /// The last system error code recorded; 0 when none was.
    [[nodiscard]] std::uint32_t errorCode() const { return errorCode_; }

    void setInfo(const CCryptoString& text);
    void setWarning(const CCryptoString& text);
    /// The text becomes the calling thread's ccrypto::LastFailure() and the process-wide last-error text, too.
    void setError(const CCryptoString& text);
    /// Records the system's error `code` with its text: the one loaded for it, else the system's own (at most 255 bytes), else
    /// " Last error (%08X)". It becomes the thread's failure and the last-error text when it is the operation's first text; after
    /// setError() the failure keeps its text and takes the code.
    void setWindowsError(std::uint32_t code);
    /// The same for the calling thread's last error.
    void setLastWindowsError();

    /// The first error since the text was last cleared: "operation:message" of the innermost operation that failed, or the text
    /// that the last failing operation gave for itself. A copy.
    [[nodiscard]] static CCryptoString LastErrorText();
    static void ClearLastErrorText();

    /// Reads texts for error codes from a document of the form
    /// `<settings><ErrorCode_0x8010000C>No card in the reader</ErrorCode_0x8010000C></settings>`; codes are decimal, or hexadecimal
    /// after "0x". setWindowsError prefers these texts to the system's. They replace those loaded before. A malformed item is
    /// reported as "Incorrect format for error description item: %s" and skipped.
    /// \return false, logged, when the file cannot be read, is longer than 1 MiB or holds no well-formed settings; what was loaded
    /// before is then kept.
    [[nodiscard]] static bool LoadXmlErrorsDesriptions(const CCryptoString& fileName);

protected:
    /// The operation whose result this is.
    virtual const char* operation() const { return ""; }
    /// Status error without a text: recorded when no failure is, so that at least the operation is known.
    void setErrorWithoutText() noexcept;

    /// Appends `text` to the texts given so far.
    void addText(std::string_view text);

    ccrypto::ResultStatus status_ = ccrypto::ResultStatus::none;
    std::uint32_t errorCode_ = 0;

private:
    /// Out of line, to keep every scope that holds a logger short.
    struct DeleteText {
        void operator()(CCryptoString* text) const;
    };

    /// Made by the first text, so that an operation without one costs no storage.
    std::unique_ptr<CCryptoString, DeleteText> message_;
};
