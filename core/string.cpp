#include "core/string.h"

#include "core/stream.h"
#include "core/utf8.h"

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

/// The first byte of `text` from `index` on that is not ASCII, eight bytes a step.
std::size_t SkipAscii(std::string_view text, std::size_t index)
{
    constexpr std::uint64_t highBits = 0x8080808080808080;
    for (std::uint64_t word = 0; index + sizeof word <= text.size(); index += sizeof word) {
        std::memcpy(&word, text.data() + index, sizeof word);
        if ((word & highBits) != 0)
            break;
    }
    while (index < text.size() && static_cast<std::uint8_t>(text[index]) < 0x80)
        ++index;
    return index;
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
    data_.reserve(first.length() + second.length() + 1);
    append(first.view()).append(second.view());
}

CCryptoString::CCryptoString(const CCryptoString& first, const char* second) : CCryptoString(first, CCryptoString(second)) {}

CCryptoString::CCryptoString(const CCryptoString& first, std::int32_t number) : CCryptoString(first, CCryptoString(number)) {}

CCryptoString CCryptoString::FromUtf16(const char16_t* units, std::uint32_t count)
{
    CCryptoString text;
    if (units != nullptr)
        text.append(element::FromUtf16(units, count).view());
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
        data_.append(other.data_.data(), other.length());
        data_.terminate();
    }
}

CCryptoString::CCryptoString(CCryptoString&& other) noexcept
    : data_(std::move(other.data_)), scratch_(std::move(other.scratch_)), scan_(std::exchange(other.scan_, {}))
{
    other.data_.setType(ElementType::text);
}

CCryptoString& CCryptoString::operator=(CCryptoString&& other) noexcept
{
    if (this != &other) {
        data_ = std::move(other.data_);
        scratch_ = std::move(other.scratch_);
        scan_ = std::exchange(other.scan_, {});
        other.data_.setType(ElementType::text);
    }
    return *this;
}

CCryptoString& CCryptoString::operator=(const char* text)
{
    return *this = CCryptoString(text);
}

CCryptoString& CCryptoString::operator=(std::int32_t number)
{
    return *this = CCryptoString(number);
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
    const auto added = static_cast<std::uint32_t>(text.size());
    // Room for the terminator at once, so that an append grows the buffer at most once.
    if (data_.capacity() - before <= added && !(text.data() >= data_.view().data() && text.data() < data_.view().data() + before))
        data_.reserve(before + added + 1);
    data_.append(text.data(), added);
    data_.terminate();
    classify(data_.view().substr(before));
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
    for (std::size_t index = 0; index < appended.size() && !scan_.broken; ++index) {
        if (scan_.expected == 0) {
            index = SkipAscii(appended, index);
            if (index == appended.size())
                break;
            scan_.expected = static_cast<std::uint8_t>(Utf8ContinuationCount(static_cast<std::uint8_t>(appended[index])));
        } else if (!IsUtf8Continuation(static_cast<std::uint8_t>(appended[index]))) {
            scan_.broken = true;
        } else if (--scan_.expected == 0) {
            scan_.complete = true;
        }
    }
    const bool utf8 = scan_.complete && !scan_.broken && scan_.expected == 0;
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
