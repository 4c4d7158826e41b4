#pragma once

#include <cstdint>
#include <span>

/// The CRC-32 of GZIP (RFC 1952, 8), over bytes given in any pieces.
class CCryptoCRC32 {
public:
    void update(std::span<const std::uint8_t> bytes);
    void reset() { state_ = 0xFFFFFFFFU; }
    /// The checksum of all bytes so far; 0 for none.
    std::uint32_t value() const { return ~state_; }

private:
    std::uint32_t state_ = 0xFFFFFFFFU;
};
