#pragma once

#include "tools/cryptotool/cli/command.h"

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

/// The words after a command, checked against its options.
class Arguments {
public:
    /// Options may stand between the operands; "--" ends them, and "-" is an operand. \return false with `problem` for the user.
    bool read(const Command& command, std::span<const std::string> words, std::string& problem);

    bool has(std::string_view name) const { return values_.contains(name); }
    /// The value given last; `otherwise` when the option was not given.
    std::string value(std::string_view name, std::string_view otherwise = {}) const;
    /// Every value that was given, in order; of an option that is repeatable.
    const std::vector<std::string>& values(std::string_view name) const;
    std::uint64_t number(std::string_view name, std::uint64_t otherwise) const;
    /// As given, counted from 0; empty after the last.
    std::string operand(std::size_t index) const { return index < operands_.size() ? operands_[index] : std::string(); }
    /// The same for a file that may be left out: "-", standard input, after the last.
    std::string fileOperand(std::size_t index) const { return index < operands_.size() ? operands_[index] : "-"; }
    const std::vector<std::string>& operands() const { return operands_; }
    /// The operands from `index` on, which are files; standard input when there are none.
    std::vector<std::string> fileOperands(std::size_t index) const;

private:
    template <typename Matches>
    const Option* find(const Matches& matches) const;
    bool readLong(std::string_view word);
    bool readLetters(std::string_view word);
    bool take(const Option& option, std::string_view shown, const std::string* value);
    bool fail(std::string problem);
    bool failUnknown(std::string_view shown, std::string_view name);

    const Command* command_ = nullptr;
    std::span<const std::string> rest_;
    std::string problem_;
    std::map<std::string, std::vector<std::string>, std::less<>> values_;
    std::vector<std::string> operands_;
};

/// Decimal digits alone. \return false for anything else and beyond 64 bits.
bool ParseDecimal(std::string_view text, std::uint64_t& number);

/// The words between the "|" of Option::value and Command::firstOperands.
std::vector<std::string_view> SplitChoices(std::string_view choices);

} // namespace ccrypto
