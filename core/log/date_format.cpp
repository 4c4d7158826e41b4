#include "core/log/date_format.h"

#include "core/base/ascii.h"
#include "core/base/c_text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>

namespace ccrypto {

namespace {

using platform::CalendarTime;

enum class TokenKind { character, malformed, number, yearOfCentury, decimals };

struct Token {
    std::string_view text;
    TokenKind kind;
    std::int32_t CalendarTime::*field;
};

/// Of tokens that begin alike the longest comes first.
constexpr Token tokens[] = {
    {"yyyy", TokenKind::number, &CalendarTime::year},
    {"yy", TokenKind::yearOfCentury, &CalendarTime::year},
    {"MM", TokenKind::number, &CalendarTime::month},
    {"dd", TokenKind::number, &CalendarTime::day},
    {"HH", TokenKind::number, &CalendarTime::hour},
    {"hh", TokenKind::number, &CalendarTime::hour},
    {"mm", TokenKind::number, &CalendarTime::minute},
    {"ss", TokenKind::number, &CalendarTime::second},
    {"ffff", TokenKind::decimals, &CalendarTime::millisecond},
    {"fff", TokenKind::decimals, &CalendarTime::millisecond},
    {"ff", TokenKind::decimals, &CalendarTime::millisecond},
    {"f", TokenKind::decimals, &CalendarTime::millisecond},
};
constexpr std::string_view tokenLetters = "yMdHhmsf";

/// The last two-digit year of this century, which is the last that UTCTime is written with.
constexpr std::int32_t lastYearOfWindow = 50;

/// What stands at the start of the pattern, which is not empty: a token, or one character.
Token NextToken(std::string_view pattern)
{
    for (const Token& token : tokens) {
        if (pattern.starts_with(token.text))
            return token;
    }
    const bool malformed = tokenLetters.find(pattern.front()) != std::string_view::npos;
    return {pattern.substr(0, 1), malformed ? TokenKind::malformed : TokenKind::character, nullptr};
}

class Writer {
public:
    explicit Writer(TimeTextBuffer& buffer) : buffer_(buffer) {}

    void put(std::string_view text)
    {
        const std::size_t count = std::min(text.size(), maxTimeText - length_);
        std::copy_n(text.begin(), count, buffer_.data() + length_);
        length_ += count;
    }

    /// As printf writes "%0*d": the sign counts as one of the digits asked for.
    void putNumber(std::int64_t number, std::size_t digits)
    {
        char text[24];
        const char* const end = std::to_chars(text, text + sizeof text, number).ptr;
        const char* const magnitude = number < 0 ? text + 1 : text;
        put({text, magnitude});
        for (auto length = static_cast<std::size_t>(end - text); length < digits; ++length)
            put("0");
        put({magnitude, end});
    }

    std::string_view finish()
    {
        buffer_[length_] = '\0';
        return {buffer_.data(), length_};
    }

private:
    TimeTextBuffer& buffer_;
    std::size_t length_ = 0;
};

/// The value of one unit of the last of so many decimals of a second, in tenths of a millisecond.
constexpr std::int32_t lastDecimal[] = {10'000, 1'000, 100, 10, 1};

void WriteToken(Writer& writer, const CalendarTime& time, const Token& token)
{
    const std::size_t digits = token.text.size();
    switch (token.kind) {
    case TokenKind::character:
        return writer.put(token.text);
    case TokenKind::malformed:
        return writer.put("<ERROR>");
    case TokenKind::number:
        return writer.putNumber(time.*token.field, digits);
    case TokenKind::yearOfCentury:
        return writer.putNumber(std::abs(time.*token.field % 100), digits);
    case TokenKind::decimals:
        return writer.putNumber(std::int64_t{time.*token.field} * 10 / lastDecimal[digits], digits);
    }
}

/// `text` is as long as the token.
bool ReadToken(std::string_view text, const Token& token, CalendarTime& time)
{
    if (token.kind == TokenKind::character)
        return text == token.text;
    if (token.kind == TokenKind::malformed || !std::all_of(text.begin(), text.end(), IsDigit))
        return false;

    std::int32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    if (token.kind == TokenKind::yearOfCentury)
        number += number <= lastYearOfWindow ? 2000 : 1900;
    if (token.kind == TokenKind::decimals)
        number = number * lastDecimal[text.size()] / 10;
    time.*token.field = number;
    return true;
}

} // namespace

std::string_view FormatCalendarTime(const CalendarTime& time, const char* pattern, TimeTextBuffer& buffer)
{
    Writer writer(buffer);
    for (std::string_view rest = OrEmpty(pattern); !rest.empty();) {
        const Token token = NextToken(rest);
        WriteToken(writer, time, token);
        rest.remove_prefix(token.text.size());
    }
    return writer.finish();
}

bool ParseCalendarTime(std::string_view text, const char* pattern, CalendarTime& time)
{
    CalendarTime result;
    for (std::string_view rest = OrEmpty(pattern); !rest.empty();) {
        const Token token = NextToken(rest);
        const std::size_t length = token.text.size();
        if (text.size() < length || !ReadToken(text.substr(0, length), token, result))
            return false;
        text.remove_prefix(length);
        rest.remove_prefix(length);
    }
    if (!text.empty())
        return false;
    time = result;
    return true;
}

} // namespace ccrypto
