#pragma once

#include "core/base/byte_order.h"
#include "core/memory/wiped_array.h"
#include "core/platform/secure_wipe.h"
#include "deflate/inflate_output.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace ccrypto {

/// Bits on their way to a sink, least significant first, gathered in pieces of at most 64 KiB. Once the sink has stopped, what
/// comes is dropped.
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
    /// Whole bytes, behind alignToByte().
    void putBytes(std::span<const std::uint8_t> bytes);
    /// Bits of the last byte that are taken, 0 to 7.
    std::uint32_t pendingBits() const { return count_; }

    /// Hands over the whole bytes. \return false when the sink has stopped.
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

} // namespace ccrypto
