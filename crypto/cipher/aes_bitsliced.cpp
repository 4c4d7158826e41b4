#include "core/memory/wiped.h"
#include "crypto/cipher/aes_variants.h"

#include <algorithm>
#include <bit>
#include <cstring>

// Four blocks at once without tables: word b of eight holds bit b of all 64 bytes. The byte in row r and column c of block k stands
// at bit 16 r + 4 c + k, so that a rotation of the words by 16 moves every row up by one.

namespace ccrypto {

namespace {

constexpr std::size_t parallel = 4;

struct Planes {
    std::uint64_t bit[8];
};

/// The S-box in 115 gates (J. Boyar and R. Peralta, "A depth-16 circuit for the AES S-box", 2011).
void Substitute(Planes& planes)
{
    const std::uint64_t x0 = planes.bit[7], x1 = planes.bit[6], x2 = planes.bit[5], x3 = planes.bit[4];
    const std::uint64_t x4 = planes.bit[3], x5 = planes.bit[2], x6 = planes.bit[1], x7 = planes.bit[0];

    // Into the tower field.
    const std::uint64_t y14 = x3 ^ x5, y13 = x0 ^ x6, y9 = x0 ^ x3, y8 = x0 ^ x5;
    const std::uint64_t t0 = x1 ^ x2, y1 = t0 ^ x7, y4 = y1 ^ x3, y12 = y13 ^ y14;
    const std::uint64_t y2 = y1 ^ x0, y5 = y1 ^ x6, y3 = y5 ^ y8, t1 = x4 ^ y12;
    const std::uint64_t y15 = t1 ^ x5, y20 = t1 ^ x1, y6 = y15 ^ x7, y10 = y15 ^ t0;
    const std::uint64_t y11 = y20 ^ y9, y7 = x7 ^ y11, y17 = y10 ^ y11, y19 = y10 ^ y8;
    const std::uint64_t y16 = t0 ^ y11, y21 = y13 ^ y16, y18 = x0 ^ y16;

    // Inversion.
    const std::uint64_t t2 = y12 & y15, t3 = y3 & y6, t4 = t3 ^ t2, t5 = y4 & x7, t6 = t5 ^ t2;
    const std::uint64_t t7 = y13 & y16, t8 = y5 & y1, t9 = t8 ^ t7, t10 = y2 & y7, t11 = t10 ^ t7;
    const std::uint64_t t12 = y9 & y11, t13 = y14 & y17, t14 = t13 ^ t12, t15 = y8 & y10, t16 = t15 ^ t12;
    const std::uint64_t t17 = t4 ^ t14, t18 = t6 ^ t16, t19 = t9 ^ t14, t20 = t11 ^ t16;
    const std::uint64_t t21 = t17 ^ y20, t22 = t18 ^ y19, t23 = t19 ^ y21, t24 = t20 ^ y18;
    const std::uint64_t t25 = t21 ^ t22, t26 = t21 & t23, t27 = t24 ^ t26, t28 = t25 & t27, t29 = t28 ^ t22;
    const std::uint64_t t30 = t23 ^ t24, t31 = t22 ^ t26, t32 = t31 & t30, t33 = t32 ^ t24, t34 = t23 ^ t33;
    const std::uint64_t t35 = t27 ^ t33, t36 = t24 & t35, t37 = t36 ^ t34, t38 = t27 ^ t36, t39 = t29 & t38;
    const std::uint64_t t40 = t25 ^ t39, t41 = t40 ^ t37, t42 = t29 ^ t33, t43 = t29 ^ t40, t44 = t33 ^ t37, t45 = t42 ^ t41;
    const std::uint64_t z0 = t44 & y15, z1 = t37 & y6, z2 = t33 & x7, z3 = t43 & y16, z4 = t40 & y1, z5 = t29 & y7;
    const std::uint64_t z6 = t42 & y11, z7 = t45 & y17, z8 = t41 & y10, z9 = t44 & y12, z10 = t37 & y3, z11 = t33 & y4;
    const std::uint64_t z12 = t43 & y13, z13 = t40 & y5, z14 = t29 & y2, z15 = t42 & y9, z16 = t45 & y14, z17 = t41 & y8;

    // Back, with the affine map.
    const std::uint64_t t46 = z15 ^ z16, t47 = z10 ^ z11, t48 = z5 ^ z13, t49 = z9 ^ z10, t50 = z2 ^ z12;
    const std::uint64_t t51 = z2 ^ z5, t52 = z7 ^ z8, t53 = z0 ^ z3, t54 = z6 ^ z7, t55 = z16 ^ z17;
    const std::uint64_t t56 = z12 ^ t48, t57 = t50 ^ t53, t58 = z4 ^ t46, t59 = z3 ^ t54, t60 = t46 ^ t57;
    const std::uint64_t t61 = z14 ^ t57, t62 = t52 ^ t58, t63 = t49 ^ t58, t64 = z4 ^ t59, t65 = t61 ^ t62, t66 = z1 ^ t63;
    const std::uint64_t t67 = t64 ^ t65, s3 = t53 ^ t66;
    planes.bit[7] = t59 ^ t63;
    planes.bit[6] = t64 ^ ~s3;
    planes.bit[5] = t55 ^ ~t67;
    planes.bit[4] = s3;
    planes.bit[3] = t51 ^ t66;
    planes.bit[2] = t47 ^ t65;
    planes.bit[1] = t56 ^ ~t62;
    planes.bit[0] = t48 ^ ~t60;
}

/// The inverse of the S-box's affine map: bit i is the sum of bits i+2, i+5 and i+7 of the value less 0x63.
void UndoAffine(Planes& planes)
{
    Planes in = planes;
    for (const int bit : {0, 1, 5, 6})
        in.bit[bit] = ~in.bit[bit];
    for (int bit = 0; bit < 8; ++bit)
        planes.bit[bit] = in.bit[(bit + 2) % 8] ^ in.bit[(bit + 5) % 8] ^ in.bit[(bit + 7) % 8];
}

/// The S-box is the affine map after an inversion, so its inverse is the S-box between two inverse maps.
void InverseSubstitute(Planes& planes)
{
    UndoAffine(planes);
    Substitute(planes);
    UndoAffine(planes);
}

/// Row r, 16 bits, is rotated by r columns, 4 bits each.
template <bool inverse>
void ShiftRows(Planes& planes)
{
    for (std::uint64_t& x : planes.bit) {
        const std::uint64_t row0 = x & 0x000000000000FFFF;
        const std::uint64_t row2 = (x & 0x0000FF0000000000) >> 8 | (x & 0x000000FF00000000) << 8;
        if constexpr (inverse) {
            const std::uint64_t row1 = (x & 0x000000000FFF0000) << 4 | (x & 0x00000000F0000000) >> 12;
            const std::uint64_t row3 = (x & 0xFFF0000000000000) >> 4 | (x & 0x000F000000000000) << 12;
            x = row0 | row1 | row2 | row3;
        } else {
            const std::uint64_t row1 = (x & 0x00000000FFF00000) >> 4 | (x & 0x00000000000F0000) << 12;
            const std::uint64_t row3 = (x & 0x0FFF000000000000) << 4 | (x & 0xF000000000000000) >> 12;
            x = row0 | row1 | row2 | row3;
        }
    }
}

/// Times x in the field of the bytes.
Planes Double(const Planes& planes)
{
    const std::uint64_t top = planes.bit[7];
    return {{top, planes.bit[0] ^ top, planes.bit[1], planes.bit[2] ^ top, planes.bit[3] ^ top, planes.bit[4], planes.bit[5],
             planes.bit[6]}};
}

/// 2 a + 3 b + c + d of the four rows a, b, c, d is 2 (a + b) + b + (c + d).
void MixColumns(Planes& planes)
{
    Planes pairs;
    for (int bit = 0; bit < 8; ++bit)
        pairs.bit[bit] = planes.bit[bit] ^ std::rotr(planes.bit[bit], 16);
    const Planes doubled = Double(pairs);
    for (int bit = 0; bit < 8; ++bit)
        planes.bit[bit] = doubled.bit[bit] ^ std::rotr(planes.bit[bit], 16) ^ std::rotr(pairs.bit[bit], 32);
}

/// The inverse matrix is MixColumns times the one that takes a to a + 4 (a + c).
void InverseMixColumns(Planes& planes)
{
    Planes pairs;
    for (int bit = 0; bit < 8; ++bit)
        pairs.bit[bit] = planes.bit[bit] ^ std::rotr(planes.bit[bit], 32);
    const Planes fourfold = Double(Double(pairs));
    for (int bit = 0; bit < 8; ++bit)
        planes.bit[bit] ^= fourfold.bit[bit];
    MixColumns(planes);
}

/// Exchanges the bits of `high` under `mask` with those of `low` that stand `shift` higher.
void Exchange(std::uint64_t& low, std::uint64_t& high, std::uint64_t mask, int shift)
{
    const std::uint64_t difference = (low >> shift ^ high) & mask;
    high ^= difference;
    low ^= difference << shift;
}

/// Bit b of byte j of word w moves to bit w of byte j of word b, and back.
void Transpose(Planes& planes)
{
    std::uint64_t* const x = planes.bit;
    for (int i = 0; i < 8; i += 2)
        Exchange(x[i], x[i + 1], 0x5555555555555555, 1);
    for (const int i : {0, 1, 4, 5})
        Exchange(x[i], x[i + 2], 0x3333333333333333, 2);
    for (int i = 0; i < 4; ++i)
        Exchange(x[i], x[i + 4], 0x0F0F0F0F0F0F0F0F, 4);
}

std::uint32_t LoadColumn(const std::uint8_t* bytes)
{
    return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[3]} << 24;
}

void StoreColumn(std::uint8_t* bytes, std::uint32_t column)
{
    for (int row = 0; row < 4; ++row)
        bytes[row] = static_cast<std::uint8_t>(column >> 8 * row);
}

/// The bytes of a column, each followed by an empty one.
std::uint64_t Spread(std::uint32_t column)
{
    std::uint64_t x = column;
    x = (x | x << 16) & 0x0000FFFF0000FFFF;
    return (x | x << 8) & 0x00FF00FF00FF00FF;
}

std::uint32_t Gather(std::uint64_t x)
{
    x &= 0x00FF00FF00FF00FF;
    x = (x | x >> 8) & 0x0000FFFF0000FFFF;
    return static_cast<std::uint32_t>(x | x >> 16);
}

/// Word 4 (c mod 2) + k takes column c of block k and the one two further.
Planes Pack(const std::uint8_t* blocks)
{
    Planes planes;
    for (std::size_t k = 0; k < parallel; ++k)
        for (std::size_t c = 0; c < 2; ++c)
            planes.bit[4 * c + k] = Spread(LoadColumn(blocks + 16 * k + 4 * c)) | Spread(LoadColumn(blocks + 16 * k + 4 * c + 8))
                                                                                      << 8;
    Transpose(planes);
    return planes;
}

void Unpack(Planes planes, std::uint8_t* blocks)
{
    Transpose(planes);
    for (std::size_t k = 0; k < parallel; ++k)
        for (std::size_t c = 0; c < 2; ++c) {
            StoreColumn(blocks + 16 * k + 4 * c, Gather(planes.bit[4 * c + k]));
            StoreColumn(blocks + 16 * k + 4 * c + 8, Gather(planes.bit[4 * c + k] >> 8));
        }
}

void AddRoundKey(Planes& planes, const aes::Key& key, std::size_t round)
{
    Planes roundKey;
    std::memcpy(&roundKey, key.schedule + round * sizeof roundKey, sizeof roundKey);
    for (int bit = 0; bit < 8; ++bit)
        planes.bit[bit] ^= roundKey.bit[bit];
}

void EncryptPlanes(const aes::Key& key, Planes& planes)
{
    AddRoundKey(planes, key, 0);
    for (std::size_t round = 1; round < key.rounds; ++round) {
        Substitute(planes);
        ShiftRows<false>(planes);
        MixColumns(planes);
        AddRoundKey(planes, key, round);
    }
    Substitute(planes);
    ShiftRows<false>(planes);
    AddRoundKey(planes, key, key.rounds);
}

void DecryptPlanes(const aes::Key& key, Planes& planes)
{
    AddRoundKey(planes, key, key.rounds);
    ShiftRows<true>(planes);
    InverseSubstitute(planes);
    // A key that was wiped has no rounds.
    for (std::size_t round = key.rounds; round-- > 1;) {
        AddRoundKey(planes, key, round);
        InverseMixColumns(planes);
        ShiftRows<true>(planes);
        InverseSubstitute(planes);
    }
    AddRoundKey(planes, key, 0);
}

template <void (*transform)(const aes::Key&, Planes&)>
void TransformBlocks(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks)
{
    struct Text {
        std::uint8_t bytes[parallel * aes::blockSize];
    };
    Wiped<Text> text{};
    Wiped<Planes> planes{};
    for (std::size_t done = 0; done < blocks; done += parallel) {
        const std::size_t length = aes::blockSize * std::min(parallel, blocks - done);
        std::memcpy(text.bytes, in + done * aes::blockSize, length);
        static_cast<Planes&>(planes) = Pack(text.bytes);
        transform(key, planes);
        Unpack(planes, text.bytes);
        std::memcpy(out + done * aes::blockSize, text.bytes, length);
    }
}

/// The S-box on each byte of a word.
std::uint32_t SubstituteWord(std::uint32_t word)
{
    Planes planes;
    for (int bit = 0; bit < 8; ++bit)
        planes.bit[bit] = word >> bit & 0x01010101;
    Substitute(planes);
    std::uint32_t result = 0;
    for (int bit = 0; bit < 8; ++bit)
        result |= static_cast<std::uint32_t>(planes.bit[bit] & 0x01010101) << bit;
    return result;
}

/// FIPS 197, 5.2. Every round key is packed four times over.
void ExpandKey(aes::Key& key, const std::uint8_t* bytes, std::size_t length)
{
    const std::size_t keyWords = length / 4;
    key.rounds = static_cast<std::uint32_t>(keyWords + 6);
    const std::size_t allWords = 4 * (key.rounds + 1);

    struct Words {
        std::uint32_t words[4 * aes::maxRoundKeys];
    };
    Wiped<Words> schedule;
    std::uint32_t* const w = schedule.words;
    for (std::size_t i = 0; i < keyWords; ++i)
        w[i] = LoadColumn(bytes + 4 * i);
    std::uint32_t roundConstant = 1;
    for (std::size_t i = keyWords; i < allWords; ++i) {
        std::uint32_t next = w[i - 1];
        if (i % keyWords == 0) {
            next = std::rotr(SubstituteWord(next), 8) ^ roundConstant;
            roundConstant = roundConstant << 1 ^ (roundConstant >> 7) * 0x11B;
        } else if (keyWords == 8 && i % keyWords == 4) {
            next = SubstituteWord(next);
        }
        w[i] = w[i - keyWords] ^ next;
    }

    Wiped<Planes> planes{};
    for (std::size_t round = 0; round <= key.rounds; ++round) {
        std::uint8_t blocks[parallel * aes::blockSize];
        for (std::size_t i = 0; i < sizeof blocks / 4; ++i)
            StoreColumn(blocks + 4 * i, w[4 * round + i % 4]);
        static_cast<Planes&>(planes) = Pack(blocks);
        platform::SecureWipe(blocks);
        std::memcpy(key.schedule + round * sizeof(Planes), planes.bit, sizeof(Planes));
    }
}

} // namespace

const aes::Calls aes::bitslicedCalls = {
    ExpandKey, TransformBlocks<EncryptPlanes>, TransformBlocks<DecryptPlanes>, nullptr, nullptr, nullptr,
};

} // namespace ccrypto
