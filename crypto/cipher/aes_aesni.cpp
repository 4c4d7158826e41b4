#include "crypto/cipher/aes_variants.h"
#include "crypto/cipher/eight_registers.h"

#include <immintrin.h>

// AES-NI. The schedule holds the round keys of encryption, and after them those of decryption (FIPS 197, 5.3.5), first round
// first.

namespace ccrypto {

namespace {

struct Lane {
    using Register = __m128i;
};
using Eight = EightRegisters<Lane>;

constexpr std::size_t decryptionOffset = aes::maxRoundKeys * aes::blockSize;
constexpr std::size_t parallel = 8;

[[gnu::always_inline]] inline __m128i Load(const std::uint8_t* bytes)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

[[gnu::always_inline]] inline void Store(std::uint8_t* bytes, __m128i value)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value);
}

std::uint32_t SubstituteWord(std::uint32_t word)
{
    const __m128i assisted = _mm_aeskeygenassist_si128(_mm_set1_epi32(static_cast<int>(word)), 0);
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(assisted));
}

/// FIPS 197, 5.2; words are little-endian.
void ExpandKey(aes::Key& key, const std::uint8_t* bytes, std::size_t length)
{
    const std::size_t keyWords = length / 4;
    key.rounds = static_cast<std::uint32_t>(keyWords + 6);
    const std::size_t allWords = 4 * (key.rounds + 1);
    std::uint8_t* const w = key.schedule;
    __builtin_memcpy(w, bytes, length);
    std::uint32_t roundConstant = 1;
    for (std::size_t i = keyWords; i < allWords; ++i) {
        std::uint32_t next = 0;
        std::uint32_t earlier = 0;
        __builtin_memcpy(&next, w + 4 * (i - 1), 4);
        __builtin_memcpy(&earlier, w + 4 * (i - keyWords), 4);
        if (i % keyWords == 0) {
            next = SubstituteWord(next);
            next = (next >> 8 | next << 24) ^ roundConstant;
            roundConstant = roundConstant << 1 ^ (roundConstant >> 7) * 0x11B;
        } else if (keyWords == 8 && i % keyWords == 4) {
            next = SubstituteWord(next);
        }
        next ^= earlier;
        __builtin_memcpy(w + 4 * i, &next, 4);
    }

    std::uint8_t* const decryption = w + decryptionOffset;
    Store(decryption, Load(w + 16 * key.rounds));
    for (std::size_t round = 1; round < key.rounds; ++round)
        Store(decryption + 16 * round, _mm_aesimc_si128(Load(w + 16 * (key.rounds - round))));
    Store(decryption + 16 * key.rounds, Load(w));
}

struct Encrypt {
    static const std::uint8_t* keys(const aes::Key& key) { return key.schedule; }
    [[gnu::always_inline]] static __m128i round(__m128i block, __m128i key) { return _mm_aesenc_si128(block, key); }
    [[gnu::always_inline]] static __m128i last(__m128i block, __m128i key) { return _mm_aesenclast_si128(block, key); }
};

struct Decrypt {
    static const std::uint8_t* keys(const aes::Key& key) { return key.schedule + decryptionOffset; }
    [[gnu::always_inline]] static __m128i round(__m128i block, __m128i key) { return _mm_aesdec_si128(block, key); }
    [[gnu::always_inline]] static __m128i last(__m128i block, __m128i key) { return _mm_aesdeclast_si128(block, key); }
};

template <typename Way>
[[gnu::always_inline]] inline void TransformEight(Eight& x, const std::uint8_t* keys, std::uint32_t rounds)
{
    const __m128i first = Load(keys);
    x.each([first](__m128i& block, int) { block = _mm_xor_si128(block, first); });
    for (std::uint32_t round = 1; round < rounds; ++round) {
        const __m128i roundKey = Load(keys + 16 * round);
        x.each([roundKey](__m128i& block, int) { block = Way::round(block, roundKey); });
    }
    const __m128i last = Load(keys + 16 * rounds);
    x.each([last](__m128i& block, int) { block = Way::last(block, last); });
}

template <typename Way>
[[gnu::always_inline]] inline __m128i TransformOne(__m128i block, const std::uint8_t* keys, std::uint32_t rounds)
{
    block = _mm_xor_si128(block, Load(keys));
    for (std::uint32_t round = 1; round < rounds; ++round)
        block = Way::round(block, Load(keys + 16 * round));
    return Way::last(block, Load(keys + 16 * rounds));
}

template <typename Way>
void TransformBlocks(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks)
{
    const std::uint8_t* const keys = Way::keys(key);
    for (; blocks >= parallel; blocks -= parallel, in += 16 * parallel, out += 16 * parallel) {
        Eight x;
        x.each([in](__m128i& block, int i) { block = Load(in + 16 * i); });
        TransformEight<Way>(x, keys, key.rounds);
        x.each([out](__m128i& block, int i) { Store(out + 16 * i, block); });
    }
    for (; blocks > 0; --blocks, in += 16, out += 16)
        Store(out, TransformOne<Way>(Load(in), keys, key.rounds));
}

