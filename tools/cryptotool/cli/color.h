#pragma once

#include <string>
#include <string_view>

namespace ccrypto {

/// What a colour means, so that the same thing looks the same in every command.
enum class Color {
    good,    ///< green: what was found right
    bad,     ///< red: an error, what was found wrong
    warning, ///< yellow
    name,    ///< cyan: what a thing is called
    note,    ///< grey: an explanation beside a value
};

/// Puts the colour sequences of ECMA-48 (8.3.117, SGR) around text, or nothing where no colour is wanted.
class Paint {
public:
    Paint() = default;
    explicit Paint(bool isOn) : isOn_(isOn) {}

    bool isOn() const { return isOn_; }
    std::string operator()(Color color, std::string_view text) const;

private:
    bool isOn_ = false;
};

/// \param when the word of --color: "always", "never", or "auto" for a terminal alone, unless the environment variable NO_COLOR is
///        set to some text or TERM is "dumb".
bool WantsColor(std::string_view when, bool isTerminal);

} // namespace ccrypto
