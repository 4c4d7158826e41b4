#include "tools/text/safe_text.h"

#include "core/text/utf8.h"

#include <algorithm>
#include <cstdio>

namespace ccrypto {

namespace {

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

constexpr Range unsafeRanges[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0x061C, 0x061C}, {0x200B, 0x200F}, {0x2028, 0x202E},   {0x2060, 0x206F},
    {0xD800, 0xDFFF}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xFFFE, 0xFFFF}, {0xE0000, 0xE0FFF},
};

template <typename... Values>
void AppendFormatted(std::string& text, const char* format, Values... values)
{
    char piece[24];
    std::snprintf(piece, sizeof piece, format, values...);
    text += piece;
}

void AppendBytes(std::string& text, std::string_view bytes)
{
    for (const char byte : bytes)
        AppendFormatted(text, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
}

void AppendJsonEscape(std::string& text, std::uint32_t codePoint)
{
    if (codePoint == '\n' || codePoint == '\t') {
        text += codePoint == '\n' ? "\\n" : "\\t";
        return;
    }
    if (codePoint <= 0xFFFF) {
        AppendFormatted(text, "\\u%04x", static_cast<unsigned>(codePoint));
        return;
    }
    const std::uint32_t above = codePoint - 0x10000;
    AppendFormatted(text, "\\u%04x\\u%04x", static_cast<unsigned>(0xD800 + (above >> 10)),
                    static_cast<unsigned>(0xDC00 + (above & 0x3FF)));
}

bool IsSurrogate(std::uint32_t codePoint)
{
    return IsHighSurrogate(codePoint) || IsLowSurrogate(codePoint);
}

/// The character at the start of `text`, or half of a surrogate pair, as Windows file names may have one. \return how many bytes it
/// takes; 0 for bytes that are neither.
std::size_t ReadCharacterOrSurrogate(std::string_view text, std::uint32_t& codePoint)
{
    const std::uint32_t length = DecodeUtf8({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, codePoint);
    return length == Utf8Length(codePoint) && codePoint <= 0x10FFFF ? length : 0;
}

/// How many characters at the start of the text no language writes otherwise.
std::size_t OrdinaryLength(std::string_view text)
{
    const auto isOrdinary = [](char character) {
        return character >= ' ' && character <= '~' && character != '"' && character != '\\';
    };
    return static_cast<std::size_t>(std::ranges::find_if_not(text, isOrdinary) - text.begin());
}

/// Hands each character to `safe` or `unsafe`, with its bytes and its code point; an invalid byte goes to `unsafe` with itself.
/// Ordinary characters come together.
template <typename Safe, typename Unsafe>
void ForEachCharacter(std::string_view text, Safe safe, Unsafe unsafe)
{
    while (!text.empty()) {
        if (const std::size_t ordinary = OrdinaryLength(text); ordinary != 0) {
            safe(text.substr(0, ordinary));
            text.remove_prefix(ordinary);
            continue;
        }
        std::uint32_t codePoint = 0;
        std::size_t length = ReadCharacterOrSurrogate(text, codePoint);
        const bool valid = length != 0;
        if (!valid) {
            length = 1;
            codePoint = static_cast<unsigned char>(text[0]);
        }
        if (valid && !IsUnsafe(codePoint))
            safe(text.substr(0, length));
        else
            unsafe(text.substr(0, length), codePoint);
        text.remove_prefix(length);
    }
}

/// In double quotes; `escape` appends what stands for an unsafe character to the text that it is given.
template <typename Escape>
std::string InQuotes(std::string_view text, Escape escape)
{
    std::string quoted = "\"";
    ForEachCharacter(
        text,
        [&](std::string_view bytes) {
            if (bytes == "\"" || bytes == "\\")
                quoted += '\\';
            quoted += bytes;
        },
        [&](std::string_view bytes, std::uint32_t codePoint) { escape(quoted, bytes, codePoint); });
    return quoted + "\"";
}

} // namespace

bool IsUnsafe(std::uint32_t codePoint)
{
    return std::ranges::any_of(unsafeRanges,
                               [=](const Range& range) { return codePoint >= range.first && codePoint <= range.last; });
}

std::string OneLine(std::string_view text)
{
    std::string line;
    ForEachCharacter(
        text, [&](std::string_view bytes) { line += bytes; },
        [&](std::string_view bytes, std::uint32_t) { AppendBytes(line, bytes); });
    return line;
}

std::string Quoted(std::string_view text)
{
    return InQuotes(text, [](std::string& quoted, std::string_view bytes, std::uint32_t) { AppendBytes(quoted, bytes); });
}

std::string JsonString(std::string_view text)
{
    return InQuotes(text,
                    [](std::string& quoted, std::string_view, std::uint32_t codePoint) { AppendJsonEscape(quoted, codePoint); });
}

bool IsSafeText(std::string_view text)
{
    bool isSafe = true;
    ForEachCharacter(
        text, [](std::string_view) {}, [&](std::string_view, std::uint32_t) { isSafe = false; });
    return isSafe;
}

std::string EscapeDocument(std::string_view document, EscapeStyle style)
{
    std::string escaped;
    escaped.reserve(document.size());
    ForEachCharacter(
        document, [&](std::string_view bytes) { escaped += bytes; },
        [&](std::string_view bytes, std::uint32_t codePoint) {
            if (codePoint == '\n' || codePoint == '\r' || codePoint == '\t')
                escaped += bytes;
            else if (style == EscapeStyle::json)
                AppendJsonEscape(escaped, codePoint);
            else if (style == EscapeStyle::xml && !IsSurrogate(codePoint)) // XML 1.0 has no reference to one
                AppendFormatted(escaped, "&#x%x;", static_cast<unsigned>(codePoint));
            else
                AppendBytes(escaped, bytes);
        });
    return escaped;
}

} // namespace ccrypto
