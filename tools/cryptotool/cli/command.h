#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string_view>

namespace ccrypto {

class Invocation;

/// What follows an option.
enum class OptionKind {
    flag,   ///< nothing
    text,   ///< any text
    number, ///< decimal digits, at most 64 bits
    choice, ///< one of the words that the value's name lists with "|"
    level,  ///< nothing: the option is one digit, "-1" to "-9", which is its value
};

/// One option, as --help shows it and as the words of the command line are read.
struct Option {
    OptionKind kind;
    char letter;               ///< "-o"; 0 when it has none
    std::string_view name;     ///< "output" for "--output"; of a level, what its value is asked for by
    std::string_view value;    ///< what --help calls the value
    std::string_view text;     ///< what it does
    bool isRepeatable = false; ///< every value counts, not only the last
};

/// Lists of options, one after the other, as one list.
template <std::size_t... Sizes>
constexpr std::array<Option, (Sizes + ...)> JoinOptions(const Option (&... lists)[Sizes])
{
    std::array<Option, (Sizes + ...)> joined = {};
    auto end = joined.begin();
    ((end = std::copy(std::begin(lists), std::end(lists), end)), ...);
    return joined;
}

constexpr Option outputOption = {OptionKind::text, 'o', "output", "FILE",
                                 "write to FILE, in one step when all is done; \"-\" is stdout"};
constexpr Option jsonOption = {OptionKind::flag, 0, "json", "", "print JSON"};
constexpr Option insideOption = {OptionKind::flag, 0, "inside", "", "decode OCTET and BIT STRINGs that hold DER"};
constexpr Option lenientOption = {OptionKind::flag, 0, "lenient", "",
                                  "accept unknown tags, and show what can be read of broken data"};

// The options of every command.
constexpr Option quietOption = {OptionKind::flag, 'q', "quiet", "", "print errors only: no progress, remarks or warnings"};
constexpr Option colorOption = {OptionKind::choice, 0, "color", "auto|always|never",
                                "colour the output; auto does so on a terminal (auto)"};
constexpr Option helpOption = {OptionKind::flag, 'h', "help", "", "print this help"};
constexpr Option commonOptions[] = {quietOption, colorOption, helpOption};

/// What a noun and a verb stand for: its usage, help, manual page, completion and the reading of its command line are made of this.
struct Command {
    std::string_view noun;
    std::string_view verb; ///< empty for a noun that is a command by itself
    std::string_view summary;
    std::string_view operands; ///< as the usage line shows them
    std::size_t minOperands;
    std::size_t maxOperands;
    /// The description in --help. Lines that belong together are filled to its width; those that begin with blanks stay unchanged.
    std::string_view details;
    std::span<const Option> options; ///< its own
    /// \return the exit code.
    int (*run)(Invocation& invocation);
    /// What the first operand may be, separated by "|", where it is one of a few words; otherwise empty.
    std::string_view firstOperands = {};
};

/// A noun with several verbs, and what --help says of it.
struct Noun {
    std::string_view noun;
    std::string_view summary;
};

/// Every command, verbs of a noun together, in the order of --help.
std::span<const Command* const> Commands();
std::span<const Noun> Nouns();

} // namespace ccrypto