/// With all round keys in registers; `rounds` is 10, 12 or 14, and a constant so that the loop falls apart.
template <std::uint32_t rounds>
void EncryptCbcRounds(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain)
{
    const std::uint8_t* const keys = key.schedule;
    const __m128i first = Load(keys), k1 = Load(keys + 16), k2 = Load(keys + 32), k3 = Load(keys + 48), k4 = Load(keys + 64);
    const __m128i k5 = Load(keys + 80), k6 = Load(keys + 96), k7 = Load(keys + 112), k8 = Load(keys + 128), k9 = Load(keys + 144);
    const __m128i last = Load(keys + 16 * rounds);
    // The first round key and the last one meet between two blocks: both are added off the chain.
    const __m128i between = _mm_xor_si128(first, last);
    __m128i x = _mm_xor_si128(Load(chain), last);
    for (; blocks > 0; --blocks, in += 16, out += 16) {
        x = _mm_xor_si128(x, _mm_xor_si128(Load(in), between));
        x = _mm_aesenc_si128(x, k1);
        x = _mm_aesenc_si128(x, k2);
        x = _mm_aesenc_si128(x, k3);
        x = _mm_aesenc_si128(x, k4);
        x = _mm_aesenc_si128(x, k5);
        x = _mm_aesenc_si128(x, k6);
        x = _mm_aesenc_si128(x, k7);
        x = _mm_aesenc_si128(x, k8);
        x = _mm_aesenc_si128(x, k9);
        if constexpr (rounds > 10) {
            x = _mm_aesenc_si128(x, Load(keys + 160));
            x = _mm_aesenc_si128(x, Load(keys + 176));
        }
        if constexpr (rounds > 12) {
            x = _mm_aesenc_si128(x, Load(keys + 192));
            x = _mm_aesenc_si128(x, Load(keys + 208));
        }
        x = _mm_aesenclast_si128(x, _mm_setzero_si128());
        Store(out, _mm_xor_si128(x, last));
    }
    Store(chain, _mm_xor_si128(x, last));
}

void EncryptCbc(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain)
{
    if (key.rounds == 10)
        EncryptCbcRounds<10>(key, out, in, blocks, chain);
    else if (key.rounds == 12)
        EncryptCbcRounds<12>(key, out, in, blocks, chain);
    else
        EncryptCbcRounds<14>(key, out, in, blocks, chain);
}

void DecryptCbc(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain)
{
    const std::uint8_t* const keys = Decrypt::keys(key);
    __m128i before = Load(chain);
    for (; blocks >= parallel; blocks -= parallel, in += 16 * parallel, out += 16 * parallel) {
        Eight x;
        x.each([in](__m128i& block, int i) { block = Load(in + 16 * i); });
        const __m128i next = x.h;
        TransformEight<Decrypt>(x, keys, key.rounds);
        // Every block of cipher text is read before the plain text may take its place.
        x.each([in, before](__m128i& block, int i) { block = _mm_xor_si128(block, i == 0 ? before : Load(in + 16 * (i - 1))); });
        x.each([out](__m128i& block, int i) { Store(out + 16 * i, block); });
        before = next;
    }
    for (; blocks > 0; --blocks, in += 16, out += 16) {
        const __m128i next = Load(in);
        Store(out, _mm_xor_si128(TransformOne<Decrypt>(next, keys, key.rounds), before));
        before = next;
    }
    Store(chain, before);
}

[[gnu::always_inline]] inline __m128i ReverseBytes(__m128i value)
{
    return _mm_shuffle_epi8(value, _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
}

void ApplyCounter(const aes::Key& key, std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* counter)
{
    const std::uint8_t* const keys = key.schedule;
    const __m128i start = ReverseBytes(Load(counter));
    auto high = static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(start, start)));
    auto low = static_cast<std::uint64_t>(_mm_cvtsi128_si64(start));
    const auto next = [&high, &low] {
        const __m128i value = _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
        high += ++low == 0;
        return ReverseBytes(value);
    };
    for (; blocks >= parallel; blocks -= parallel, in += 16 * parallel, out += 16 * parallel) {
        Eight x;
        x.each([&next](__m128i& block, int) { block = next(); });
        TransformEight<Encrypt>(x, keys, key.rounds);
        x.each([in, out](__m128i& block, int i) { Store(out + 16 * i, _mm_xor_si128(block, Load(in + 16 * i))); });
    }
    for (; blocks > 0; --blocks, in += 16, out += 16)
        Store(out, _mm_xor_si128(TransformOne<Encrypt>(next(), keys, key.rounds), Load(in)));
    Store(counter, next());
}

} // namespace

const aes::Calls aes::aesniCalls = {
    ExpandKey, TransformBlocks<Encrypt>, TransformBlocks<Decrypt>, EncryptCbc, DecryptCbc, ApplyCounter,
};

} // namespace ccrypto
