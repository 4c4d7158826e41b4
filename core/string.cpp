#include "core/string.h"

#include "core/platform/secure_wipe.h"
#include "core/stream.h"
#include "core/utf8.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <utility>

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

/// Looks at eight bytes a step, the last step overlapping the one before: most pieces of text take one or two.
bool IsAscii(std::string_view text)
{
    constexpr std::uint64_t highBits = 0x8080808080808080;
    const char* const bytes = text.data();
    const std::size_t count = text.size();
    std::uint64_t seen = 0;
    if (count >= 8) {
        for (std::size_t index = 0; index + 8 < count; index += 8)
            seen |= LoadWord<std::uint64_t>(bytes + index);
        seen |= LoadWord<std::uint64_t>(bytes + count - 8);
    } else if (count >= 4) {
        seen = LoadWord<std::uint32_t>(bytes) | LoadWord<std::uint32_t>(bytes + count - 4);
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

CCryptoString::CCryptoString(std::int32_t number)
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
    if (text.empty())
        return *this;
    const std::uint32_t before = data_.length();
    const bool ascii = IsAscii(text);
    // Room for the terminator at once, so that an append grows the buffer at most once.
    data_.append(text, 1);
    data_.data()[data_.length()] = 0;
    if (!scan_.broken && (scan_.expected != 0 || !ascii))
        classify(data_.view().substr(before));
    return *this;
}

CCryptoString& CCryptoString::appendUtf16(std::u16string_view units)
{
    char piece[256];
    std::size_t used = 0;
    const std::size_t largest = std::min(sizeof piece, units.size() * 3);
    for (std::size_t index = 0; index < units.size(); ++index) {
        std::uint32_t codePoint = units[index];
        if (codePoint < 0x80) {
            piece[used++] = static_cast<char>(codePoint);
        } else {
            if (IsHighSurrogate(codePoint) && index + 1 < units.size() && IsLowSurrogate(units[index + 1]))
                codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (units[++index] - 0xDC00u);
            used += EncodeUtf8(codePoint, reinterpret_cast<std::uint8_t*>(piece + used));
        }
        if (used > sizeof piece - 4) {
            append({piece, used});
            used = 0;
        }
    }
    append({piece, used});
    platform::SecureWipe(piece, largest);
    return *this;
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

void CCryptoString::classify(std::string_view appended)
{
    for (const char character : appended) {
        const auto byte = static_cast<std::uint8_t>(character);
        if (scan_.expected == 0)
            scan_.expected = static_cast<std::uint8_t>(Utf8ContinuationCount(byte));
        else if (!IsUtf8Continuation(byte))
            scan_.broken = true;
        else if (--scan_.expected == 0)
            scan_.complete = true;
        if (scan_.broken)
            break;
    }
    const bool utf8 = scan_.complete && scan_.expected == 0 && !scan_.broken;
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
    if (!data_.toUtf16(scratch_))
        return nullptr;
    return reinterpret_cast<const char16_t*>(scratch_.data());
}

CCryptoString operator+(const CCryptoString& first, const CCryptoString& second)
{
    return CCryptoString(first, second);
}
