#pragma once

#include <cstdint>
#include <functional>

/// How deep each thread's operations are nested. Counted while the log is on; the log's own writing does not ask.
namespace ccrypto::logging {

/// Begins an operation on the calling thread. \return its depth, 0 for the outermost, 255 at most.
std::uint32_t EnterOperation();

/// Ends the operation that was begun last on the calling thread.
void LeaveOperation();

/// Calls `end`, which ends the thread `threadId` by force, while that thread cannot have the counters in hand, and drops its
/// counter: a thread to come may have the same number. \return what `end` returns; the counter stays when that is false.
bool EndByForce(std::uint32_t threadId, const std::function<bool()>& end);

/// Drops the counters of all threads and gives their storage back.
void ForgetNesting();

/// Gives the system back what the lock of the counters holds, for a library that is being unloaded: no thread may be in an
/// operation. An operation that is begun later makes a new lock.
void ReleaseNestingLock();

/// How many threads have a counter. Those of threads outside of every operation are dropped now and then, so that a host whose
/// threads come and go keeps no more than twice as many as are at work, or 64.
std::uint32_t CountedThreads();

} // namespace ccrypto::logging
