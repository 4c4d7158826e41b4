#pragma once

#include "core/text/element.h"
#include "tools/cryptotool/cli/color.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <string_view>

namespace ccrypto {

/// The three standard streams of a command, and its user.
class Console {
public:
    using Clock = std::chrono::steady_clock;

    virtual ~Console() = default;

    /// \return how many bytes came, 0 at the end; -1 on failure, with the reason in platform::LastError().
    virtual std::int64_t readInput(std::span<std::uint8_t> target) = 0;
    /// All of it or failure, with the reason in platform::LastError().
    virtual bool writeOutput(std::span<const std::uint8_t> bytes) = 0;
    virtual void writeError(std::string_view text) = 0;

    /// Writes `prompt` to the terminal, whatever the streams are, and reads the line that is typed there without being shown:
    /// UTF-8, without the end of the line. \return false, with `line` empty, when there is no terminal or no line comes.
    virtual bool readHiddenLine(std::string_view prompt, element& line) = 0;

    virtual bool outputIsTerminal() const = 0;
    virtual bool errorIsTerminal() const = 0;
    /// Makes the terminals understand colour sequences, where they must be told to. \return false when one of them does not.
    virtual bool enableColor() { return true; }
    /// The time by which progress is shown.
    virtual Clock::time_point now() const { return Clock::now(); }

    /// What --quiet and --color say. \param when the word of --color.
    void setManner(bool isQuiet, std::string_view when);
    /// Only errors are printed: no progress, no remarks.
    bool isQuiet() const { return isQuiet_; }
    const Paint& outputPaint() const { return outputPaint_; }
    const Paint& errorPaint() const { return errorPaint_; }

private:
    bool isQuiet_ = false;
    Paint outputPaint_;
    Paint errorPaint_;
};

} // namespace ccrypto
