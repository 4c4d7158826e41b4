#include "crypto/cipher/eight_registers.h"
#include "crypto/cipher/gcm_variants.h"

#include <immintrin.h>

// AES-NI and PCLMULQDQ, eight blocks side by side: their products with the eighth to the first power of the hash key are summed up
// and reduced once. The key's powers are stored sixteenth first, byte-reversed and times x (so that the products need no shift),
// and after them, in the same order, the sum of both halves of each, twice. (gcm_vaes.cpp takes sixteen blocks.)

namespace ccrypto {

namespace {

struct Lane {
    using Register = __m128i;
};
using Eight = EightRegisters<Lane>;

constexpr std::size_t parallel = 8;
constexpr std::size_t stride = parallel * aes::blockSize;
constexpr std::size_t powers = 16;
constexpr std::size_t sumsOffset = powers * 16;

/// Where the powers from this one down to the first stand.
[[gnu::always_inline]] inline const std::uint8_t* PowersFrom(const gcm::HashKey& key, std::size_t power)
{
    return key.powers + 16 * (powers - power);
}

[[gnu::always_inline]] inline __m128i Load(const std::uint8_t* bytes)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

[[gnu::always_inline]] inline void Store(std::uint8_t* bytes, __m128i value)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value);
}

[[gnu::always_inline]] inline __m128i ReverseBytes(__m128i value)
{
    return _mm_shuffle_epi8(value, _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
}

[[gnu::always_inline]] inline __m128i SwapHalves(__m128i value)
{
    return _mm_shuffle_epi32(value, 0x4E);
}

/// A sum of products of 256 bits that is not reduced yet; the middle one still holds the other two (Karatsuba).
struct Products {
    __m128i low, middle, high;
};

[[gnu::always_inline]] inline void Add(Products& sum, __m128i block, const std::uint8_t* power)
{
    const __m128i factor = Load(power);
    const __m128i factorSum = Load(power + sumsOffset);
    sum.low = _mm_xor_si128(sum.low, _mm_clmulepi64_si128(block, factor, 0x00));
    sum.high = _mm_xor_si128(sum.high, _mm_clmulepi64_si128(block, factor, 0x11));
    const __m128i blockSum = _mm_xor_si128(block, SwapHalves(block));
    sum.middle = _mm_xor_si128(sum.middle, _mm_clmulepi64_si128(blockSum, factorSum, 0x00));
}

/// Reduces modulo x^128 + x^127 + x^126 + x^121 + 1, the polynomial with its bits reversed, from the low end: two times 64 bits.
[[gnu::always_inline]] inline __m128i Reduce(const Products& sum)
{
    const __m128i polynomial = _mm_set_epi64x(0, static_cast<long long>(0xC200000000000000));
    const __m128i middle = _mm_xor_si128(sum.middle, _mm_xor_si128(sum.low, sum.high));
    __m128i low = _mm_xor_si128(sum.low, _mm_slli_si128(middle, 8));
    const __m128i high = _mm_xor_si128(sum.high, _mm_srli_si128(middle, 8));
    low = _mm_xor_si128(SwapHalves(low), _mm_clmulepi64_si128(low, polynomial, 0x00));
    low = _mm_xor_si128(SwapHalves(low), _mm_clmulepi64_si128(low, polynomial, 0x00));
    return _mm_xor_si128(high, low);
}

[[gnu::always_inline]] inline Products NoProducts()
{
    return {_mm_setzero_si128(), _mm_setzero_si128(), _mm_setzero_si128()};
}

[[gnu::always_inline]] inline __m128i Multiply(__m128i block, const std::uint8_t* power)
{
    Products sum = NoProducts();
    Add(sum, block, power);
    return Reduce(sum);
}

[[gnu::always_inline]] inline void StorePower(gcm::HashKey& key, std::size_t power, __m128i value)
{
    std::uint8_t* const place = key.powers + 16 * (powers - power);
    Store(place, value);
    Store(place + sumsOffset, _mm_xor_si128(value, SwapHalves(value)));
}

void ExpandHashKey(gcm::HashKey& key, const std::uint8_t* subkey)
{
    // Times x: one bit up, and what falls out comes back as the polynomial.
    const __m128i value = ReverseBytes(Load(subkey));
    const __m128i carries = _mm_srli_epi64(value, 63);
    const __m128i out = _mm_sub_epi64(_mm_setzero_si128(), _mm_unpackhi_epi64(carries, carries));
    const __m128i polynomial = _mm_set_epi64x(static_cast<long long>(0xC200000000000000), 1);
    __m128i power = _mm_or_si128(_mm_slli_epi64(value, 1), _mm_slli_si128(carries, 8));
    power = _mm_xor_si128(power, _mm_and_si128(out, polynomial));

    StorePower(key, 1, power);
    for (std::size_t i = 2; i <= powers; ++i) {
        power = Multiply(power, PowersFrom(key, 1));
        StorePower(key, i, power);
    }
}

/// The hash with eight blocks more.
[[gnu::always_inline]] inline __m128i HashEight(const gcm::HashKey& key, __m128i hash, const std::uint8_t* in)
{
    const std::uint8_t* const power = PowersFrom(key, parallel);
    Products sum = NoProducts();
    Add(sum, _mm_xor_si128(hash, ReverseBytes(Load(in))), power);
    for (std::size_t i = 1; i < parallel; ++i)
        Add(sum, ReverseBytes(Load(in + 16 * i)), power + 16 * i);
    return Reduce(sum);
}

[[gnu::always_inline]] inline __m128i HashFew(const gcm::HashKey& key, __m128i hash, const std::uint8_t* in, std::size_t blocks)
{
    if (blocks == 0)
        return hash;
    const std::uint8_t* const power = PowersFrom(key, blocks);
    Products sum = NoProducts();
    Add(sum, _mm_xor_si128(hash, ReverseBytes(Load(in))), power);
    for (std::size_t i = 1; i < blocks; ++i)
        Add(sum, ReverseBytes(Load(in + 16 * i)), power + 16 * i);
    return Reduce(sum);
}

void Hash(const gcm::HashKey& key, std::uint8_t* hashBytes, const std::uint8_t* in, std::size_t blocks)
{
    __m128i hash = ReverseBytes(Load(hashBytes));
    for (; blocks >= parallel; blocks -= parallel, in += stride)
        hash = HashEight(key, hash, in);
    Store(hashBytes, ReverseBytes(HashFew(key, hash, in, blocks)));
}

/// Eight counter blocks, encrypted; `counter`, byte-reversed, moves on. Between the rounds the eight blocks at `hashed` are taken
/// into the hash, which keeps the multiplier busy while the rounds wait for each other.
[[gnu::always_inline]] inline void StreamAndHash(Eight& x, const aes::Key& cipherKey, const gcm::HashKey& key, __m128i& counter,
                                                 __m128i& hash, const std::uint8_t* hashed)
{
    const std::uint8_t* const keys = cipherKey.schedule;
    const __m128i first = Load(keys);
    x.each([&counter, first](__m128i& block, int) {
        block = _mm_xor_si128(ReverseBytes(counter), first);
        counter = _mm_add_epi32(counter, _mm_set_epi32(0, 0, 0, 1));
    });
    Products sum = NoProducts();
    const auto round = [&x, keys](std::size_t i) {
        const __m128i roundKey = Load(keys + 16 * i);
        x.each([roundKey](__m128i& block, int) { block = _mm_aesenc_si128(block, roundKey); });
    };
    const auto add = [&](std::size_t i) {
        __m128i block = ReverseBytes(Load(hashed + 16 * i));
        if (i == 0)
            block = _mm_xor_si128(block, hash);
        Add(sum, block, PowersFrom(key, parallel) + 16 * i);
    };
    round(1);
    if (hashed != nullptr) {
        add(0);
        round(2);
        add(1);
        round(3);
        add(2);
        round(4);
        add(3);
        round(5);
        add(4);
        round(6);
        add(5);
        round(7);
        add(6);
        round(8);
        add(7);
        round(9);
        hash = Reduce(sum);
    } else {
        for (std::size_t i = 2; i <= 9; ++i)
            round(i);
    }
    for (std::size_t i = 10; i < cipherKey.rounds; ++i)
        round(i);
    const __m128i last = Load(keys + 16 * cipherKey.rounds);
    x.each([last](__m128i& block, int) { block = _mm_aesenclast_si128(block, last); });
}

[[gnu::always_inline]] inline void ApplyStream(Eight& x, std::uint8_t* out, const std::uint8_t* in)
{
    x.each([in, out](__m128i& block, int i) { Store(out + 16 * i, _mm_xor_si128(block, Load(in + 16 * i))); });
}

void ApplyFew(const aes::Key& cipherKey, __m128i& counter, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks)
{
    const std::uint8_t* const keys = cipherKey.schedule;
    for (; blocks > 0; --blocks, in += 16, out += 16) {
        __m128i x = _mm_xor_si128(ReverseBytes(counter), Load(keys));
        for (std::uint32_t round = 1; round < cipherKey.rounds; ++round)
            x = _mm_aesenc_si128(x, Load(keys + 16 * round));
        x = _mm_aesenclast_si128(x, Load(keys + 16 * cipherKey.rounds));
        Store(out, _mm_xor_si128(x, Load(in)));
        counter = _mm_add_epi32(counter, _mm_set_epi32(0, 0, 0, 1));
    }
}

void Encrypt(const aes::Key& cipherKey, const gcm::HashKey& key, std::uint8_t* hashBytes, std::uint8_t* counterBlock,
             std::uint8_t* out, const std::uint8_t* in, std::size_t blocks)
{
    __m128i hash = ReverseBytes(Load(hashBytes));
    __m128i counter = ReverseBytes(Load(counterBlock));
    const std::uint8_t* hashed = nullptr;
    for (; blocks >= parallel; blocks -= parallel, in += stride, out += stride) {
        Eight x;
        if (hashed == nullptr)
            StreamAndHash(x, cipherKey, key, counter, hash, nullptr);
        else
            StreamAndHash(x, cipherKey, key, counter, hash, hashed);
        ApplyStream(x, out, in);
        hashed = out;
    }
    if (hashed != nullptr)
        hash = HashEight(key, hash, hashed);
    ApplyFew(cipherKey, counter, out, in, blocks);
    hash = HashFew(key, hash, out, blocks);
    Store(hashBytes, ReverseBytes(hash));
    Store(counterBlock, ReverseBytes(counter));
}

void Decrypt(const aes::Key& cipherKey, const gcm::HashKey& key, std::uint8_t* hashBytes, std::uint8_t* counterBlock,
             std::uint8_t* out, const std::uint8_t* in, std::size_t blocks)
{
    __m128i hash = ReverseBytes(Load(hashBytes));
    __m128i counter = ReverseBytes(Load(counterBlock));
    for (; blocks >= parallel; blocks -= parallel, in += stride, out += stride) {
        Eight x;
        StreamAndHash(x, cipherKey, key, counter, hash, in);
        ApplyStream(x, out, in);
    }
    hash = HashFew(key, hash, in, blocks);
    ApplyFew(cipherKey, counter, out, in, blocks);
    Store(hashBytes, ReverseBytes(hash));
    Store(counterBlock, ReverseBytes(counter));
}

} // namespace

const gcm::Calls gcm::pclmulCalls = {&aes::aesniCalls, ExpandHashKey, Hash, Encrypt, Decrypt};

} // namespace ccrypto
