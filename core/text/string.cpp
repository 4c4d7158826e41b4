#include "core/text/string.h"

#include "core/memory/out_of_memory.h"
#include "core/text/stream.h"
#include "core/text/utf8.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <utility>

using namespace ccrypto;

namespace {

std::string_view ViewOf(const char* text)
{
    return text != nullptr ? std::string_view(text) : std::string_view();
}

bool IsTakenAsBytes(ElementType type)
{
    switch (type) {
    case ElementType::none:
    case ElementType::identifier:
    case ElementType::text:
    case ElementType::quotedText:
    case ElementType::utf8Text:
    case ElementType::characterData:
        return true;
    default:
        return false;
    }
}

template <typename Word>
Word LoadWord(const char* bytes)
{
    Word word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

constexpr std::uint64_t highBits = 0x8080808080808080;
/// Pieces of this size and below are copied and looked at in one step.
constexpr std::size_t shortPiece = 32;

/// Two words, the second overlapping the first as far as the piece is short of two.
template <typename Word>
std::uint64_t CopyTwoWords(char* to, std::string_view piece)
{
    const std::size_t second = piece.size() - sizeof(Word);
    const Word words[] = {LoadWord<Word>(piece.data()), LoadWord<Word>(piece.data() + second)};
    std::memcpy(to, &words[0], sizeof(Word));
    std::memcpy(to + second, &words[1], sizeof(Word));
    return words[0] | words[1];
}

/// Copies a short piece that is not empty. \return its bytes laid over each other.
std::uint64_t CopyShort(char* to, std::string_view piece)
{
    if (piece.size() > 16) {
        const std::size_t second = piece.size() - 16;
        return CopyTwoWords<std::uint64_t>(to, piece.substr(0, 16)) |
               CopyTwoWords<std::uint64_t>(to + second, piece.substr(second));
    }
    if (piece.size() >= 8)
        return CopyTwoWords<std::uint64_t>(to, piece);
    if (piece.size() >= 4)
        return CopyTwoWords<std::uint32_t>(to, piece);
    if (piece.size() >= 2)
        return CopyTwoWords<std::uint16_t>(to, piece);
    *to = piece[0];
    return static_cast<std::uint8_t>(piece[0]);
}

/// Looks at eight bytes a step, the last step overlapping the one before.
bool IsAscii(std::string_view text)
{
    std::uint64_t seen = 0;
    if (text.size() >= 8) {
        for (std::size_t index = 0; index + 8 < text.size(); index += 8)
            seen |= LoadWord<std::uint64_t>(text.data() + index);
        seen |= LoadWord<std::uint64_t>(text.data() + text.size() - 8);
    } else {
        for (const char byte : text)
            seen |= static_cast<std::uint8_t>(byte);
    }
    return (seen & highBits) == 0;
}

} // namespace

CCryptoString::CCryptoString(const char* text)
{
    append(ViewOf(text));
}

CCryptoString::CCryptoString(std::string_view text)
{
    append(text);
}

CCryptoString::CCryptoString(const char* bytes, std::uint32_t length)
{
    if (bytes != nullptr)
        append({bytes, length});
}

CCryptoString::CCryptoString(const char* bytes, std::int32_t length)
    : CCryptoString(bytes, length > 0 ? static_cast<std::uint32_t>(length) : 0u)
{
}

void CCryptoString::appendNumber(std::int32_t number)
{
    if (number == 0)
        return;
    char digits[12];
    const auto result = std::to_chars(digits, digits + sizeof digits, number);
    append({digits, static_cast<std::size_t>(result.ptr - digits)});
}

CCryptoString::CCryptoString(const element& value)
{
    if (IsTakenAsBytes(value.type())) {
        append(value.view());
        return;
    }
    *this = value.toString();
    data_.setType(ElementType::text);
}

CCryptoString::CCryptoString(const CCryptoString& first, const CCryptoString& second)
{
    if (!first.isEmpty() && !second.isEmpty())
        data_.reserve(first.length() + second.length() + 1);
    append(first.view()).append(second.view());
}

CCryptoString::CCryptoString(const CCryptoString& first, const char* second) : CCryptoString(first, CCryptoString(second)) {}

CCryptoString CCryptoString::FromUtf16(const char16_t* units, std::uint32_t count)
{
    CCryptoString text;
    if (units != nullptr)
        text.appendUtf16({units, count});
    return text;
}

CCryptoString CCryptoString::FromUtf16(const char16_t* terminated)
{
    const std::u16string_view view = terminated != nullptr ? std::u16string_view(terminated) : std::u16string_view();
    return FromUtf16(view.data(), static_cast<std::uint32_t>(view.size()));
}

CCryptoString::CCryptoString(const CCryptoString& other) : data_(ElementType::text), scan_(other.scan_)
{
    copyBytes(other);
}

CCryptoString& CCryptoString::operator=(const CCryptoString& other)
{
    if (this != &other) {
        data_.clear();
        scan_ = other.scan_;
        copyBytes(other);
    }
    return *this;
}

void CCryptoString::copyBytes(const CCryptoString& other)
{
    data_.setType(other.data_.type());
    if (!other.isEmpty()) {
        data_.reserve(other.length() + 1);
        data_.append(other.view());
        data_.terminate();
    }
}

CCryptoString::CCryptoString(CCryptoString&& other) noexcept : data_(std::move(other.data_)), scan_(std::exchange(other.scan_, {}))
{
    other.data_.setType(ElementType::text);
}

CCryptoString& CCryptoString::operator=(CCryptoString&& other) noexcept
{
    if (this != &other) {
        data_ = std::move(other.data_);
        scan_ = std::exchange(other.scan_, {});
        other.data_.setType(ElementType::text);
    }
    return *this;
}

CCryptoString& CCryptoString::operator=(const char* text)
{
    return *this = CCryptoString(text);
}

CCryptoString& CCryptoString::operator=(const element& value)
{
    return *this = CCryptoString(value);
}

CCryptoString& CCryptoString::operator+=(const CCryptoString& text)
{
    return append(text.view());
}

CCryptoString& CCryptoString::operator+=(const char* text)
{
    return append(ViewOf(text));
}

CCryptoString& CCryptoString::append(std::string_view text)
{
    if (text.size() > shortPiece || data_.spare() <= text.size()) [[unlikely]]
        return appendLong(text);
    if (text.empty())
        return *this;
    auto* const to = reinterpret_cast<char*>(data_.data()) + data_.length();
    const bool ascii = (CopyShort(to, text) & highBits) == 0;
    to[text.size()] = 0;
    data_.lengthen(static_cast<std::uint32_t>(text.size()));
    return classify(to, text.size(), ascii);
}

CCryptoString& CCryptoString::appendLong(std::string_view text)
{
    if (text.empty())
        return *this;
    const bool ascii = IsAscii(text);
    const std::uint32_t before = data_.length();
    // Room for the terminator at once, so that an append grows the buffer at most once.
    data_.append(text, 1);
    data_.data()[data_.length()] = 0;
    return classify(reinterpret_cast<const char*>(data_.data()) + before, text.size(), ascii);
}

CCryptoString& CCryptoString::appendUtf16(std::u16string_view units)
{
    if (units.empty())
        return *this;
    const std::uint64_t length = Utf8Length(units);
    data_.makeRoom(length + 1);
    std::uint8_t* const to = data_.data() + data_.length();
    EncodeUtf8(units, to);
    to[length] = 0;
    data_.lengthen(static_cast<std::uint32_t>(length));
    return classify(reinterpret_cast<const char*>(to), length, length == units.size());
}

const char* CCryptoString::c_str() const
{
    return data_.data() != nullptr ? data_.view().data() : "";
}

void CCryptoString::clear()
{
    data_.clear();
    if (data_.capacity() != 0)
        data_.terminate();
    data_.setType(ElementType::text);
    scan_ = {};
}

CCryptoString& CCryptoString::classify(const char* appended, std::size_t count, bool ascii)
{
    if (!scan_.broken && (scan_.expected != 0 || !ascii))
        scan({appended, count});
    return *this;
}

void CCryptoString::scan(std::string_view appended)
{
    Scan state = scan_;
    for (const char character : appended) {
        const auto byte = static_cast<std::uint8_t>(character);
        if (state.expected == 0)
            state.expected = static_cast<std::uint8_t>(Utf8ContinuationCount(byte));
        else if (!IsUtf8Continuation(byte))
            state.broken = true;
        else if (--state.expected == 0)
            state.complete = true;
        if (state.broken)
            break;
    }
    scan_ = state;
    const bool utf8 = state.complete && state.expected == 0 && !state.broken;
    data_.setType(utf8 ? ElementType::utf8Text : ElementType::text);
}

void CCryptoString::replaceAll(std::string_view from, std::string_view to)
{
    std::size_t found = from.empty() ? std::string_view::npos : view().find(from);
    if (found == std::string_view::npos)
        return;
    CCryptoString replaced;
    std::size_t start = 0;
    for (; found != std::string_view::npos; found = view().find(from, start)) {
        replaced.append(view().substr(start, found - start)).append(to);
        start = found + from.size();
    }
    replaced.append(view().substr(start));
    *this = std::move(replaced);
}

bool CCryptoString::readLine(CCryptoStream& stream)
{
    return stream.ReadLine(*this);
}

const char16_t* CCryptoString::toUtf16()
{
    element units;
    if (!data_.toUtf16(units))
        return nullptr;
    auto kept = std::ranges::find(scratch_, units.view(), &element::view);
    if (kept == scratch_.end()) {
        ccrypto::internal::OrEndOutOfMemory([&] { scratch_.push_front(std::move(units)); });
        kept = scratch_.begin();
    }
    return reinterpret_cast<const char16_t*>(kept->data());
}

CCryptoString operator+(const CCryptoString& first, const CCryptoString& second)
{
    return CCryptoString(first, second);
}
