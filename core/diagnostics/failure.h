#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ccrypto {

/// Why an operation failed, as its logger recorded it. The lines of the log and CCryptoErrorHandler::LastErrorText() are made of
/// the same facts; whoever wants to know what failed reads these, not a text.
struct Failure {
    std::string operation;          ///< its qualified name, "CCryptoFile::Open"; empty when the logger has none
    std::string text;               ///< the reason in words; empty when no operation gave one
    std::uint32_t windowsError = 0; ///< the system's code (errno on POSIX); 0 when the system gave none
};

/// What failed last on the calling thread; nothing when nothing did since ForgetFailure().
///
/// An operation that fails with a text or a system error replaces what was recorded. One that fails without either leaves it to
/// the operation inside of it that gave a reason, so the text is that of the outermost operation that knew one. The record does
/// not depend on the log level, and costs nothing while nothing fails. The last 64 threads that failed are remembered.
[[nodiscard]] std::optional<Failure> LastFailure();

/// How many failures were recorded, of all threads: a moment for LastFailureSince().
[[nodiscard]] std::size_t FailureCount();

/// LastFailure(), if it was recorded after `count` was taken, and has a text.
[[nodiscard]] std::optional<Failure> LastFailureSince(std::size_t count);

/// Forgets what failed on the calling thread. A thread's number may have belonged to another before, so call this first.
void ForgetFailure();

namespace internal {

/// The calling thread's failure becomes this one.
void RecordFailure(std::string_view operation, std::string_view text, std::uint32_t windowsError) noexcept;
/// Adds the system's code to the failure of the calling thread.
void AddWindowsError(std::uint32_t code) noexcept;
/// A failure without a reason: recorded when the calling thread has none.
void RecordFailureWithoutReason(std::string_view operation) noexcept;

/// The text that a failure takes from the system: `known`, at most 255 bytes, without the line end; " Last error (%08X)" when
/// nothing is known of the code.
[[nodiscard]] std::string TextOfWindowsError(std::uint32_t code, std::string_view known);

/// The process-wide last-error text.
[[nodiscard]] std::string LastErrorText();
void SetLastErrorText(std::string_view text) noexcept;
/// Sets the text when it is empty.
void StartLastErrorText(std::string_view text) noexcept;

/// Calls `end`, which ends the thread `threadId` by force, while that thread cannot have the records in hand, and drops its record.
/// \return what `end` returns; the record stays when that is false.
[[nodiscard]] bool EndByForceOutsideOfFailures(std::uint32_t threadId, const std::function<bool()>& end);

/// Gives the system back what the lock of the records holds; a later failure makes a new one. No thread may be in an operation.
void ReleaseFailureLock();

/// Gives back all that is recorded, so that a library that is unloaded leaves nothing after it.
void ForgetFailures();

} // namespace internal

} // namespace ccrypto
