#pragma once

#include "core/memory/wiped.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ccrypto::internal {

/// The sponge of SHA-3 and SHAKE (FIPS 202, 4 and 6) over Keccak-p[1600, 24]: takes bytes in pieces of any length, then gives bytes
/// in pieces of any length. Time depends on lengths only. What it holds is wiped when it is destroyed.
class KeccakSponge {
public:
    /// \param rate bytes of the state that a block of the message goes to: 8 to 168, a multiple of 8.
    /// \param suffix the bits that follow the message, with the first bit of the padding above them: 0x06 for SHA-3, 0x1F for
    /// SHAKE.
    constexpr KeccakSponge(std::uint32_t rate, std::uint8_t suffix) : rate_(rate), suffix_(suffix) {}

    std::uint32_t rate() const { return rate_; }
    std::uint8_t suffix() const { return suffix_; }

    void reset();
    /// Not after squeeze(), unless reset() lies between. `bytes` may be null when `length` is 0.
    void absorb(const std::uint8_t* bytes, std::size_t length);
    /// The next bytes. The first call pads the message.
    void squeeze(std::span<std::uint8_t> bytes);
    bool isSqueezing() const { return squeezing_; }

private:
    void pad();

    ccrypto::Wiped<std::array<std::uint64_t, 25>> lanes_{}; ///< lane (x, y) of the standard is at 5 y + x
    std::uint32_t rate_;
    std::uint32_t position_ = 0; ///< bytes of the block that were absorbed or squeezed
    std::uint8_t suffix_;
    bool squeezing_ = false;
};

} // namespace ccrypto::internal
