#pragma once

#include "crypto/base/constant_time.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ccrypto {

/// A MAC is not truncated to less: the shortest that smart cards use for secure messaging (ISO/IEC 7816-4).
constexpr std::size_t minTruncatedMAC = 4;

namespace internal {

/// Whether `mac` is the first `length` bytes of `own`. False for lengths that are not allowed; time depends on lengths only.
[[nodiscard]] inline bool IsTruncatedMAC(std::span<const std::uint8_t> mac, std::span<const std::uint8_t> own, std::size_t length)
{
    return length >= minTruncatedMAC && length <= own.size() && mac.size() == length &&
           ccrypto::constant_time::Declassify(ccrypto::constant_time::EqualBytes(own.data(), mac.data(), length));
}

} // namespace internal

} // namespace ccrypto
