#include "crypto/cipher/des.h"

#include "core/diagnostics/auto_logger.h"
#include "crypto/base/block_bytes.h"
#include "crypto/cipher/des_tables.h"

#include <algorithm>
#include <bit>
#include <cstring>

using namespace ccrypto;

// A single block goes through tables. Both halves are kept expanded (E) to eight groups of six bits, one to a byte, so that a byte
// is an index unchanged; an entry is the output of an S-box, permuted (P) and expanded again. With the keys folded into what is
// added off the chain, a round is a look-up and a sum.

namespace {

using block_bytes::Load32;
using block_bytes::Store32;

/// The first S-box's group comes from bits 32, 1, 2, 3, 4, 5 of the half, and so on.
constexpr std::uint64_t Expand(std::uint32_t half)
{
    std::uint64_t nibbles = half;
    nibbles = (nibbles | nibbles << 16) & 0x0000FFFF0000FFFF;
    nibbles = (nibbles | nibbles << 8) & 0x00FF00FF00FF00FF;
    nibbles = (nibbles | nibbles << 4) & 0x0F0F0F0F0F0F0F0F;
    const std::uint64_t middle = nibbles << 1;
    return middle | (std::rotr(middle, 8) & 0x0202020202020202) << 4 | (std::rotl(middle, 8) & 0x1010101010101010) >> 4;
}

std::uint32_t Contract(std::uint64_t groups)
{
    std::uint64_t nibbles = groups >> 1 & 0x0F0F0F0F0F0F0F0F;
    nibbles = (nibbles | nibbles >> 4) & 0x00FF00FF00FF00FF;
    nibbles = (nibbles | nibbles >> 8) & 0x0000FFFF0000FFFF;
    return static_cast<std::uint32_t>(nibbles | nibbles >> 16);
}

struct Tables {
    std::uint64_t box[8][64];
};

constexpr Tables MakeTables()
{
    Tables tables{};
    for (unsigned box = 0; box < 8; ++box)
        for (unsigned index = 0; index < 64; ++index) {
            const unsigned row = (index >> 4 & 2) | (index & 1);
            const std::uint32_t output = std::uint32_t{des::substitutionBoxes[box][16 * row + (index >> 1 & 15)]} << (28 - 4 * box);
            std::uint32_t permuted = 0;
            for (unsigned bit = 0; bit < 32; ++bit)
                permuted |= (output >> (32 - des::roundPermutation[bit]) & 1) << (31 - bit);
            tables.box[box][index] = Expand(permuted);
        }
    return tables;
}

alignas(64) constexpr Tables tables = MakeTables();

/// Keeps the compiler from putting sums into an order of its own.
[[gnu::always_inline]] inline std::uint64_t AsWritten(std::uint64_t value)
{
    asm("" : "+r"(value));
    return value;
}

/// `other` and what a round makes of `x`. One round waits for the one before it, so what counts is how long its chain is: what is
/// looked up first is summed first, and bytes are taken from words that need few shifts.
[[gnu::always_inline]] inline std::uint64_t Round(std::uint64_t x, std::uint64_t other)
{
    // Look-ups are made before their sums: as one instruction with a sum they would wait for its other part.
    const auto at = [](int box, std::uint64_t index) { return AsWritten(tables.box[box][index & 0xFF]); };
    const std::uint64_t x2 = AsWritten(x >> 16);
    const std::uint64_t x4 = AsWritten(x >> 32);
    const std::uint64_t x6 = AsWritten(x >> 48);
    const std::uint64_t s7 = at(7, x);
    const std::uint64_t s6 = at(6, x >> 8);
    const std::uint64_t s0 = at(0, x >> 56);
    const std::uint64_t s5 = at(5, x2);
    const std::uint64_t s4 = at(4, x2 >> 8);
    const std::uint64_t s3 = at(3, x4);
    const std::uint64_t s2 = at(2, x4 >> 8);
    const std::uint64_t s1 = at(1, x6);
    const std::uint64_t early = AsWritten(AsWritten(other ^ s7) ^ AsWritten(s6 ^ s0));
    const std::uint64_t middle = AsWritten(s5 ^ s4);
    const std::uint64_t late = AsWritten(AsWritten(s3 ^ s2) ^ s1);
    return AsWritten(early ^ middle) ^ late;
}

struct Halves {
    std::uint64_t a, b;
};

/// All passes. `a` comes in as the expanded left half, `b` as the right one with the first key added; they leave as the right half
/// and the left one with the last key added (before the halves are swapped for the final permutation).
[[gnu::always_inline]] inline Halves Passes(const des::Schedule& schedule, Halves x)
{
    const std::uint64_t* between = schedule.between;
    for (std::size_t pass = 0;; ++pass) {
        for (std::size_t round = 0; round < des::rounds; round += 2, between += 2) {
            x.a = Round(x.b, AsWritten(x.a ^ between[0]));
            x.b = Round(x.a, AsWritten(x.b ^ between[1]));
        }
        if (pass + 1 == schedule.passes)
            return {x.b, x.a};
        x = {x.b, x.a ^ schedule.turn[pass]};
    }
}

/// Exchanges the bits of `high` under `mask` with those of `low` that stand `shift` higher.
void Exchange(std::uint32_t& low, std::uint32_t& high, int shift, std::uint32_t mask)
{
    const std::uint32_t difference = (low >> shift ^ high) & mask;
    high ^= difference;
    low ^= difference << shift;
}

/// The initial permutation: the left half gets the even bits, the right one the odd ones, last byte first.
void Permute(std::uint32_t& left, std::uint32_t& right)
{
    Exchange(left, right, 4, 0x0F0F0F0F);
    Exchange(left, right, 16, 0x0000FFFF);
    Exchange(right, left, 2, 0x33333333);
    Exchange(right, left, 8, 0x00FF00FF);
    Exchange(left, right, 1, 0x55555555);
}

void PermuteBack(std::uint32_t& left, std::uint32_t& right)
{
    Exchange(left, right, 1, 0x55555555);
    Exchange(right, left, 8, 0x00FF00FF);
    Exchange(right, left, 2, 0x33333333);
    Exchange(left, right, 16, 0x0000FFFF);
    Exchange(left, right, 4, 0x0F0F0F0F);
}

Halves LoadHalves(const std::uint8_t* block)
{
    std::uint32_t left = Load32(block);
    std::uint32_t right = Load32(block + 4);
    Permute(left, right);
    return {Expand(left), Expand(right)};
}

void StoreHalves(std::uint8_t* block, Halves x)
{
    std::uint32_t left = Contract(x.a);
    std::uint32_t right = Contract(x.b);
    PermuteBack(left, right);
    Store32(block, left);
    Store32(block + 4, right);
}

std::uint64_t LastKey(const des::Schedule& schedule)
{
    return schedule.keys[schedule.passes * des::rounds - 1];
}

void TransformOne(const des::Schedule& schedule, std::uint8_t* out, const std::uint8_t* in)
{
    Halves x = LoadHalves(in);
    x.b ^= schedule.keys[0];
    x = Passes(schedule, x);
    x.b ^= LastKey(schedule);
    StoreHalves(out, x);
}

/// The round keys of one DES, groups of six bits.
void ExpandKey(std::uint64_t* keys, const std::uint8_t* bytes)
{
    const std::uint64_t key = block_bytes::Load64(bytes);
    std::uint64_t chosen = 0;
    for (const std::uint8_t bit : des::permutedChoice1)
        chosen = chosen << 1 | (key >> (64 - bit) & 1);
    constexpr std::uint32_t mask = (1u << 28) - 1;
    auto left = static_cast<std::uint32_t>(chosen >> 28);
    auto right = static_cast<std::uint32_t>(chosen & mask);
    for (std::size_t round = 0; round < des::rounds; ++round) {
        const int by = des::keyRotations[round];
        left = (left << by | left >> (28 - by)) & mask;
        right = (right << by | right >> (28 - by)) & mask;
        const std::uint64_t both = std::uint64_t{left} << 28 | right;
        std::uint64_t groups = 0;
        for (std::size_t i = 0; i < 48; ++i)
            groups = groups << (i % 6 == 0 ? 3 : 1) | (both >> (56 - des::permutedChoice2[i]) & 1);
        keys[round] = groups;
    }
}

/// The sums of keys that single blocks need.
void Fold(des::Schedule& schedule)
{
    for (std::size_t pass = 0; pass < schedule.passes; ++pass) {
        const std::uint64_t* const keys = schedule.keys + pass * des::rounds;
        std::uint64_t* const between = schedule.between + pass * des::rounds;
        for (std::size_t round = 0; round < des::rounds; ++round)
            between[round] = (round == 0 ? 0 : keys[round - 1]) ^ (round + 1 == des::rounds ? 0 : keys[round + 1]);
        const std::size_t next = (pass + 1) % schedule.passes;
        schedule.turn[pass] = keys[des::rounds - 1] ^ schedule.keys[next * des::rounds];
    }
}

} // namespace

