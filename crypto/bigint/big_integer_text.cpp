#include "crypto/bigint/big_integer.h"

#include <algorithm>

using namespace ccrypto;

namespace {

/// The largest power of ten in a word.
constexpr std::uint32_t digitsOfWord = 18;
constexpr std::int64_t tenToThe18 = 1'000'000'000'000'000'000;

bool TakeSign(std::string_view& digits)
{
    const bool negative = !digits.empty() && digits.front() == '-';
    if (negative)
        digits.remove_prefix(1);
    return negative;
}

int DigitValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    return 16;
}

bool AllDigits(std::string_view digits, int base)
{
    for (char digit : digits)
        if (DigitValue(digit) >= base)
            return false;
    return !digits.empty();
}

} // namespace

CCryptoBigInteger CCryptoBigInteger::FromHex(std::string_view digits)
{
    const bool negative = TakeSign(digits);
    if (!AllDigits(digits, 16))
        return Refuse("the text is no hexadecimal number");
    while (digits.size() > 1 && digits.front() == '0')
        digits.remove_prefix(1);
    if (digits.size() > maxBits / 4)
        return Refuse("it is too long");
    Limbs limbs(digits.size() / 16 + 1);
    for (std::size_t i = 0; i < digits.size(); ++i)
        limbs[i / 16] |= static_cast<std::uint64_t>(DigitValue(digits[digits.size() - 1 - i])) << 4 * (i % 16);
    return CCryptoBigInteger(std::move(limbs), negative);
}

CCryptoBigInteger CCryptoBigInteger::FromDecimal(std::string_view digits)
{
    const bool negative = TakeSign(digits);
    if (!AllDigits(digits, 10))
        return Refuse("the text is no decimal number");
    while (digits.size() > 1 && digits.front() == '0')
        digits.remove_prefix(1);
    // More than 3.3 bits a digit.
    if (digits.size() > maxBits / 3)
        return Refuse("it is too long");
    CCryptoBigInteger result;
    while (!digits.empty() && result.isValid()) {
        const std::size_t count = digits.size() % digitsOfWord == 0 ? digitsOfWord : digits.size() % digitsOfWord;
        std::int64_t word = 0;
        for (char digit : digits.substr(0, count))
            word = word * 10 + DigitValue(digit);
        result = result * tenToThe18 + word;
        digits.remove_prefix(count);
    }
    return negative ? -result : result;
}

CCryptoString CCryptoBigInteger::toHex() const
{
    if (!valid_)
        return CCryptoString("invalid");
    if (limbs_.empty())
        return CCryptoString("0");
    element text(ElementType::utf8Text);
    text.reserve(bits() / 4 + 2);
    if (negative_)
        text.append("-");
    for (std::uint32_t i = (bits() + 3) / 4; i-- > 0;)
        text.append(static_cast<std::uint8_t>("0123456789abcdef"[limbs_[i / 16] >> 4 * (i % 16) & 15]));
    return CCryptoString(text);
}

CCryptoString CCryptoBigInteger::toDecimal() const
{
    if (!valid_)
        return CCryptoString("invalid");
    if (limbs_.empty())
        return CCryptoString("0");
    // From the last digit to the first.
    element text(ElementType::utf8Text);
    text.reserve(bits() / 3 + 2);
    const CCryptoBigInteger divisor = tenToThe18;
    CCryptoBigInteger rest = absolute();
    while (!rest.isZero()) {
        CCryptoBigInteger quotient;
        CCryptoBigInteger group;
        Divide(rest, divisor, quotient, group);
        std::uint64_t word = group.toWord();
        for (std::uint32_t i = 0; i < digitsOfWord && (word != 0 || !quotient.isZero()); ++i, word /= 10)
            text.append(static_cast<std::uint8_t>('0' + word % 10));
        rest = std::move(quotient);
    }
    if (negative_)
        text.append("-");
    std::reverse(text.data(), text.data() + text.length());
    return CCryptoString(text);
}
