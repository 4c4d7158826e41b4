#include "tools/cryptotool/cli/arguments.h"

#include "tools/cryptotool/cli/suggestion.h"

#include <algorithm>
#include <charconv>

namespace ccrypto {

namespace {

bool IsLevel(const Option& option, char letter)
{
    return option.kind == OptionKind::level && letter >= '1' && letter <= '9';
}

} // namespace

std::vector<std::string_view> SplitChoices(std::string_view choices)
{
    std::vector<std::string_view> words;
    while (!choices.empty()) {
        const std::size_t end = choices.find('|');
        words.push_back(choices.substr(0, end));
        choices.remove_prefix(end == std::string_view::npos ? choices.size() : end + 1);
    }
    return words;
}

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
    if (understood && operands_.size() < command.minOperands)
        understood = fail("an operand is missing: " + std::string(command.operands));
    else if (understood && operands_.size() > command.maxOperands)
        understood = fail("unexpected operand: " + operands_[command.maxOperands]);
    problem = problem_;
    return understood;
}

std::vector<std::string> Arguments::fileOperands(std::size_t index) const
{
    if (index >= operands_.size())
        return {"-"};
    return {operands_.begin() + static_cast<std::ptrdiff_t>(index), operands_.end()};
}

bool Arguments::failUnknown(std::string_view shown, std::string_view name)
{
    std::vector<std::string_view> known;
    for (const auto& options : {command_->options, std::span<const Option>(commonOptions)})
        for (const Option& option : options)
            if (option.kind != OptionKind::level)
                known.push_back(option.name);
    return fail("unknown option " + std::string(shown) + DidYouMean(name, known, "--"));
}

/// The option of the command, or of all commands, that `matches`; null when there is none.
template <typename Matches>
const Option* Arguments::find(const Matches& matches) const
{
    for (const auto& options : {command_->options, std::span<const Option>(commonOptions)})
        if (const auto found = std::ranges::find_if(options, matches); found != options.end())
            return &*found;
    return nullptr;
}

bool Arguments::readLong(std::string_view word)
{
    const std::size_t equals = word.find('=');
    const std::string_view name = word.substr(2, equals == std::string_view::npos ? equals : equals - 2);
    const bool hasValue = equals != std::string_view::npos;
    const std::string value(hasValue ? word.substr(equals + 1) : std::string_view());
    const Option* const option = find([=](const Option& row) { return row.kind != OptionKind::level && row.name == name; });
    if (option == nullptr)
        return failUnknown(word.substr(0, equals), name);
    return take(*option, word.substr(0, equals), hasValue ? &value : nullptr);
}

bool Arguments::readLetters(std::string_view word)
{
    for (std::size_t index = 1; index < word.size(); ++index) {
        const char letter = word[index];
        const Option* const found =
            find([=](const Option& row) { return (row.letter != 0 && row.letter == letter) || IsLevel(row, letter); });
        const std::string shown = {'-', letter};
        if (found == nullptr)
            return failUnknown(letter < ' ' || letter > '~' ? word : shown, word.substr(1));
        if (found->kind == OptionKind::level) {
            values_[std::string(found->name)] = {std::string(1, letter)};
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
    std::vector<std::string>& values = values_[std::string(option.name)];
    if (option.kind == OptionKind::flag)
        return value == nullptr || fail(std::string(shown) + " takes no value");
    if (value == nullptr) {
        if (rest_.empty())
            return fail(std::string(shown) + " needs a value: " + std::string(option.value));
        value = &rest_.front();
        rest_ = rest_.subspan(1);
    }
    const std::string& place = values.emplace_back(*value);
    std::uint64_t number = 0;
    if (option.kind == OptionKind::number && !ParseDecimal(place, number))
        return fail(std::string(shown) + " needs a number, not " + place);
    if (option.kind != OptionKind::choice)
        return true;
    const std::vector<std::string_view> choices = SplitChoices(option.value);
    const bool isChoice = std::ranges::find(choices, place) != choices.end();
    return isChoice || fail(std::string(shown) + " must be one of " + std::string(option.value) + ", not " + place +
                            DidYouMean(place, choices));
}

std::string Arguments::value(std::string_view name, std::string_view otherwise) const
{
    const std::vector<std::string>& given = values(name);
    return given.empty() ? std::string(otherwise) : given.back();
}

const std::vector<std::string>& Arguments::values(std::string_view name) const
{
    static const std::vector<std::string> none;
    const auto found = values_.find(name);
    return found != values_.end() ? found->second : none;
}

std::uint64_t Arguments::number(std::string_view name, std::uint64_t otherwise) const
{
    std::uint64_t number = otherwise;
    const std::vector<std::string>& given = values(name);
    if (!given.empty())
        ParseDecimal(given.back(), number);
    return number;
}

} // namespace ccrypto
