#include "core/text/hex.h"

namespace ccrypto {

namespace {

std::uint8_t DigitValue(char digit)
{
    return static_cast<std::uint8_t>(digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10);
}

} // namespace

bool HexByte(std::string_view digits, std::uint8_t& byte)
{
    if (digits.size() != 2 || !IsHexDigit(digits[0]) || !IsHexDigit(digits[1]))
        return false;
    byte = static_cast<std::uint8_t>(DigitValue(digits[0]) << 4 | DigitValue(digits[1]));
    return true;
}

bool BytesFromHex(std::string_view digits, element& bytes)
{
    bytes = element();
    if (digits.size() % 2 != 0)
        return false;
    bytes.resize(static_cast<std::uint32_t>(digits.size() / 2));
    for (std::uint32_t index = 0; index < bytes.length(); ++index) {
        if (!HexByte(digits.substr(2 * index, 2), bytes.data()[index])) {
            bytes.clear();
            return false;
        }
    }
    return true;
}

CCryptoString HexText(std::span<const std::uint8_t> bytes)
{
    return element(bytes.data(), static_cast<std::uint32_t>(bytes.size())).toString();
}

} // namespace ccrypto
