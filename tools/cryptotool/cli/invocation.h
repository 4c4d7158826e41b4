#pragma once

#include "tools/cryptotool/cli/arguments.h"
#include "tools/cryptotool/cli/console.h"

#include <string>
#include <string_view>

namespace ccrypto {

constexpr int exitDone = 0;
constexpr int exitRefused = 1;
constexpr int exitUsage = 2;
constexpr int exitUndecided = 3;

/// One call of a command: its arguments, the streams, and the two ways to say no.
class Invocation {
public:
    Invocation(const Command& command, const Arguments& arguments, Console& console)
        : command_(command), arguments_(arguments), console_(console)
    {
    }

    const Arguments& arguments() const { return arguments_; }
    Console& console() { return console_; }

    /// Prints "cryptotool: FILE: reason". \return exitRefused.
    int refuse(std::string_view file, std::string_view reason);
    /// Prints what is wrong with the words, and where to read about them. \return exitUsage.
    int misuse(std::string_view problem);
    /// Prints "cryptotool: FILE: warning: remark", unless --quiet is given; the exit code does not change.
    void warn(std::string_view file, std::string_view remark);
    /// The same without the word "warning".
    void remark(std::string_view file, std::string_view text);

private:
    const Command& command_;
    const Arguments& arguments_;
    Console& console_;
};

/// Finds the command that `words` begin with and runs it. \return the exit code.
int RunCommandLine(std::span<const std::string> words, Console& console);

} // namespace ccrypto