namespace ccrypto {

std::span<const Variant<des::Calls>> des::Variants()
{
    static const Variant<Calls> variants[] = {
        {"portable", cpu::none, portableCalls},
        {"avx2", cpu::avx2, avx2Calls},
    };
    return variants;
}

} // namespace ccrypto

CCryptoDES::CCryptoDES()
{
    static const Variant<des::Calls>& chosen = ChooseVariant(des::Variants());
    calls_ = &chosen.calls;
}

bool CCryptoDES::setKey(std::span<const std::uint8_t> key)
{
    CCryptoAutoLogger logger("CCryptoDES::setKey");

    if (key.size() != 8 && key.size() != 16 && key.size() != 24) {
        clearKey();
        return logger.fail(false, "DES and 3DES have no keys of %zu bytes", key.size());
    }
    const std::size_t passes = key.size() == 8 ? 1 : des::maxPasses;
    encryption_.passes = decryption_.passes = passes;
    for (std::size_t pass = 0; pass < passes; ++pass) {
        std::uint64_t* const keys = encryption_.keys + pass * des::rounds;
        ExpandKey(keys, key.data() + 8 * pass % key.size());
        if (pass == 1)
            std::ranges::reverse(keys, keys + des::rounds);
    }
    const std::size_t all = passes * des::rounds;
    std::reverse_copy(encryption_.keys, encryption_.keys + all, decryption_.keys);
    Fold(encryption_);
    Fold(decryption_);
    return logger.setResult(true);
}

