#pragma once

#include "core/text/element.h"
#include "core/text/string.h"

#include <compare>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

/// A whole number of any sign, up to maxBits long, for general use: its operations take time that depends on the values. Secrets
/// whose time may be observed are for MontgomeryModulus (crypto/bigint/montgomery.h).
///
/// What has no result (a division by zero, a number that grows too long, text that is not a number, an inverse that does not exist)
/// gives a number that is not valid, logged; every operation with such a number gives another. It compares unequal to all, itself
/// included. Storage is wiped before release.
class CCryptoBigInteger {
public:
    /// 32 KiB.
    static constexpr std::uint32_t maxBits = 262144;

    /// 0
    CCryptoBigInteger() = default;
    CCryptoBigInteger(std::int64_t value);
    [[nodiscard]] static CCryptoBigInteger FromWord(std::uint64_t value);
    /// Big-endian; never negative.
    [[nodiscard]] static CCryptoBigInteger FromBytes(std::span<const std::uint8_t> bytes);
    /// Digits with an optional "-" before them, nothing else.
    [[nodiscard]] static CCryptoBigInteger FromHex(std::string_view digits);
    [[nodiscard]] static CCryptoBigInteger FromDecimal(std::string_view digits);
    [[nodiscard]] static CCryptoBigInteger Invalid();

    CCryptoBigInteger(const CCryptoBigInteger&) = default;
    CCryptoBigInteger(CCryptoBigInteger&&) noexcept = default;
    CCryptoBigInteger& operator=(const CCryptoBigInteger& other);
    CCryptoBigInteger& operator=(CCryptoBigInteger&& other) noexcept;
    ~CCryptoBigInteger() { wipe(); }

    [[nodiscard]] bool isValid() const { return valid_; }
    [[nodiscard]] bool isZero() const { return valid_ && limbs_.empty(); }
    [[nodiscard]] bool isNegative() const { return negative_; }
    [[nodiscard]] bool isOdd() const { return !limbs_.empty() && (limbs_[0] & 1) != 0; }
    /// Of the magnitude; 0 has none.
    [[nodiscard]] std::uint32_t bits() const;
    [[nodiscard]] bool bit(std::uint32_t index) const;
    /// The lowest 64 bits of the magnitude.
    [[nodiscard]] std::uint64_t toWord() const { return limbs_.empty() ? 0 : limbs_[0]; }
    /// The magnitude without leading zero bytes; of 0, and of what is not valid, no bytes.
    [[nodiscard]] element toBytes() const;
    /// The magnitude with leading zero bytes. \return false, `bytes` all zeros, when it does not fit.
    [[nodiscard]] bool toBytes(std::span<std::uint8_t> bytes) const;
    /// Lower-case digits, "-" first when negative; "invalid" when it is.
    [[nodiscard]] CCryptoString toHex() const;
    [[nodiscard]] CCryptoString toDecimal() const;

    [[nodiscard]] CCryptoBigInteger operator-() const;
    [[nodiscard]] CCryptoBigInteger absolute() const;
    [[nodiscard]] CCryptoBigInteger operator+(const CCryptoBigInteger& other) const;
    [[nodiscard]] CCryptoBigInteger operator-(const CCryptoBigInteger& other) const;
    [[nodiscard]] CCryptoBigInteger operator*(const CCryptoBigInteger& other) const;
    /// Towards zero; the remainder has the sign of the dividend.
    [[nodiscard]] CCryptoBigInteger operator/(const CCryptoBigInteger& divisor) const;
    [[nodiscard]] CCryptoBigInteger operator%(const CCryptoBigInteger& divisor) const;
    /// Of the magnitude; the sign stays.
    [[nodiscard]] CCryptoBigInteger operator<<(std::uint32_t count) const;
    [[nodiscard]] CCryptoBigInteger operator>>(std::uint32_t count) const;
    CCryptoBigInteger& operator+=(const CCryptoBigInteger& other) { return *this = *this + other; }
    CCryptoBigInteger& operator-=(const CCryptoBigInteger& other) { return *this = *this - other; }
    CCryptoBigInteger& operator*=(const CCryptoBigInteger& other) { return *this = *this * other; }

    std::partial_ordering operator<=>(const CCryptoBigInteger& other) const;
    bool operator==(const CCryptoBigInteger& other) const { return (*this <=> other) == 0; }

    /// Quotient and remainder at once. \return false, both not valid, for a divisor 0.
    static bool Divide(const CCryptoBigInteger& dividend, const CCryptoBigInteger& divisor, CCryptoBigInteger& quotient,
                       CCryptoBigInteger& remainder);
    /// 0 <= result < modulus; the modulus is above 0.
    [[nodiscard]] CCryptoBigInteger modulo(const CCryptoBigInteger& modulus) const;
    /// Never negative; of 0 and 0, 0.
    [[nodiscard]] static CCryptoBigInteger Gcd(const CCryptoBigInteger& left, const CCryptoBigInteger& right);
    /// 0 < result < modulus, result * this = 1 modulo `modulus`, which is above 1.
    [[nodiscard]] CCryptoBigInteger modInverse(const CCryptoBigInteger& modulus) const;
    /// this^exponent modulo `modulus`, which is above 0 and at most 16384 bits long; the exponent is not negative.
    [[nodiscard]] CCryptoBigInteger modPower(const CCryptoBigInteger& exponent, const CCryptoBigInteger& modulus) const;

private:
    using Limbs = std::vector<std::uint64_t>;

    CCryptoBigInteger(Limbs limbs, bool negative);
    static CCryptoBigInteger Refuse(const char* reason);
    void wipe();

    /// The magnitude, lowest first, the last one not 0.
    Limbs limbs_;
    bool negative_ = false;
    bool valid_ = true;
};
