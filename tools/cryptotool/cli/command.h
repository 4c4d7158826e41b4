#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace ccrypto {

class Invocation;

/// What stands behind an option.
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
    char letter;            ///< "-o"; 0 when it has none
    std::string_view name;  ///< "output" for "--output"; of a level, what its value is asked for by
    std::string_view value; ///< what --help calls the value
    std::string_view text;  ///< what it does, on lines that fit behind the option
};

constexpr Option outputOption = {OptionKind::text, 'o', "output", "FILE",
                                 "write to FILE, in one step when all is done; \"-\" is stdout"};
constexpr Option jsonOption = {OptionKind::flag, 0, "json", "", "print JSON"};
constexpr Option insideOption = {OptionKind::flag, 0, "inside", "", "look into OCTET and BIT STRINGs that hold DER"};
constexpr Option lenientOption = {OptionKind::flag, 0, "lenient", "",
                                  "take unknown tags, and show what can be read of broken data"};

/// What a noun and a verb stand for: the one place that its usage, its help and its reading of the command line come from.
struct Command {
    std::string_view noun;
    std::string_view verb; ///< empty for a noun that is a command by itself
    std::string_view summary;
    std::string_view operands; ///< as the usage line shows them
    std::size_t leastOperands;
    std::size_t mostOperands;
    std::string_view details; ///< what --help says besides, lines with their ends
    std::span<const Option> options;
    /// \return the exit code.
    int (*run)(Invocation& invocation);
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
