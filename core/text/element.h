#pragma once

#include "core/platform/secure_wipe.h"
#include "core/text/element_type.h"

#include <atomic>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

namespace ccrypto {

/// An arithmetic type other than `Number`, which the compiler would convert to it implicitly.
template <typename Type, typename Number>
concept ArithmeticBut = std::is_arithmetic_v<Type> && !std::same_as<Type, Number>;

} // namespace ccrypto

class CCryptoString;

/// One token or value: a type code and an owned run of bytes. It is the byte buffer of the whole library and the storage of every
/// string. Lengths are in bytes and fit 32 bits.
///
/// Storage that is released, or replaced by growth, is overwritten with zeros first, unless WipeReleasedBuffers(false)
/// was called. Up to 22 bytes lie in the element itself, so moving the element invalidates pointers to them. A failed
/// allocation ends the process with "FATAL MEMORY ALLOCATION ERROR" and exit code 1.
class element {
public:
    /// Raw bytes, none of them yet.
    element() noexcept = default;
    /// A token, or an empty value of a kind.
    explicit element(ccrypto::ElementType type) noexcept : type_(static_cast<std::uint8_t>(type)) {}
    /// Text, copied up to its terminator; a null pointer gives empty text.
    explicit element(const char* text);
    explicit element(std::string_view text);
    /// A copy of `length` bytes.
    element(const void* bytes, std::uint32_t length, ccrypto::ElementType type = ccrypto::ElementType::bytes);
    /// A number: its big-endian bytes, none of them leading zeros; 0 is one zero byte.
    explicit element(std::same_as<std::uint32_t> auto number) : element(ccrypto::ElementType::integer) { appendNumber(number); }
    /// A character, a truth value or a number of another type is not converted: FromTruth, or a cast that says what is meant.
    explicit element(ccrypto::ArithmeticBut<std::uint32_t> auto number) = delete;

    [[nodiscard]] static element FromTruth(bool value);
    /// Text of UTF-8 bytes made from 16-bit units. A surrogate without its partner is kept as a sequence of its own, so that every
    /// Windows file name comes back unchanged from toUtf16.
    [[nodiscard]] static element FromUtf16(const char16_t* units, std::uint32_t count);
    /// The bytes that standard base64 text (RFC 4648, 4) stands for. White space is ignored.
    /// A last group without its padding is accepted; wrong padding is logged and changes nothing; a group cut inside a byte is
    /// logged and gives the whole bytes before the cut. \return empty, with a logged error, when another character stands in the
    /// text.
    [[nodiscard]] static element FromBase64(std::string_view text);

    element(const element& other);
    element(element&& other) noexcept : type_(other.type_), negative_(other.negative_) { takeStorage(other); }
    element& operator=(const element& other);
    element& operator=(element&& other) noexcept;
    ~element() { release(); }

    ccrypto::ElementType type() const { return static_cast<ccrypto::ElementType>(type_); }
    void setType(ccrypto::ElementType type) { type_ = static_cast<std::uint8_t>(type); }
    /// Set for an INTEGER below zero: read from DER (the bytes are then two's complement) or written with a leading "-"
    /// (magnitude).
    bool negative() const { return negative_; }
    void setNegative(bool negative) { negative_ = negative; }

    std::uint32_t length() const { return length_; }
    std::uint32_t capacity() const { return capacity_; }
    bool isEmpty() const { return length_ == 0; }
    const std::uint8_t* data() const { return data_; }
    std::uint8_t* data() { return data_; }
    std::span<const std::uint8_t> bytes() const { return {data_, length_}; }
    std::string_view view() const { return {reinterpret_cast<const char*>(data_), length_}; }

    /// The byte at `index`; past the end 0, logged as "Const buffer overflow access: %d>%d".
    std::uint8_t operator[](std::uint32_t index) const;

