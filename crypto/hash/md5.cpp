#include "core/base/algorithm.h"
#include "crypto/hash/block_hash.h"

#include <array>

// RFC 1321. Each step waits for the one before it, so its time is the length of the chain from b, the word that has just been made,
// to the new a: what does not need b is added up first.

namespace ccrypto {

namespace {

using Word = std::uint32_t;

/// The sum comes to be before b is there.
inline Word Early(Word sum)
{
    asm("" : "+r"(sum));
    return sum;
}

/// F(b, c, d) = (b & c) | (~b & d)
template <int turn>
inline void Choose(Word& a, Word b, Word c, Word d, Word word, Word constant)
{
    a = std::rotl(Early(a + word + constant) + (d ^ (b & (c ^ d))), turn) + b;
}

/// G(b, c, d) = (b & d) | (c & ~d): the halves share no bit and are added one by one, the one without b first.
template <int turn>
inline void ChooseByLast(Word& a, Word b, Word c, Word d, Word word, Word constant)
{
    a = std::rotl(Early(a + word + constant + (c & ~d)) + (b & d), turn) + b;
}

/// H(b, c, d) = b ^ c ^ d
template <int turn>
inline void Parity(Word& a, Word b, Word c, Word d, Word word, Word constant)
{
    a = std::rotl(Early(a + word + constant) + (Early(c ^ d) ^ b), turn) + b;
}

/// I(b, c, d) = c ^ (b | ~d)
template <int turn>
inline void OrNot(Word& a, Word b, Word c, Word d, Word word, Word constant)
{
    a = std::rotl(Early(a + word + constant) + (c ^ (b | ~d)), turn) + b;
}

void Compress(Word* state, const std::uint8_t* blocks, std::size_t count)
{
    Word a = state[0];
    Word b = state[1];
    Word c = state[2];
    Word d = state[3];
    for (; count != 0; --count, blocks += 64) {
        Word x[16];
        for (int i = 0; i < 16; ++i)
            x[i] = LoadWord<Word, std::endian::little>(blocks + 4 * i);
        const Word before[4] = {a, b, c, d};

        Choose<7>(a, b, c, d, x[0], 0xD76AA478);
        Choose<12>(d, a, b, c, x[1], 0xE8C7B756);
        Choose<17>(c, d, a, b, x[2], 0x242070DB);
        Choose<22>(b, c, d, a, x[3], 0xC1BDCEEE);
        Choose<7>(a, b, c, d, x[4], 0xF57C0FAF);
        Choose<12>(d, a, b, c, x[5], 0x4787C62A);
        Choose<17>(c, d, a, b, x[6], 0xA8304613);
        Choose<22>(b, c, d, a, x[7], 0xFD469501);
        Choose<7>(a, b, c, d, x[8], 0x698098D8);
        Choose<12>(d, a, b, c, x[9], 0x8B44F7AF);
        Choose<17>(c, d, a, b, x[10], 0xFFFF5BB1);
        Choose<22>(b, c, d, a, x[11], 0x895CD7BE);
        Choose<7>(a, b, c, d, x[12], 0x6B901122);
        Choose<12>(d, a, b, c, x[13], 0xFD987193);
        Choose<17>(c, d, a, b, x[14], 0xA679438E);
        Choose<22>(b, c, d, a, x[15], 0x49B40821);
        ChooseByLast<5>(a, b, c, d, x[1], 0xF61E2562);
        ChooseByLast<9>(d, a, b, c, x[6], 0xC040B340);
        ChooseByLast<14>(c, d, a, b, x[11], 0x265E5A51);
        ChooseByLast<20>(b, c, d, a, x[0], 0xE9B6C7AA);
        ChooseByLast<5>(a, b, c, d, x[5], 0xD62F105D);
        ChooseByLast<9>(d, a, b, c, x[10], 0x02441453);
        ChooseByLast<14>(c, d, a, b, x[15], 0xD8A1E681);
        ChooseByLast<20>(b, c, d, a, x[4], 0xE7D3FBC8);
        ChooseByLast<5>(a, b, c, d, x[9], 0x21E1CDE6);
        ChooseByLast<9>(d, a, b, c, x[14], 0xC33707D6);
        ChooseByLast<14>(c, d, a, b, x[3], 0xF4D50D87);
        ChooseByLast<20>(b, c, d, a, x[8], 0x455A14ED);
        ChooseByLast<5>(a, b, c, d, x[13], 0xA9E3E905);
        ChooseByLast<9>(d, a, b, c, x[2], 0xFCEFA3F8);
        ChooseByLast<14>(c, d, a, b, x[7], 0x676F02D9);
        ChooseByLast<20>(b, c, d, a, x[12], 0x8D2A4C8A);
        Parity<4>(a, b, c, d, x[5], 0xFFFA3942);
        Parity<11>(d, a, b, c, x[8], 0x8771F681);
        Parity<16>(c, d, a, b, x[11], 0x6D9D6122);
        Parity<23>(b, c, d, a, x[14], 0xFDE5380C);
        Parity<4>(a, b, c, d, x[1], 0xA4BEEA44);
        Parity<11>(d, a, b, c, x[4], 0x4BDECFA9);
        Parity<16>(c, d, a, b, x[7], 0xF6BB4B60);
        Parity<23>(b, c, d, a, x[10], 0xBEBFBC70);
        Parity<4>(a, b, c, d, x[13], 0x289B7EC6);
        Parity<11>(d, a, b, c, x[0], 0xEAA127FA);
        Parity<16>(c, d, a, b, x[3], 0xD4EF3085);
        Parity<23>(b, c, d, a, x[6], 0x04881D05);
        Parity<4>(a, b, c, d, x[9], 0xD9D4D039);
        Parity<11>(d, a, b, c, x[12], 0xE6DB99E5);
        Parity<16>(c, d, a, b, x[15], 0x1FA27CF8);
        Parity<23>(b, c, d, a, x[2], 0xC4AC5665);
        OrNot<6>(a, b, c, d, x[0], 0xF4292244);
        OrNot<10>(d, a, b, c, x[7], 0x432AFF97);
        OrNot<15>(c, d, a, b, x[14], 0xAB9423A7);
        OrNot<21>(b, c, d, a, x[5], 0xFC93A039);
        OrNot<6>(a, b, c, d, x[12], 0x655B59C3);
        OrNot<10>(d, a, b, c, x[3], 0x8F0CCC92);
        OrNot<15>(c, d, a, b, x[10], 0xFFEFF47D);
        OrNot<21>(b, c, d, a, x[1], 0x85845DD1);
        OrNot<6>(a, b, c, d, x[8], 0x6FA87E4F);
        OrNot<10>(d, a, b, c, x[15], 0xFE2CE6E0);
        OrNot<15>(c, d, a, b, x[6], 0xA3014314);
        OrNot<21>(b, c, d, a, x[13], 0x4E0811A1);
        OrNot<6>(a, b, c, d, x[4], 0xF7537E82);
        OrNot<10>(d, a, b, c, x[11], 0xBD3AF235);
        OrNot<15>(c, d, a, b, x[2], 0x2AD7D2BB);
        OrNot<21>(b, c, d, a, x[9], 0xEB86D391);

        a += before[0];
        b += before[1];
        c += before[2];
        d += before[3];
    }
    state[0] = a;
    state[1] = b;
    state[2] = c;
    state[3] = d;
}

constexpr std::array<Variant<CompressBlocks<Word>>, 1> variants = {{{"portable", cpu::none, Compress}}};

} // namespace

std::span<const Variant<CompressBlocks<Word>>> MD5Variants()
{
    return variants;
}

constinit const BlockHashKind<Word> md5Kind = {
    .name = "MD5",
    .id = algorithm::md5,
    .digestSize = 16,
    .order = std::endian::little,
    .initial = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476},
    .compress = []() -> CompressBlocks<Word> { return Compress; },
};

} // namespace ccrypto
