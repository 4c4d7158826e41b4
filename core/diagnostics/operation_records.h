#pragma once

#include <cstdint>
#include <functional>

/// How deep each thread's operations are nested, counted while the log is on. Writing a line does not need the counters.
namespace ccrypto::logging {

/// Begins an operation on the calling thread. \return its depth, 0 for the outermost, 255 at most.
[[nodiscard]] std::uint32_t EnterOperation();

/// Ends the operation that was begun last on the calling thread.
void LeaveOperation();

/// Calls `end`, which ends the thread `threadId` by force, while that thread holds the lock of neither the counters nor the
/// failures, and drops both: a later thread may have the same number. \return what `end` returns; nothing is dropped when that is
/// false.
[[nodiscard]] bool EndByForce(std::uint32_t threadId, const std::function<bool()>& end);

/// Drops the counters of all threads and frees their storage.
void ForgetNesting();

/// Gives the system back what the locks of the counters and of the failures hold, for a library that is being unloaded: no thread
/// may be in an operation. An operation that is begun later makes new locks.
void ReleaseNestingLock();

/// How many threads have a counter. The counters of threads outside of every operation are dropped from time to time, so a host
/// whose threads come and go keeps at most twice as many as are at work, or 64.
[[nodiscard]] std::uint32_t CountedThreads();

} // namespace ccrypto::logging