    /// Capacity after the last byte.
    std::uint32_t spare() const { return capacity_ - length_; }
    /// Makes sure of capacity for `count` more bytes.
    void makeRoom(std::uint64_t count) { reserve(LengthOf(length_ + count)); }
    /// Extends the length over `count` bytes, at most spare(), already written past the end.
    void lengthen(std::uint32_t count) { length_ += count; }
    /// Makes sure of capacity for `size` bytes in all. A capacity that must grow becomes exactly `size` the first time and
    /// size + max(256, 0.2 * size) after that. Large storage that has to grow again is doubled, so that a long text made of many
    /// pieces is seldom moved.
    void reserve(std::uint32_t size)
    {
        if (size > capacity_)
            grow(size);
    }
    /// Truncates, or appends zero bytes.
    void resize(std::uint32_t length);
    /// The bytes may be the element's own; a null pointer stands for none. Afterwards there is capacity for `spare` more bytes.
    void append(const void* bytes, std::uint32_t length, std::uint32_t spare = 0)
    {
        if (std::uint64_t{length_} + length + spare > capacity_) {
            appendGrowing(bytes, length, spare);
        } else if (length != 0 && bytes != nullptr) {
            std::memmove(data_ + length_, bytes, length);
            length_ += length;
        }
    }
    void append(std::string_view text, std::uint32_t spare = 0) { append(text.data(), LengthOf(text.size()), spare); }
    void append(std::uint8_t single) { append(&single, 1); }
    void assign(const void* bytes, std::uint32_t length);
    /// Removes up to `count` bytes from `index` on, and wipes the bytes that become free.
    void erase(std::uint32_t index, std::uint32_t count);
    /// Wipes the bytes and keeps the storage and the type.
    void clear();
    /// Puts a zero byte after the last byte without counting it. \return the bytes as text; never null.
    const char* terminate();

    /// The value as people read it: text unchanged, a number in decimal (above 512 bytes in hexadecimal after "0x", a "-" first
    /// when it is negative), truth as "TRUE" or "FALSE", other bytes in lower-case hexadecimal, a token as it is written.
    [[nodiscard]] CCryptoString toString() const;
    /// The last bytes of the value as a big-endian number; of text, its decimal number. An empty value is 0. What does not fit is
    /// cut off: exactWord32 and exactInt say so.
    std::uint32_t toWord32() const;
    std::uint64_t toWord64() const;
    /// Signed: the negative flag counts.
    std::int32_t toInt() const;
    /// The same numbers; none when the value is outside their range.
    [[nodiscard]] std::optional<std::uint32_t> exactWord32() const;
    [[nodiscard]] std::optional<std::int32_t> exactInt() const;
    bool toTruth() const;
    [[nodiscard]] element toBase64() const;
    /// 16-bit units of the text in this machine's byte order with a zero unit after the last; the zero is not counted in the
    /// length. UTF-8 text is decoded, other text is taken as Latin-1. \return false, logged, and `units` empty when the text is not
    /// valid.
    [[nodiscard]] bool toUtf16(element& units) const;

    /// Same type, sign and bytes. Takes time that depends on the lengths alone.
    bool operator==(const element& other) const;

    /// One switch for all buffers of the process; on at start.
    static void WipeReleasedBuffers(bool wipe);

private:
    static constexpr std::uint32_t maxLength = 0xFFFFFFFF;

    static std::uint32_t LengthOf(std::uint64_t length)
    {
        if (length > maxLength) [[unlikely]]
            EndTooLong();
        return static_cast<std::uint32_t>(length);
    }
    [[noreturn]] static void EndTooLong();

    void appendNumber(std::uint32_t number);
    std::optional<std::int64_t> exactInt64() const;
    bool isInline() const { return data_ == inline_; }
    void grow(std::uint32_t size);
    void appendGrowing(const void* bytes, std::uint32_t length, std::uint32_t spare);
    /// Takes over what `other` holds; this element must hold nothing. Type and sign stay.
    void takeStorage(element& other) noexcept
    {
        length_ = other.length_;
        capacity_ = other.capacity_;
        if (other.isInline()) {
            std::memcpy(inline_, other.inline_, sizeof inline_);
            data_ = inline_;
            other.release();
        } else {
            data_ = other.data_;
        }
        other.data_ = nullptr;
        other.length_ = 0;
        other.capacity_ = 0;
    }
    void release() noexcept
    {
        if (isInline()) {
            if (wipeReleased.load(std::memory_order_relaxed))
                ccrypto::platform::SecureWipe(inline_);
        } else if (data_ != nullptr) {
            releaseStorage();
        }
    }
    void releaseStorage() noexcept;

    static inline std::atomic<bool> wipeReleased{true};

    std::uint8_t* data_ = nullptr;
    std::uint32_t length_ = 0;
    std::uint32_t capacity_ = 0;
    std::uint8_t type_ = static_cast<std::uint8_t>(ccrypto::ElementType::bytes);
    bool negative_ = false;
    alignas(2) std::uint8_t inline_[22];
};
