#include "tools/cryptotool/cli/color.h"

#include <cstdlib>

namespace ccrypto {

namespace {

std::string_view Environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

const char* SequenceOf(Color color)
{
    switch (color) {
    case Color::good:
        return "\x1b[32m";
    case Color::bad:
        return "\x1b[31m";
    case Color::warning:
        return "\x1b[33m";
    case Color::name:
        return "\x1b[36m";
    case Color::note:
        break;
    }
    return "\x1b[90m";
}

} // namespace

std::string Paint::operator()(Color color, std::string_view text) const
{
    if (!isOn_ || text.empty())
        return std::string(text);
    return SequenceOf(color) + std::string(text) + "\x1b[0m";
}

bool WantsColor(std::string_view when, bool isTerminal)
{
    if (when != "auto")
        return when == "always";
    return isTerminal && Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
}

} // namespace ccrypto
