#include "crypto/cipher/eight_registers.h"
#include "crypto/cipher/gcm_variants.h"

#include <immintrin.h>

// AES-NI and PCLMULQDQ on 256 bits: sixteen blocks side by side, the products of which are summed up and reduced once. What remains
// goes the way of 128 bits, gcm_pclmul.cpp, whose hash key this is: the sixteenth power to the first, each byte-reversed and times
// x, then the sums of their halves.

namespace ccrypto {

namespace {

struct Lane {
    using Register = __m256i;
};
using Eight = EightRegisters<Lane>;

constexpr std::size_t parallel = 16;
constexpr std::size_t stride = parallel * aes::blockSize;
constexpr std::size_t sumsOffset = 16 * parallel;

[[gnu::always_inline]] inline __m256i Load(const std::uint8_t* bytes)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

[[gnu::always_inline]] inline __m128i LoadHalf(const std::uint8_t* bytes)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

[[gnu::always_inline]] inline void Store(std::uint8_t* bytes, __m256i value)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), value);
}

[[gnu::always_inline]] inline void StoreHalf(std::uint8_t* bytes, __m128i value)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value);
}

[[gnu::always_inline]] inline __m256i Twice(const std::uint8_t* bytes)
{
    return _mm256_broadcastsi128_si256(LoadHalf(bytes));
}

[[gnu::always_inline]] inline __m128i ReverseOrder()
{
    return _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}

[[gnu::always_inline]] inline __m256i ReverseBytes(__m256i value)
{
    return _mm256_shuffle_epi8(value, _mm256_broadcastsi128_si256(ReverseOrder()));
}

struct Products {
    __m256i low, middle, high;
};

/// Two blocks with two powers; the middle product still holds the other two (Karatsuba).
[[gnu::always_inline]] inline void Add(Products& sum, __m256i blocks, const std::uint8_t* power)
{
    const __m256i factors = Load(power);
    const __m256i factorSums = Load(power + sumsOffset);
    sum.low = _mm256_xor_si256(sum.low, _mm256_clmulepi64_epi128(blocks, factors, 0x00));
    sum.high = _mm256_xor_si256(sum.high, _mm256_clmulepi64_epi128(blocks, factors, 0x11));
    const __m256i blockSums = _mm256_xor_si256(blocks, _mm256_shuffle_epi32(blocks, 0x4E));
    sum.middle = _mm256_xor_si256(sum.middle, _mm256_clmulepi64_epi128(blockSums, factorSums, 0x00));
}

[[gnu::always_inline]] inline __m128i SumOfHalves(__m256i value)
{
    return _mm_xor_si128(_mm256_castsi256_si128(value), _mm256_extracti128_si256(value, 1));
}

/// As in gcm_pclmul.cpp.
[[gnu::always_inline]] inline __m128i Reduce(const Products& sum)
{
    const __m128i polynomial = _mm_set_epi64x(0, static_cast<long long>(0xC200000000000000));
    __m128i low = SumOfHalves(sum.low);
    __m128i high = SumOfHalves(sum.high);
    const __m128i middle = _mm_xor_si128(SumOfHalves(sum.middle), _mm_xor_si128(low, high));
    low = _mm_xor_si128(low, _mm_slli_si128(middle, 8));
    high = _mm_xor_si128(high, _mm_srli_si128(middle, 8));
    low = _mm_xor_si128(_mm_shuffle_epi32(low, 0x4E), _mm_clmulepi64_si128(low, polynomial, 0x00));
    low = _mm_xor_si128(_mm_shuffle_epi32(low, 0x4E), _mm_clmulepi64_si128(low, polynomial, 0x00));
    return _mm_xor_si128(high, low);
}

[[gnu::always_inline]] inline Products NoProducts()
{
    return {_mm256_setzero_si256(), _mm256_setzero_si256(), _mm256_setzero_si256()};
}

[[gnu::always_inline]] inline void AddPair(Products& sum, const gcm::HashKey& key, __m128i hash, const std::uint8_t* in, int pair)
{
    __m256i blocks = ReverseBytes(Load(in + 32 * pair));
    if (pair == 0)
        blocks = _mm256_xor_si256(blocks, _mm256_zextsi128_si256(hash));
    Add(sum, blocks, key.powers + 32 * pair);
}

[[gnu::always_inline]] inline __m128i HashSixteen(const gcm::HashKey& key, __m128i hash, const std::uint8_t* in)
{
    Products sum = NoProducts();
    for (int pair = 0; pair < 8; ++pair)
        AddPair(sum, key, hash, in, pair);
    return Reduce(sum);
}

void Hash(const gcm::HashKey& key, std::uint8_t* hashBytes, const std::uint8_t* in, std::size_t blocks)
{
    __m128i hash = _mm_shuffle_epi8(LoadHalf(hashBytes), ReverseOrder());
    for (; blocks >= parallel; blocks -= parallel, in += stride)
        hash = HashSixteen(key, hash, in);
    StoreHalf(hashBytes, _mm_shuffle_epi8(hash, ReverseOrder()));
    _mm256_zeroupper();
    gcm::pclmulCalls.hash(key, hashBytes, in, blocks);
}

