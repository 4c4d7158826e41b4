#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ccrypto {

/// The three standard streams a command talks through, and the user behind them.
class Console {
public:
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
};

} // namespace ccrypto
