#pragma once

#include "tools/cryptotool/cli/console.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

// What the program asks of the system it runs on. Texts are UTF-8.

namespace ccrypto {

/// The words of the command line after the program's name.
std::vector<std::string> CommandLineWords(int count, char** words);

/// From here on, a user or system that ends the process before its time has this file removed; an empty name for none.
void RemoveWhenInterrupted(const std::string& name);
/// Runs `action` with interruptions held back until it has ended: between the creation of a file and RemoveWhenInterrupted. \return
/// what `action` returns.
bool WithInterruptionsHeld(const std::function<bool()>& action);

/// How much processor time the calling thread has used. On Windows it advances in steps of some 16 ms.
[[nodiscard]] std::chrono::nanoseconds ProcessorTime();

/// The process's own streams, bytes unchanged.
class SystemConsole : public Console {
public:
    SystemConsole();

    std::int64_t readInput(std::span<std::uint8_t> target) override;
    bool writeOutput(std::span<const std::uint8_t> bytes) override;
    void writeError(std::string_view text) override;
    bool readHiddenLine(std::string_view prompt, element& line) override;
    bool outputIsTerminal() const override;
    bool errorIsTerminal() const override;
    bool enableColor() override;
};

/// A file, pipe or device that is read from front to back. Failures leave platform::LastError().
class SequentialFile {
public:
    SequentialFile() = default;
    ~SequentialFile();
    SequentialFile(const SequentialFile&) = delete;
    SequentialFile& operator=(const SequentialFile&) = delete;

    bool openToRead(const std::string& name);
    /// An existing device or pipe; nothing is created or emptied.
    bool openToWrite(const std::string& name);
    /// What a descriptor of the process gives; the descriptor stays open when this is closed.
    bool openDescriptor(int number);
    /// \return how many bytes came, 0 at the end, -1 on failure.
    std::int64_t read(std::span<std::uint8_t> target);
    /// All of it or failure.
    bool write(std::span<const std::uint8_t> bytes);
    /// How long a regular file is; -1 for what has no length.
    std::int64_t size() const;

private:
    static constexpr std::intptr_t closed = -1;
    std::intptr_t handle_ = closed;
};

} // namespace ccrypto
