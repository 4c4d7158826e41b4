#include "crypto/hash/keccak.h"

#include "core/base/byte_order.h"

#include <algorithm>
#include <bit>
#include <utility>

using namespace ccrypto;

namespace ccrypto::internal {

namespace {

using Lanes = std::array<std::uint64_t, 25>;

constexpr std::size_t laneBytes = sizeof(std::uint64_t);

/// FIPS 202, 3.2.5: bit 2^j - 1 of the constant of round i is the output of the shift register after j + 7 i steps.
constexpr std::array<std::uint64_t, 24> RoundConstants()
{
    std::array<std::uint64_t, 24> constants{};
    std::uint32_t state = 1;
    for (std::uint64_t& constant : constants) {
        for (unsigned j = 0; j < 7; ++j) {
            constant |= std::uint64_t{state & 1} << ((1u << j) - 1);
            state = state << 1 ^ ((state >> 7) * 0x171);
        }
    }
    return constants;
}

/// FIPS 202, 3.2.2: where rho and pi bring each lane from, and how far they rotate it.
struct Move {
    unsigned from;
    unsigned rotation;
};

constexpr std::array<Move, 25> Moves()
{
    std::array<Move, 25> moves{};
    unsigned x = 1;
    unsigned y = 0;
    for (unsigned t = 0; t < 24; ++t) {
        const unsigned newX = y;
        const unsigned newY = (2 * x + 3 * y) % 5;
        moves[5 * newY + newX] = {5 * y + x, (t + 1) * (t + 2) / 2 % 64};
        x = newX;
        y = newY;
    }
    return moves;
}

constexpr auto roundConstants = RoundConstants();
constexpr auto moves = Moves();

static_assert(roundConstants.front() == 1 && roundConstants.back() == 0x8000000080008008);
static_assert(moves[0].rotation == 0 && moves[10].from == 1 && moves[10].rotation == 1);

void Permute(Lanes& lanes)
{
    for (const std::uint64_t constant : roundConstants) {
        std::uint64_t columns[5];
        std::uint64_t moved[25];
#pragma GCC unroll 5
        for (unsigned x = 0; x < 5; ++x)
            columns[x] = lanes[x] ^ lanes[x + 5] ^ lanes[x + 10] ^ lanes[x + 15] ^ lanes[x + 20];
#pragma GCC unroll 25
        for (unsigned i = 0; i < 25; ++i) {
            const unsigned x = moves[i].from % 5;
            const std::uint64_t parity = columns[(x + 4) % 5] ^ std::rotl(columns[(x + 1) % 5], 1);
            moved[i] = std::rotl(lanes[moves[i].from] ^ parity, static_cast<int>(moves[i].rotation));
        }
#pragma GCC unroll 25
        for (unsigned i = 0; i < 25; ++i) {
            const unsigned row = i - i % 5;
            lanes[i] = moved[i] ^ (~moved[row + (i + 1) % 5] & moved[row + (i + 2) % 5]);
        }
        lanes[0] ^= constant;
    }
}

void XorByte(Lanes& lanes, std::size_t at, std::uint8_t byte)
{
    lanes[at / laneBytes] ^= std::uint64_t{byte} << 8 * (at % laneBytes);
}

} // namespace

void KeccakSponge::reset()
{
    lanes_.fill(0);
    position_ = 0;
    squeezing_ = false;
}

void KeccakSponge::absorb(const std::uint8_t* bytes, std::size_t length)
{
    while (length != 0) {
        if (position_ == 0 && length >= rate_) {
            for (std::size_t i = 0; i < rate_; i += laneBytes)
                lanes_[i / laneBytes] ^= LoadWord<std::uint64_t, std::endian::little>(bytes + i);
            Permute(lanes_);
            bytes += rate_;
            length -= rate_;
            continue;
        }
        const std::size_t count = std::min<std::size_t>(length, rate_ - position_);
        for (std::size_t i = 0; i < count; ++i)
            XorByte(lanes_, position_++, bytes[i]);
        bytes += count;
        length -= count;
        if (position_ == rate_) {
            Permute(lanes_);
            position_ = 0;
        }
    }
}

void KeccakSponge::pad()
{
    XorByte(lanes_, position_, suffix_);
    XorByte(lanes_, rate_ - 1, 0x80);
    Permute(lanes_);
    position_ = 0;
    squeezing_ = true;
}

void KeccakSponge::squeeze(std::span<std::uint8_t> bytes)
{
    if (!squeezing_)
        pad();
    for (std::uint8_t& byte : bytes) {
        if (position_ == rate_) {
            Permute(lanes_);
            position_ = 0;
        }
        byte = static_cast<std::uint8_t>(lanes_[position_ / laneBytes] >> 8 * (position_ % laneBytes));
        ++position_;
    }
}

} // namespace ccrypto::internal
