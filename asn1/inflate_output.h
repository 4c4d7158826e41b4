#pragma once

#include "asn1/crc32.h"

#include <cstdint>
#include <functional>
#include <span>

/// Takes output as it comes, in pieces of bounded size that are valid during the call alone. \return false to stop.
using DeflateSink = std::function<bool(std::span<const std::uint8_t>)>;

/// How much a stream may grow when it is unpacked; 0 lifts a limit.
struct InflateLimits {
    /// Bytes of output in all.
    std::uint64_t mostOutput = std::uint64_t{1} << 30;
    /// Output for each byte of input, counted once the output is larger than `freeOutput`. Deflate itself cannot exceed 1032.
    std::uint32_t mostRatio = 256;
    std::uint64_t freeOutput = std::uint64_t{1} << 20;
};

/// Where unpacked bytes go: held to the limits, counted and checksummed, then handed to the sink.
class InflateOutput {
public:
    InflateOutput(DeflateSink sink, const InflateLimits& limits) : sink_(std::move(sink)), limits_(limits) {}

    /// Hands `bytes` on; `consumed` is the input read so far. \return null, or why the bytes were not delivered.
    const char* deliver(std::span<const std::uint8_t> bytes, std::uint64_t consumed);

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
