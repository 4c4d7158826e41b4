#include "crypto/hash/keccak.h"

#include "core/base/byte_order.h"
#include "core/platform/secure_wipe.h"

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

/// One round. From one array to another: the compiler keeps a row in registers at a time.
[[gnu::always_inline]] inline void Round(std::uint64_t* __restrict to, const std::uint64_t* __restrict from, std::uint64_t constant)
{
    std::uint64_t columns[5];
    std::uint64_t parities[5];
#pragma GCC unroll 5
    for (unsigned x = 0; x < 5; ++x)
        columns[x] = from[x] ^ from[x + 5] ^ from[x + 10] ^ from[x + 15] ^ from[x + 20];
#pragma GCC unroll 5
    for (unsigned x = 0; x < 5; ++x)
        parities[x] = columns[(x + 4) % 5] ^ std::rotl(columns[(x + 1) % 5], 1);
#pragma GCC unroll 5
    for (unsigned row = 0; row < 25; row += 5) {
        std::uint64_t moved[5];
#pragma GCC unroll 5
        for (unsigned x = 0; x < 5; ++x) {
            const Move& move = moves[row + x];
            moved[x] = std::rotl(from[move.from] ^ parities[move.from % 5], static_cast<int>(move.rotation));
        }
#pragma GCC unroll 5
        for (unsigned x = 0; x < 5; ++x)
            to[row + x] = moved[x] ^ (~moved[(x + 1) % 5] & moved[(x + 2) % 5]);
    }
    to[0] ^= constant;
}

void Permute(Lanes& lanes)
{
    std::uint64_t between[25];
    for (std::size_t i = 0; i < roundConstants.size(); i += 2) {
        Round(between, lanes.data(), roundConstants[i]);
        Round(lanes.data(), between, roundConstants[i + 1]);
    }
    // The message, which may be a key, follows from it.
    platform::SecureWipe(between, sizeof between);
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
