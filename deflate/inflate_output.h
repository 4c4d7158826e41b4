#pragma once

#include "deflate/crc32.h"

#include <cstdint>
#include <functional>
#include <span>

namespace ccrypto {

/// Takes output in pieces of bounded size, each valid only during the call. \return false to stop.
using DeflateSink = std::function<bool(std::span<const std::uint8_t>)>;

/// How much a stream may grow when it is unpacked; 0 means no limit.
///
/// Deflate makes up to 1032 bytes of one. Data of such density is therefore refused by default only when it is large, too: where
/// more than 16 MiB of it may be right, lift the ratio and set a size instead.
struct InflateLimits {
    static constexpr std::uint64_t usualOutput = std::uint64_t{1} << 30;
    static constexpr std::uint32_t usualRatio = 256;
    static constexpr std::uint64_t usualFreeOutput = std::uint64_t{1} << 24;
    /// The reasons for what exceeds them.
    static constexpr const char* outputReason = "The output exceeds the limit of its size";
    static constexpr const char* ratioReason = "The output exceeds the limit of its ratio to the input";

    /// Bytes of output in all. The sink gets as many, never more.
    std::uint64_t maxOutput = usualOutput;
    /// Output for each byte of Deflate data, counted once the output is larger than `freeOutput`: about every 64 KiB of output, and
    /// at the end of each stream or member, always in the same places.
    std::uint32_t maxRatio = usualRatio;
    std::uint64_t freeOutput = usualFreeOutput;
};

/// Checks unpacked bytes against the limits, counts and checksums them, and gives them to the sink.
class InflateOutput {
public:
    InflateOutput(DeflateSink sink, const InflateLimits& limits) : sink_(std::move(sink)), limits_(limits) {}

    /// The number of bytes that the limit on the size still allows.
    std::uint64_t left() const { return limits_.maxOutput == 0 ? UINT64_MAX : limits_.maxOutput - total_; }
    /// Gives the sink what the limit on the size allows. \return null, or why not all was delivered.
    const char* deliver(std::span<const std::uint8_t> bytes);
    /// \return null, or that the output is too much for the `consumed` bytes of input.
    const char* judge(std::uint64_t consumed) const;

    /// A new member of the input begins.
    void startMember();
    std::uint32_t memberChecksum() const { return checksum_.value(); }
    /// Modulo 2^32.
    std::uint32_t memberLength() const { return memberLength_; }

private:
    DeflateSink sink_;
    InflateLimits limits_;
    std::uint64_t total_ = 0;
    std::uint32_t memberLength_ = 0;
    CCryptoCRC32 checksum_;
};

} // namespace ccrypto
