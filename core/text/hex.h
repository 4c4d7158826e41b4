#pragma once

#include "core/base/ascii.h"
#include "core/text/element.h"
#include "core/text/string.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ccrypto {

constexpr bool IsHexDigit(char character)
{
    return IsDigit(character) || (character >= 'a' && character <= 'f') || (character >= 'A' && character <= 'F');
}

/// The byte of exactly two digits. \return false for anything else.
[[nodiscard]] bool HexByte(std::string_view digits, std::uint8_t& byte);

/// The bytes of an even number of digits. \return false, `bytes` empty, for anything else.
[[nodiscard]] bool BytesFromHex(std::string_view digits, element& bytes);

/// Two lower-case digits a byte.
[[nodiscard]] CCryptoString HexText(std::span<const std::uint8_t> bytes);

} // namespace ccrypto
