#include "tools/cryptotool/sums/sum_line.h"

#include "core/base/ascii.h"
#include "core/text/hex.h"
#include "tools/text/safe_text.h"

#include <cstddef>

namespace ccrypto {

namespace {

struct Escape {
    char plain;
    char letter;
};

constexpr Escape escapes[] = {{'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}};

/// \return false when the name needs no escape.
bool EscapeName(std::string_view name, std::string& escaped)
{
    bool isEscaped = false;
    for (const char character : name) {
        const std::size_t before = escaped.size();
        for (const Escape& row : escapes)
            if (row.plain == character)
                escaped += {'\\', row.letter};
        if (escaped.size() == before)
            escaped += character;
        else
            isEscaped = true;
    }
    return isEscaped;
}

bool UnescapeName(std::string_view escaped, std::string& name)
{
    for (std::size_t i = 0; i < escaped.size(); ++i) {
        char character = escaped[i];
        if (character == '\\') {
            ++i;
            bool isKnown = false;
            for (const Escape& row : escapes) {
                if (i < escaped.size() && row.letter == escaped[i]) {
                    character = row.plain;
                    isKnown = true;
                }
            }
            if (!isKnown)
                return false;
        }
        name += character;
    }
    return true;
}

} // namespace

std::string SumLine::text() const
{
    std::string name;
    const bool isEscaped = EscapeName(file, name);
    return (isEscaped ? "\\" : "") + digits + "  " + name + "\n";
}

std::string SumLine::About(std::string_view file, std::string_view text)
{
    std::string name;
    const bool isEscaped = EscapeName(file, name);
    return (isEscaped ? "\\" : "") + name + ": " + std::string(text) + "\n";
}

bool SumLine::read(std::string_view line)
{
    *this = {};
    const bool isEscaped = line.starts_with('\\');
    if (isEscaped)
        line.remove_prefix(1);
    std::string_view name;
    const bool isRead = readUsual(line, name) || readTagged(line, name);
    if (isRead && isEscaped)
        return UnescapeName(name, file);
    file = name;
    return isRead;
}

bool SumLine::readUsual(std::string_view line, std::string_view& name)
{
    const std::size_t end = line.find(' ');
    if (end == std::string_view::npos || line.size() < end + 3 || (line[end + 1] != ' ' && line[end + 1] != '*'))
        return false;
    name = line.substr(end + 2);
    return takeDigits(line.substr(0, end));
}

bool SumLine::readTagged(std::string_view line, std::string_view& name)
{
    constexpr std::string_view open = " (";
    constexpr std::string_view close = ") = ";
    const std::size_t start = line.find(open);
    const std::size_t end = line.rfind(close);
    if (start == std::string_view::npos || end == std::string_view::npos || end <= start + open.size() ||
        !takeDigits(line.substr(end + close.size())))
        return false;
    algorithm = line.substr(0, start);
    name = line.substr(start + open.size(), end - start - open.size());
    return true;
}

bool SumLine::takeDigits(std::string_view text)
{
    digits.clear();
    for (const char character : text) {
        if (!IsHexDigit(character))
            return false;
        digits += ToSmall(character);
    }
    return !digits.empty();
}

bool SumOutput::write(std::string_view file, std::string_view finding, Color color)
{
    return Output::write(shown(SumLine::About(file, {})) + paint()(color, finding) + "\n");
}

std::string SumOutput::shown(std::string line) const
{
    line.pop_back();
    return isTerminal_ ? OneLine(line) : line;
}

} // namespace ccrypto
