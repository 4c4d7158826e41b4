#pragma once

#include "deflate/crc32.h"

#include <cstdint>
#include <functional>
#include <span>

namespace ccrypto {

/// Takes output as it comes, in pieces of bounded size that are valid during the call alone. \return false to stop.
using DeflateSink = std::function<bool(std::span<const std::uint8_t>)>;

/// How much a stream may grow when it is unpacked; 0 lifts a limit.
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
    std::uint64_t mostOutput = usualOutput;
    /// Output for each byte of Deflate data, counted once the output is larger than `freeOutput`: about every 64 KiB of output, and
    /// at the end of each stream or member, always in the same places.
    std::uint32_t mostRatio = usualRatio;
    std::uint64_t freeOutput = usualFreeOutput;
};

/// Where unpacked bytes go: held to the limits, counted and checksummed, then handed to the sink.
class InflateOutput {
public:
    InflateOutput(DeflateSink sink, const InflateLimits& limits) : sink_(std::move(sink)), limits_(limits) {}

    /// How many bytes more the limit of the size lets through.
    std::uint64_t left() const { return limits_.mostOutput == 0 ? UINT64_MAX : limits_.mostOutput - total_; }
    /// Hands on what the limit of the size lets through. \return null, or why not all was delivered.
    const char* deliver(std::span<const std::uint8_t> bytes);
    /// \return null, or that what was delivered is too much for the `consumed` bytes of input that it was made of.
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
