#pragma once

#include "tools/cryptotool/cli/console.h"
#include "tools/cryptotool/cli/invocation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

namespace ccrypto {

/// The streams of a command that is run in this process.
class MemoryConsole : public Console {
public:
    std::string input;
    std::string output;
    std::string error;
    bool isTerminal = false;
    bool isErrorTerminal = false;
    bool takesColor = true;
    /// What is typed, a line each time; without any there is no terminal.
    std::vector<std::string> hiddenLines;
    std::string prompts;

    std::int64_t readInput(std::span<std::uint8_t> target) override
    {
        // In pieces, as a pipe gives them.
        const std::size_t count = std::min({target.size(), input.size() - read_, std::size_t{1000}});
        std::memcpy(target.data(), input.data() + read_, count);
        read_ += count;
        return static_cast<std::int64_t>(count);
    }
    bool writeOutput(std::span<const std::uint8_t> bytes) override
    {
        output.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return true;
    }
    void writeError(std::string_view text) override { error += text; }
    bool readHiddenLine(std::string_view prompt, element& line) override
    {
        line = element();
        if (hiddenLines.empty())
            return false;
        prompts += prompt;
        line.append(hiddenLines.front());
        hiddenLines.erase(hiddenLines.begin());
        return true;
    }
    bool outputIsTerminal() const override { return isTerminal; }
    bool errorIsTerminal() const override { return isErrorTerminal; }
    bool enableColor() override { return takesColor; }

private:
    std::size_t read_ = 0;
};

/// How a run of the tool ended.
struct ToolResult {
    int code;
    std::string output;
    std::string error;
};

inline ToolResult RunTool(const std::vector<std::string>& words, const std::string& input = {}, bool isTerminal = false)
{
    MemoryConsole console;
    console.input = input;
    console.isTerminal = isTerminal;
    const int code = RunCommandLine(words, console);
    return {code, console.output, console.error};
}

/// `lines` are typed where no echo shows them; all of them are asked for.
inline ToolResult RunTyping(const std::vector<std::string>& words, const std::vector<std::string>& lines,
                            const std::string& input = {})
{
    MemoryConsole console;
    console.input = input;
    console.hiddenLines = lines;
    const int code = RunCommandLine(words, console);
    EXPECT_TRUE(console.hiddenLines.empty());
    return {code, console.output, console.error};
}

} // namespace ccrypto
