#pragma once

#include <cstdint>
#include <string>

/// The running process and its system. Texts are UTF-8.
namespace ccrypto::platform {

std::uint32_t CurrentProcessId();
std::uint32_t CurrentThreadId();

/// The code of the calling thread's last failed system call (GetLastError, errno).
std::uint32_t LastError();
/// Puts a code back, so that work done in between stays unseen.
void SetLastError(std::uint32_t code);

/// The system's own text for `code` in the default language, line end included where the system adds one; empty when it has none.
[[nodiscard]] std::string SystemErrorText(std::uint32_t code);

/// The path of the executable that hosts the library. \return false with `error` set to the system's code when it is not known.
[[nodiscard]] bool HostExecutablePath(std::string& path, std::uint32_t& error);

/// Empty when the system does not know.
std::string CurrentDirectory();

/// The command line of the process as it was started; words are separated by blanks where the system hands them out one by one.
std::string CommandLine();

/// Empty when the system does not know.
std::string ComputerName();

/// True once the system is taking the process down and has ended its other threads, which may have held any lock.
bool ProcessIsEnding();

} // namespace ccrypto::platform