/// Sixteen counter blocks, encrypted; `counters`, byte-reversed, move on. Between the rounds the sixteen blocks at `hashed` are
/// taken into the hash, which keeps the multiplier busy while the rounds wait for each other.
template <bool hashes>
[[gnu::always_inline]] inline void StreamAndHash(Eight& x, const aes::Key& cipherKey, const gcm::HashKey& key, __m256i& counters,
                                                 __m128i& hash, const std::uint8_t* hashed)
{
    const std::uint8_t* const keys = cipherKey.schedule;
    const __m256i first = Twice(keys);
    x.each([&counters, first](__m256i& pair, int) {
        pair = _mm256_xor_si256(ReverseBytes(counters), first);
        counters = _mm256_add_epi32(counters, _mm256_set_epi32(0, 0, 0, 2, 0, 0, 0, 2));
    });
    const auto round = [&x, keys](std::size_t i) {
        const __m256i roundKey = Twice(keys + 16 * i);
        x.each([roundKey](__m256i& pair, int) { pair = _mm256_aesenc_epi128(pair, roundKey); });
    };
    Products sum = NoProducts();
    const auto add = [&](int pair) {
        if constexpr (hashes)
            AddPair(sum, key, hash, hashed, pair);
    };
    round(1);
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
    if constexpr (hashes)
        hash = Reduce(sum);
    for (std::size_t i = 10; i < cipherKey.rounds; ++i)
        round(i);
    const __m256i last = Twice(keys + 16 * cipherKey.rounds);
    x.each([last](__m256i& pair, int) { pair = _mm256_aesenclast_epi128(pair, last); });
}

[[gnu::always_inline]] inline void ApplyStream(Eight& x, std::uint8_t* out, const std::uint8_t* in)
{
    x.each([in, out](__m256i& pair, int i) { Store(out + 32 * i, _mm256_xor_si256(pair, Load(in + 32 * i))); });
}

/// The counter block and the one after it, byte-reversed.
[[gnu::always_inline]] inline __m256i LoadCounters(const std::uint8_t* counter)
{
    return _mm256_add_epi32(ReverseBytes(Twice(counter)), _mm256_set_epi32(0, 0, 0, 1, 0, 0, 0, 0));
}

void Encrypt(const aes::Key& cipherKey, const gcm::HashKey& key, std::uint8_t* hashBytes, std::uint8_t* counterBlock,
             std::uint8_t* out, const std::uint8_t* in, std::size_t blocks)
{
    if (blocks >= parallel) {
        __m128i hash = _mm_shuffle_epi8(LoadHalf(hashBytes), ReverseOrder());
        __m256i counters = LoadCounters(counterBlock);
        Eight x;
        StreamAndHash<false>(x, cipherKey, key, counters, hash, nullptr);
        ApplyStream(x, out, in);
        const std::uint8_t* hashed = out;
        for (blocks -= parallel, in += stride, out += stride; blocks >= parallel; blocks -= parallel, in += stride, out += stride) {
            StreamAndHash<true>(x, cipherKey, key, counters, hash, hashed);
            ApplyStream(x, out, in);
            hashed = out;
        }
        hash = HashSixteen(key, hash, hashed);
        StoreHalf(hashBytes, _mm_shuffle_epi8(hash, ReverseOrder()));
        StoreHalf(counterBlock, _mm_shuffle_epi8(_mm256_castsi256_si128(counters), ReverseOrder()));
        _mm256_zeroupper();
    }
    gcm::pclmulCalls.encrypt(cipherKey, key, hashBytes, counterBlock, out, in, blocks);
}

void Decrypt(const aes::Key& cipherKey, const gcm::HashKey& key, std::uint8_t* hashBytes, std::uint8_t* counterBlock,
             std::uint8_t* out, const std::uint8_t* in, std::size_t blocks)
{
    if (blocks >= parallel) {
        __m128i hash = _mm_shuffle_epi8(LoadHalf(hashBytes), ReverseOrder());
        __m256i counters = LoadCounters(counterBlock);
        for (; blocks >= parallel; blocks -= parallel, in += stride, out += stride) {
            Eight x;
            StreamAndHash<true>(x, cipherKey, key, counters, hash, in);
            ApplyStream(x, out, in);
        }
        StoreHalf(hashBytes, _mm_shuffle_epi8(hash, ReverseOrder()));
        StoreHalf(counterBlock, _mm_shuffle_epi8(_mm256_castsi256_si128(counters), ReverseOrder()));
        _mm256_zeroupper();
    }
    gcm::pclmulCalls.decrypt(cipherKey, key, hashBytes, counterBlock, out, in, blocks);
}

void ExpandHashKey(gcm::HashKey& key, const std::uint8_t* subkey)
{
    gcm::pclmulCalls.expandHashKey(key, subkey);
}

} // namespace

const gcm::Calls gcm::vaesCalls = {&aes::vaesCalls, ExpandHashKey, Hash, Encrypt, Decrypt};

} // namespace ccrypto
