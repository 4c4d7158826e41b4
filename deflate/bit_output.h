#pragma once

#include "core/base/byte_order.h"
#include "core/memory/wiped.h"
#include "core/platform/secure_wipe.h"
#include "deflate/inflate_output.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>

namespace ccrypto {

/// Collects bits, least significant first, and gives them to a sink in pieces of at most 64 KiB. After the sink has stopped,
/// further bits are dropped.
class BitOutput {
public:
    explicit BitOutput(DeflateSink sink) : sink_(std::move(sink)), bytes_(pieceSize + sizeof(std::uint64_t)) {}
    BitOutput(const BitOutput&) = delete;
    BitOutput& operator=(const BitOutput&) = delete;
    ~BitOutput() { platform::SecureWipe(&bits_, sizeof bits_); }

    /// At most 56 bits; those of `bits` above `count` are zero.
    void put(std::uint64_t bits, std::uint32_t count)
    {
        bits_ |= bits << count_;
        count_ += count;
        StoreLittleEndian(bytes_.data() + position_, bits_);
        position_ += count_ >> 3;
        bits_ >>= count_ & ~7U;
        count_ &= 7;
        if (position_ >= pieceSize - sizeof(std::uint64_t))
            flush();
    }
    /// Fills the last byte with zeros.
    void alignToByte()
    {
        if (count_ != 0)
            put(0, 8 - count_);
    }
    /// Whole bytes, after alignToByte().
    void putBytes(std::span<const std::uint8_t> bytes);
    /// Used bits of the last byte, 0 to 7.
    std::uint32_t pendingBits() const { return count_; }

    /// Gives the whole bytes to the sink. \return false when the sink has stopped.
    bool flush();
    bool stopped() const { return stopped_; }

private:
    static constexpr std::size_t pieceSize = 65536;

    DeflateSink sink_;
    WipedArray<std::uint8_t> bytes_;
    std::size_t position_ = 0;
    std::uint64_t bits_ = 0;
    std::uint32_t count_ = 0;
    bool stopped_ = false;
};

inline void BitOutput::putBytes(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const std::size_t count = std::min(bytes.size(), pieceSize - position_);
        std::memcpy(bytes_.data() + position_, bytes.data(), count);
        position_ += count;
        bytes = bytes.subspan(count);
        if (position_ >= pieceSize - sizeof(std::uint64_t))
            flush();
    }
}

inline bool BitOutput::flush()
{
    if (!stopped_ && position_ != 0)
        stopped_ = !sink_({bytes_.data(), position_});
    position_ = 0;
    return !stopped_;
}

} // namespace ccrypto
