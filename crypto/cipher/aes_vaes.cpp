#include "crypto/cipher/aes_variants.h"
#include "crypto/cipher/eight_registers.h"

#include <immintrin.h>

// AES-NI on 256 bits: sixteen blocks side by side; the blocks that remain go the way of 128 bits. The schedule is that of
// aes_aesni.cpp.

namespace ccrypto {

namespace {

struct Lane {
    using Register = __m256i;
};
using Eight = EightRegisters<Lane>;

constexpr std::size_t decryptionOffset = aes::maxRoundKeys * aes::blockSize;
constexpr std::size_t parallel = 16;
constexpr std::size_t stride = parallel * aes::blockSize;

[[gnu::always_inline]] inline __m256i Load(const std::uint8_t* bytes)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

[[gnu::always_inline]] inline void Store(std::uint8_t* bytes, __m256i value)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), value);
}

[[gnu::always_inline]] inline __m256i Twice(const std::uint8_t* bytes)
{
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
}

struct Encrypt {
    static constexpr std::size_t offset = 0;
    [[gnu::always_inline]] static __m256i round(__m256i block, __m256i key) { return _mm256_aesenc_epi128(block, key); }
    [[gnu::always_inline]] static __m256i last(__m256i block, __m256i key) { return _mm256_aesenclast_epi128(block, key); }
};

struct Decrypt {
    static constexpr std::size_t offset = decryptionOffset;
    [[gnu::always_inline]] static __m256i round(__m256i block, __m256i key) { return _mm256_aesdec_epi128(block, key); }
    [[gnu::always_inline]] static __m256i last(__m256i block, __m256i key) { return _mm256_aesdeclast_epi128(block, key); }
};

template <typename Way>
[[gnu::always_inline]] inline void Transform(Eight& x, const aes::Key& key)
{
    const std::uint8_t* const keys = key.schedule + Way::offset;
    const __m256i first = Twice(keys);
    x.each([first](__m256i& pair, int) { pair = _mm256_xor_si256(pair, first); });
    for (std::uint32_t round = 1; round < key.rounds; ++round) {
        const __m256i roundKey = Twice(keys + 16 * round);
        x.each([roundKey](__m256i& pair, int) { pair = Way::round(pair, roundKey); });
    }
    const __m256i last = Twice(keys + 16 * key.rounds);
    x.each([last](__m256i& pair, int) { pair = Way::last(pair, last); });
}

template <typename Way>
[[gnu::always_inline]] inline std::size_t TransformMany(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in,
                                                        std::size_t blocks)
{
    const std::size_t many = blocks / parallel;
    for (std::size_t left = many; left > 0; --left, in += stride, out += stride) {
        Eight x;
        x.each([in](__m256i& pair, int i) { pair = Load(in + 32 * i); });
        Transform<Way>(x, key);
        x.each([out](__m256i& pair, int i) { Store(out + 32 * i, pair); });
    }
    return many * parallel;
}

void EncryptBlocks(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks)
{
    const std::size_t done = TransformMany<Encrypt>(key, out, in, blocks);
    aes::aesniCalls.encrypt(key, out + 16 * done, in + 16 * done, blocks - done);
}

void DecryptBlocks(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks)
{
    const std::size_t done = TransformMany<Decrypt>(key, out, in, blocks);
    aes::aesniCalls.decrypt(key, out + 16 * done, in + 16 * done, blocks - done);
}

void EncryptCbc(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain)
{
    aes::aesniCalls.encryptCbc(key, out, in, blocks, chain);
}

void DecryptCbc(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain)
{
    for (; blocks >= parallel; blocks -= parallel, in += stride, out += stride) {
        Eight x;
        x.each([in](__m256i& pair, int i) { pair = Load(in + 32 * i); });
        Transform<Decrypt>(x, key);
        const __m256i before = _mm256_inserti128_si256(Twice(chain), _mm_loadu_si128(reinterpret_cast<const __m128i*>(in)), 1);
        // Every block of cipher text is read before the plain text may take its place.
        x.each([in, before](__m256i& pair, int i) { pair = _mm256_xor_si256(pair, i == 0 ? before : Load(in + 32 * i - 16)); });
        const __m128i last = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + stride - 16));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(chain), last);
        x.each([out](__m256i& pair, int i) { Store(out + 32 * i, pair); });
    }
    _mm256_zeroupper();
    aes::aesniCalls.decryptCbc(key, out, in, blocks, chain);
}

std::uint64_t LoadBigEndian(const std::uint8_t* bytes)
{
    std::uint64_t value = 0;
    __builtin_memcpy(&value, bytes, 8);
    return __builtin_bswap64(value);
}

void StoreBigEndian(std::uint8_t* bytes, std::uint64_t value)
{
    value = __builtin_bswap64(value);
    __builtin_memcpy(bytes, &value, 8);
}

void ApplyCounter(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* counter)
{
    const __m256i reverse = _mm256_broadcastsi128_si256(_mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    while (blocks >= parallel) {
        const std::uint64_t low = LoadBigEndian(counter + 8);
        if (low > ~std::uint64_t{parallel}) {
            // The carry into the upper half is rare.
            aes::aesniCalls.applyCounter(key, out, in, parallel, counter);
        } else {
            __m256i value = _mm256_shuffle_epi8(Twice(counter), reverse);
            value = _mm256_add_epi64(value, _mm256_set_epi64x(0, 1, 0, 0));
            Eight x;
            x.each([value, reverse](__m256i& pair, int i) {
                pair = _mm256_shuffle_epi8(_mm256_add_epi64(value, _mm256_set_epi64x(0, 2 * i, 0, 2 * i)), reverse);
            });
            Transform<Encrypt>(x, key);
            x.each([in, out](__m256i& pair, int i) { Store(out + 32 * i, _mm256_xor_si256(pair, Load(in + 32 * i))); });
            StoreBigEndian(counter + 8, low + parallel);
        }
        blocks -= parallel;
        in += stride;
        out += stride;
    }
    _mm256_zeroupper();
    aes::aesniCalls.applyCounter(key, out, in, blocks, counter);
}

void ExpandKey(aes::Key& key, const std::uint8_t* bytes, std::size_t length)
{
    aes::aesniCalls.expandKey(key, bytes, length);
}

} // namespace

const aes::Calls aes::vaesCalls = {
    ExpandKey, EncryptBlocks, DecryptBlocks, EncryptCbc, DecryptCbc, ApplyCounter,
};

} // namespace ccrypto
