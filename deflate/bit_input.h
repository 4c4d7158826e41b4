#pragma once

#include "core/base/byte_order.h"
#include "core/platform/secure_wipe.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ccrypto {

/// The input of a decoder as bits, least significant first, across pieces of any size. Up to 63 bits are held; those above
/// the count are zero. They are wiped in the end.
class BitInput {
public:
    BitInput() = default;
    BitInput(const BitInput&) = delete;
    BitInput& operator=(const BitInput&) = delete;
    ~BitInput() { platform::SecureWipe(&bits_, sizeof bits_); }

    /// The next piece, which must remain valid until it is used up or another one takes its place.
    void give(std::span<const std::uint8_t> piece)
    {
        given_ -= rest().size();
        next_ = piece.data();
        end_ = next_ + piece.size();
        given_ += piece.size();
    }

    /// Holds at least 56 bits, or all that are left of the piece.
    void refill()
    {
        while (count_ <= 55 && next_ != end_) {
            bits_ |= std::uint64_t{*next_++} << count_;
            count_ += 8;
        }
    }
    /// Whether `count` bits, 56 at most, are available.
    bool has(std::uint32_t count)
    {
        if (count_ < count)
            refill();
        return count_ >= count;
    }

    std::uint64_t bits() const { return bits_; }
    std::uint32_t count() const { return count_; }
    std::uint32_t peek(std::uint32_t count) const { return static_cast<std::uint32_t>(bits_ & ((std::uint64_t{1} << count) - 1)); }
    void drop(std::uint32_t count)
    {
        bits_ >>= count;
        count_ -= count;
    }
    std::uint32_t take(std::uint32_t count)
    {
        const std::uint32_t value = peek(count);
        drop(count);
        return value;
    }
    void dropToByte() { drop(count_ & 7); }

    /// The bytes of the piece that are not held as bits.
    std::span<const std::uint8_t> rest() const { return {next_, end_}; }
    void skip(std::size_t count) { next_ += count; }
    /// Takes over what a loop with bits of its own left; surplus bits are cut off.
    void resume(const std::uint8_t* next, std::uint64_t bits, std::uint32_t count)
    {
        next_ = next;
        count_ = count;
        bits_ = bits & ((std::uint64_t{1} << count) - 1);
    }
    /// Gives whole bytes back to the piece, which they must have come from, and drops the bits before them.
    void giveBack()
    {
        next_ -= count_ >> 3;
        bits_ = 0;
        count_ = 0;
    }

    /// Whole bytes held as bits.
    std::uint32_t heldBytes() const { return count_ >> 3; }
    /// Bytes used up since the start, the current one included.
    std::uint64_t consumed() const { return given_ - static_cast<std::uint64_t>(end_ - next_) - heldBytes(); }

private:
    const std::uint8_t* next_ = nullptr;
    const std::uint8_t* end_ = nullptr;
    std::uint64_t given_ = 0;
    std::uint64_t bits_ = 0;
    std::uint32_t count_ = 0;
};

} // namespace ccrypto
