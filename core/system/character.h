#pragma once

#include <bit>
#include <compare>
#include <cstdint>

class CCryptoStream;

namespace ccrypto {

/// How a character is laid out in a stream.
enum class CharacterEncoding : std::uint32_t {
    Latin1 = 1,  ///< one byte
    Utf8 = 2,    ///< one to four bytes, up to 0x1FFFFF; overlong forms and surrogates pass
    Utf16 = 3,   ///< big-endian units, surrogate pairs joined
    Wchar16 = 4, ///< one little-endian unit
};

} // namespace ccrypto

/// One character: a code point that streams hold in one of four encodings.
class CCryptoChar {
public:
    CCryptoChar() = default;
    explicit CCryptoChar(std::uint32_t codePoint) : codePoint_(codePoint) {}
    /// Reads one character. Code point 0 when the stream has no unread bytes, and, logged, when they are no character.
    CCryptoChar(CCryptoStream& stream, ccrypto::CharacterEncoding encoding);
    CCryptoChar(const CCryptoChar&) = default;
    CCryptoChar& operator=(const CCryptoChar&) = default;
    virtual ~CCryptoChar() = default;

    std::uint32_t codePoint() const { return codePoint_; }
    /// The number of significant bits of the code point; 0 for code point 0.
    std::uint32_t bitLength() const { return static_cast<std::uint32_t>(std::bit_width(codePoint_)); }

    /// \return false at end of data, and for bytes that are not a character; the position is then after the bytes looked at.
    [[nodiscard]] bool Read(CCryptoStream& stream, ccrypto::CharacterEncoding encoding);
    /// \return false, nothing written, when the encoding cannot hold the character. Latin-1 is the exception: a character beyond
    /// U+00FF is logged as an error, its low byte is written, and the result is true, since the whole encoding was appended.
    ///
    /// As UTF-16 a character beyond U+FFFF, and a surrogate from U+D801 on, is written as two units of which the first is formed
    /// without subtracting 0x10000, as in all the data that has been stored; such a pair reads back as another character. U+D800 is
    /// refused.
    [[nodiscard]] bool Write(CCryptoStream& stream, ccrypto::CharacterEncoding encoding) const;

    bool operator==(const CCryptoChar& other) const { return codePoint_ == other.codePoint_; }
    std::strong_ordering operator<=>(const CCryptoChar& other) const { return codePoint_ <=> other.codePoint_; }

private:
    bool readUtf8(CCryptoStream& stream);
    bool readUtf16(CCryptoStream& stream);
    bool readWchar16(CCryptoStream& stream);
    bool writeLatin1(CCryptoStream& stream) const;
    bool writeUtf16(CCryptoStream& stream) const;
    bool writeWchar16(CCryptoStream& stream) const;

    std::uint32_t codePoint_ = 0;
};
