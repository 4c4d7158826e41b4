#pragma once

/// Ends the process with exit code 1, "FATAL MEMORY ALLOCATION ERROR" on the debug channel: what every byte buffer of the library
/// does when there is no memory. The containers leave that to `new`, which throws, and to whoever catches at the boundary of a
/// module.
[[noreturn]] void EndOutOfMemory();
