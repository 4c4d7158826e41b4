#pragma once

#include "core/text/element.h"

#include <cstdint>

namespace ccrypto {

/// Octets of the identifier and the length of an element of DER whose value has `length` octets.
[[nodiscard]] constexpr std::uint32_t DerHeadSize(std::uint32_t length)
{
    std::uint32_t size = 2;
    if (length >= 0x80)
        for (; length != 0; length >>= 8)
            ++size;
    return size;
}

inline void AppendDerHead(element& output, std::uint8_t identifier, std::uint32_t length)
{
    output.append(identifier);
    const std::uint32_t octets = DerHeadSize(length) - 2;
    output.append(static_cast<std::uint8_t>(octets == 0 ? length : 0x80 | octets));
    for (std::uint32_t shift = octets * 8; shift != 0;) {
        shift -= 8;
        output.append(static_cast<std::uint8_t>(length >> shift));
    }
}

} // namespace ccrypto
