#include "tools/cryptotool/cli/arguments.h"

#include <charconv>

namespace ccrypto {

namespace {

bool IsLevel(const Option& option, char letter)
{
    return option.kind == OptionKind::level && letter >= '1' && letter <= '9';
}

bool IsChoice(std::string_view choices, std::string_view word)
{
    for (;;) {
        const std::size_t end = choices.find('|');
        if (choices.substr(0, end) == word)
            return true;
        if (end == std::string_view::npos)
            return false;
        choices.remove_prefix(end + 1);
    }
}

} // namespace

bool ParseDecimal(std::string_view text, std::uint64_t& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

bool Arguments::fail(std::string problem)
{
    problem_ = std::move(problem);
    return false;
}

bool Arguments::read(const Command& command, std::span<const std::string> words, std::string& problem)
{
    command_ = &command;
    rest_ = words;
    bool understood = true;
    bool optionsEnded = false;
    while (understood && !rest_.empty()) {
        const std::string& word = rest_.front();
        rest_ = rest_.subspan(1);
        if (optionsEnded || word == "-" || !word.starts_with('-'))
            operands_.push_back(word);
        else if (word == "--")
            optionsEnded = true;
        else
            understood = word.starts_with("--") ? readLong(word) : readLetters(word);
    }
    if (understood && operands_.size() < command.leastOperands)
        understood = fail("an operand is missing: " + std::string(command.operands));
    else if (understood && operands_.size() > command.mostOperands)
        understood = fail("one operand too many: " + operands_[command.mostOperands]);
    problem = problem_;
    return understood;
}

bool Arguments::readLong(std::string_view word)
{
    const std::size_t equals = word.find('=');
    const std::string_view name = word.substr(2, equals == std::string_view::npos ? equals : equals - 2);
    const bool hasValue = equals != std::string_view::npos;
    const std::string value(hasValue ? word.substr(equals + 1) : std::string_view());
    for (const Option& option : command_->options) {
        if (option.kind != OptionKind::level && option.name == name)
            return take(option, word.substr(0, equals), hasValue ? &value : nullptr);
    }
    return fail("there is no option " + std::string(word.substr(0, equals)));
}

bool Arguments::readLetters(std::string_view word)
{
    for (std::size_t index = 1; index < word.size(); ++index) {
        const char letter = word[index];
        const Option* found = nullptr;
        for (const Option& option : command_->options) {
            if ((option.letter != 0 && option.letter == letter) || IsLevel(option, letter))
                found = &option;
        }
        const std::string shown = {'-', letter};
        if (found == nullptr)
            return fail("there is no option " + (letter < ' ' || letter > '~' ? std::string(word) : shown));
        if (found->kind == OptionKind::level) {
            values_[std::string(found->name)] = letter;
        } else if (found->kind == OptionKind::flag) {
            values_[std::string(found->name)];
        } else {
            const std::string value(word.substr(index + 1));
            return take(*found, shown, value.empty() ? nullptr : &value);
        }
    }
    return true;
}

bool Arguments::take(const Option& option, std::string_view shown, const std::string* value)
{
    std::string& place = values_[std::string(option.name)];
    if (option.kind == OptionKind::flag)
        return value == nullptr || fail(std::string(shown) + " takes no value");
    if (value == nullptr) {
        if (rest_.empty())
            return fail(std::string(shown) + " needs a value: " + std::string(option.value));
        value = &rest_.front();
        rest_ = rest_.subspan(1);
    }
    place = *value;
    std::uint64_t number = 0;
    if (option.kind == OptionKind::number && !ParseDecimal(place, number))
        return fail(std::string(shown) + " needs a number, not " + place);
    if (option.kind == OptionKind::choice && !IsChoice(option.value, place))
        return fail(std::string(shown) + " is one of " + std::string(option.value) + ", not " + place);
    return true;
}

std::string Arguments::value(std::string_view name, std::string_view otherwise) const
{
    const auto found = values_.find(name);
    return found != values_.end() ? found->second : std::string(otherwise);
}

std::uint64_t Arguments::number(std::string_view name, std::uint64_t otherwise) const
{
    std::uint64_t number = otherwise;
    const auto found = values_.find(name);
    if (found != values_.end())
        ParseDecimal(found->second, number);
    return number;
}

} // namespace ccrypto
