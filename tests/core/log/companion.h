#pragma once

#include <stdio.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace ccrypto {

/// A process that runs a program built beside the tests; waited for when it goes.
class Companion {
public:
    Companion(const char* name, const std::string& arguments)
    {
        constexpr bool onWindows = std::filesystem::path::preferred_separator == '\\';
        const std::string program = (std::filesystem::path(PROGRAM_DIR) / name).make_preferred().string();
        const std::string command = '"' + program + "\" " + arguments;
        // The command interpreter of Windows takes one pair of quotes away.
        output_ = popen((onWindows ? '"' + command + '"' : command).c_str(), "r");
    }
    ~Companion() { end(); }
    Companion(Companion&& other) noexcept : output_(std::exchange(other.output_, nullptr)) {}

    /// Whether `word` starts the next line that the process writes, for which this waits.
    bool says(std::string_view word)
    {
        char line[20] = {};
        return output_ != nullptr && fgets(line, sizeof line, output_) != nullptr && std::string_view(line).starts_with(word);
    }

    /// Waits for the process. \return whether it ended well.
    bool end()
    {
        FILE* const output = std::exchange(output_, nullptr);
        return output != nullptr && pclose(output) == 0;
    }

private:
    FILE* output_ = nullptr;
};

} // namespace ccrypto
