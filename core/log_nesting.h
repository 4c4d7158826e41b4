#pragma once

#include <cstdint>

/// How deep each thread's operations are nested. Counted while the log is on; the log's own writing does not ask.
namespace logging {

/// Begins an operation on the calling thread. \return its depth, 0 for the outermost, 255 at most.
std::uint32_t EnterOperation();

/// Ends the operation that was begun last on the calling thread.
void LeaveOperation();

/// Drops the counters of all threads and gives their storage back.
void ForgetNesting();

} // namespace logging
