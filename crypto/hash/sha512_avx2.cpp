#include "crypto/hash/sha512_two_blocks.h"

namespace ccrypto {

namespace {

struct VectorsOfAvx2 {
    template <int turn>
    [[gnu::always_inline]] static inline __m256i Turned(__m256i x)
    {
        return _mm256_or_si256(_mm256_srli_epi64(x, turn), _mm256_slli_epi64(x, 64 - turn));
    }

    [[gnu::always_inline]] static inline __m256i Xor(__m256i x, __m256i y, __m256i z)
    {
        return _mm256_xor_si256(_mm256_xor_si256(x, y), z);
    }
};

} // namespace

void CompressSHA512WithAvx2(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count)
{
    SHA512TwoBlocks<VectorsOfAvx2>::Compress(state, blocks, count);
}

} // namespace ccrypto
