#pragma once

#include "crypto/cipher/des_boxes.h"
#include "crypto/cipher/des_tables.h"
#include "crypto/cipher/des_variants.h"

// DES over as many blocks as a register has bits: word b of a half holds its bit b of all blocks, so permutations are names of
// words, and S-boxes are circuits. Only the files of the variants include this, and all of it is inlined into them.
//
// Lane::Register is a word of Lane::words times 64 bits with the operators ^ & | ~, and Lane::Load, Store and Broadcast move it. A
// run of 64 registers lies in memory as 64 times Lane::words plain words.

namespace ccrypto::des {

/// Exchanges rows and columns of the 64 by 64 bits of each lane.
template <typename Lane>
[[gnu::always_inline]] inline void Transpose(std::uint64_t* rows)
{
    std::uint64_t mask = 0x00000000FFFFFFFF;
    for (int distance = 32; distance > 0; distance /= 2, mask ^= mask << distance) {
        const auto wide = Lane::Broadcast(mask);
        for (int row = 0; row < 64; row = (row + distance + 1) & ~distance) {
            std::uint64_t* const low = rows + Lane::words * row;
            std::uint64_t* const high = rows + Lane::words * (row + distance);
            auto a = Lane::Load(low);
            auto b = Lane::Load(high);
            const auto difference = ((a >> distance) ^ b) & wide;
            Lane::Store(high, b ^ difference);
            Lane::Store(low, a ^ (difference << distance));
        }
    }
}

/// The row of a transposed block that holds this bit, numbered as in the standard: bytes are little-endian words there.
constexpr int RowOf(int bit)
{
    return (bit - 1) / 8 * 8 + 7 - (bit - 1) % 8;
}

struct PlacesOfOutput {
    int place[32];
};

/// Where the round function puts each bit of the S-boxes' output.
constexpr PlacesOfOutput MakePlaces()
{
    PlacesOfOutput places{};
    for (int bit = 0; bit < 32; ++bit)
        places.place[roundPermutation[bit] - 1] = bit;
    return places;
}

constexpr PlacesOfOutput places = MakePlaces();

/// The planes of a half, with a round key added.
template <typename Lane>
struct Inputs {
    const std::uint64_t* half;
    const std::uint64_t* key;

    /// Input `i` of an S-box, both counted from 0.
    [[gnu::always_inline]] inline typename Lane::Register at(int box, int i) const
    {
        return Lane::Load(half + Lane::words * ((4 * box + 31 + i) % 32)) ^ Lane::Broadcast(key[6 * box + i]);
    }
};

template <typename Lane>
[[gnu::always_inline]] inline void AddTo(std::uint64_t* half, int output, typename Lane::Register value)
{
    std::uint64_t* const place = half + Lane::words * places.place[output];
    Lane::Store(place, Lane::Load(place) ^ value);
}

/// Adds to `to` what the round function makes of `from`.
template <typename Lane>
[[gnu::always_inline]] inline void AddRound(std::uint64_t* to, const std::uint64_t* from, const std::uint64_t* key)
{
    const Inputs<Lane> in{from, key};
    typename Lane::Register a, b, c, d;
    const auto add = [&](int box) {
        AddTo<Lane>(to, 4 * box, a);
        AddTo<Lane>(to, 4 * box + 1, b);
        AddTo<Lane>(to, 4 * box + 2, c);
        AddTo<Lane>(to, 4 * box + 3, d);
    };
    Box1<Lane>(in.at(0, 0), in.at(0, 1), in.at(0, 2), in.at(0, 3), in.at(0, 4), in.at(0, 5), a, b, c, d);
    add(0);
    Box2<Lane>(in.at(1, 0), in.at(1, 1), in.at(1, 2), in.at(1, 3), in.at(1, 4), in.at(1, 5), a, b, c, d);
    add(1);
    Box3<Lane>(in.at(2, 0), in.at(2, 1), in.at(2, 2), in.at(2, 3), in.at(2, 4), in.at(2, 5), a, b, c, d);
    add(2);
    Box4<Lane>(in.at(3, 0), in.at(3, 1), in.at(3, 2), in.at(3, 3), in.at(3, 4), in.at(3, 5), a, b, c, d);
    add(3);
    Box5<Lane>(in.at(4, 0), in.at(4, 1), in.at(4, 2), in.at(4, 3), in.at(4, 4), in.at(4, 5), a, b, c, d);
    add(4);
    Box6<Lane>(in.at(5, 0), in.at(5, 1), in.at(5, 2), in.at(5, 3), in.at(5, 4), in.at(5, 5), a, b, c, d);
    add(5);
    Box7<Lane>(in.at(6, 0), in.at(6, 1), in.at(6, 2), in.at(6, 3), in.at(6, 4), in.at(6, 5), a, b, c, d);
    add(6);
    Box8<Lane>(in.at(7, 0), in.at(7, 1), in.at(7, 2), in.at(7, 3), in.at(7, 4), in.at(7, 5), a, b, c, d);
    add(7);
}

/// One bit of a round key in every bit of a word, all 48.
[[gnu::always_inline]] inline void SpreadKey(std::uint64_t* spread, std::uint64_t groups)
{
    for (int box = 0; box < 8; ++box)
        for (int i = 0; i < 6; ++i)
            spread[6 * box + i] = std::uint64_t{0} - (groups >> (8 * (7 - box) + 5 - i) & 1);
}

/// 64 blocks for each of Lane::words. The memory is the caller's to wipe.
template <typename Lane>
struct Planes {
    std::uint64_t rows[64 * Lane::words];
    std::uint64_t halves[2][32 * Lane::words];
    std::uint64_t key[48];

    [[gnu::always_inline]] inline void transform(const Schedule& schedule, std::uint8_t* out, const std::uint8_t* in)
    {
        __builtin_memcpy(rows, in, sizeof rows);
        Transpose<Lane>(rows);
        for (int bit = 0; bit < 64; ++bit)
            Lane::Store(halves[bit / 32] + Lane::words * (bit % 32),
                        Lane::Load(rows + Lane::words * RowOf(initialPermutation[bit])));
        int left = 0;
        for (std::size_t round = 0; round < schedule.passes * rounds; ++round) {
            SpreadKey(key, schedule.keys[round]);
            AddRound<Lane>(halves[left], halves[1 - left], key);
            // The two halves are not exchanged after the last round of a pass.
            if (round % rounds != rounds - 1)
                left = 1 - left;
        }
        for (int bit = 0; bit < 64; ++bit)
            Lane::Store(rows + Lane::words * RowOf(initialPermutation[bit]),
                        Lane::Load(halves[bit < 32 ? left : 1 - left] + Lane::words * (bit % 32)));
        Transpose<Lane>(rows);
        __builtin_memcpy(out, rows, sizeof rows);
    }
};

} // namespace ccrypto::des