void CCryptoDES::clearKey()
{
    platform::SecureWipe(&encryption_, sizeof encryption_);
    platform::SecureWipe(&decryption_, sizeof decryption_);
}

void CCryptoDES::transform(const des::Schedule& schedule, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const
{
    if (schedule.passes == 0)
        return;
    const std::size_t many = calls_->parallel;
    for (; blocks >= many; blocks -= many, in += 8 * many, out += 8 * many)
        calls_->transform(schedule, out, in);
    for (; blocks > 0; --blocks, in += 8, out += 8)
        TransformOne(schedule, out, in);
}

void CCryptoDES::encrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const
{
    transform(encryption_, out, in, blocks);
}

void CCryptoDES::decrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const
{
    transform(decryption_, out, in, blocks);
}

/// The final permutation of a block and the initial one of the next undo each other: the chain runs over the expanded halves.
void CCryptoDES::encryptCbc(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain) const
{
    if (blocks == 0 || encryption_.passes == 0)
        return;
    const std::uint64_t lastKey = LastKey(encryption_);
    const std::uint64_t turn = encryption_.turn[encryption_.passes - 1];
    Halves x = LoadHalves(chain);
    x.b ^= lastKey;
    for (; blocks > 0; --blocks, in += 8, out += 8) {
        const Halves text = LoadHalves(in);
        x = Passes(encryption_, {x.a ^ text.a, x.b ^ (text.b ^ turn)});
        StoreHalves(out, {x.a, x.b ^ lastKey});
    }
    std::memcpy(chain, out - 8, 8);
}
