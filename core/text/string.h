#pragma once

#include "core/text/element.h"

#include <compare>
#include <concepts>
#include <cstdint>
#include <forward_list>
#include <string_view>

class CCryptoChar;
class CCryptoStream;

namespace ccrypto {

/// Plain 8-bit text, or UTF-8 text with at least one character beyond ASCII. The values are those of ElementType.
enum class TextKind : std::uint32_t { Plain = 4, Utf8 = 6 };

} // namespace ccrypto

/// The library's text value: 8-bit bytes, normally UTF-8. Lengths are in bytes.
///
/// The kind follows the bytes: complete multi-byte sequences and no sequence cut short make UTF-8; a stray byte above 0x7F is
/// ignored, so Latin-1 text is judged by its well-formed sequences alone.
///
/// A literal string converts by itself; the other sources are named, and only a std::int32_t itself becomes its digits, so that a
/// number or a character never becomes text by accident. Where a std::string_view is taken a null pointer is not allowed; a `const
/// char*` may be null and stands for empty text.
class CCryptoString {
public:
    CCryptoString() = default;
    CCryptoString(const char* text);
    explicit CCryptoString(std::string_view text);
    /// The number after a literal is a length, never appended text. A null pointer gives the empty string.
    CCryptoString(const char* bytes, std::uint32_t length);
    /// A negative length counts as 0.
    CCryptoString(const char* bytes, std::int32_t length);
    /// The decimal text; 0 gives the empty string, since an unset number prints as nothing.
    explicit CCryptoString(std::same_as<std::int32_t> auto number) { appendNumber(number); }
    /// A character, a truth value or a number of another type is not text.
    explicit CCryptoString(ccrypto::ArithmeticBut<std::int32_t> auto number) = delete;
    /// Text kinds and values without a kind are taken as bytes; any other element as its toString().
    explicit CCryptoString(const element& value);
    /// The character in UTF-8. This and the other two operations on characters are defined with CCryptoChar.
    explicit CCryptoString(const CCryptoChar& character);
    CCryptoString(const CCryptoString& first, const CCryptoString& second);
    CCryptoString(const CCryptoString& first, const char* second);
    CCryptoString(const CCryptoString& first, std::same_as<std::int32_t> auto number) : CCryptoString(first, CCryptoString(number))
    {
    }

    /// Text of 16-bit units, as Windows hands them out; a null pointer gives the empty string.
    [[nodiscard]] static CCryptoString FromUtf16(const char16_t* units, std::uint32_t count);
    [[nodiscard]] static CCryptoString FromUtf16(const char16_t* terminated);

    CCryptoString(const CCryptoString& other);
    /// Leaves `other` empty.
    CCryptoString(CCryptoString&& other) noexcept;
    CCryptoString& operator=(const CCryptoString& other);
    CCryptoString& operator=(CCryptoString&& other) noexcept;
    virtual ~CCryptoString() = default;

    CCryptoString& operator=(const char* text);
    CCryptoString& operator=(std::same_as<std::int32_t> auto number) { return *this = CCryptoString(number); }
    CCryptoString& operator=(const element& value);
    CCryptoString& operator=(const CCryptoChar& character);

    CCryptoString& operator+=(const CCryptoString& text);
    CCryptoString& operator+=(const char* text);
    CCryptoString& operator+=(const CCryptoChar& character);
    CCryptoString& append(std::string_view text);
    /// Text of 16-bit units, as FromUtf16 takes it.
    CCryptoString& appendUtf16(std::u16string_view units);

    std::uint32_t length() const { return data_.length(); }
    bool isEmpty() const { return data_.isEmpty(); }
    ccrypto::TextKind kind() const { return static_cast<ccrypto::TextKind>(data_.type()); }
    /// Never null; valid until the string changes.
    const char* c_str() const;
    std::string_view view() const { return data_.view(); }
    /// The bytes with the kind as their type.
    const element& data() const { return data_; }
    void clear();

    bool contains(std::string_view part) const { return view().find(part) != std::string_view::npos; }
    bool startsWith(std::string_view part) const { return view().starts_with(part); }
    /// Replaces every occurrence of `from`, left to right; what was put in is not searched again. An empty `from` changes nothing.
    void replaceAll(std::string_view from, std::string_view to);
    /// The next line of the stream, without its terminator. \return false at end of data; the string is then empty.
    [[nodiscard]] bool readLine(CCryptoStream& stream);

    /// 16-bit units, zero-terminated. The pointer stays valid as long as the string lives, whatever is assigned to it: each text
    /// that was asked for is kept, once. \return null, logged, when the text is not valid.
    [[nodiscard]] const char16_t* toUtf16();

    bool operator==(const CCryptoString& other) const { return view() == other.view(); }
    bool operator==(const char* other) const { return view() == (other != nullptr ? std::string_view(other) : std::string_view()); }
    std::strong_ordering operator<=>(const CCryptoString& other) const { return view() <=> other.view(); }

private:
    /// The state of the one-pass classification, kept so that an append looks at the new bytes alone.
    struct Scan {
        std::uint8_t expected = 0;
        bool complete = false;
        bool broken = false;
    };

    void appendNumber(std::int32_t number);
    CCryptoString& appendLong(std::string_view text);
    CCryptoString& classify(const char* appended, std::size_t count, bool ascii);
    void scan(std::string_view appended);
    void copyBytes(const CCryptoString& other);

    // With storage, a zero byte always stands after the last byte.
    element data_{ccrypto::ElementType::text};
    /// Forms derived from the text, for which pointers were handed out.
    std::forward_list<element> scratch_;
    Scan scan_;
};

CCryptoString operator+(const CCryptoString& first, const CCryptoString& second);
