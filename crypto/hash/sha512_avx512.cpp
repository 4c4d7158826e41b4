#include "crypto/hash/sha512_two_blocks.h"

namespace ccrypto {

namespace {

struct VectorsOfAvx512 {
    template <int turn>
    [[gnu::always_inline]] static inline __m256i Turned(__m256i x)
    {
        return _mm256_ror_epi64(x, turn);
    }

    [[gnu::always_inline]] static inline __m256i Xor(__m256i x, __m256i y, __m256i z)
    {
        constexpr int oddCount = 0x96;
        return _mm256_ternarylogic_epi64(x, y, z, oddCount);
    }
};

} // namespace

void CompressSHA512WithAvx512(std::uint64_t* state, const std::uint8_t* blocks, std::size_t count)
{
    SHA512TwoBlocks<VectorsOfAvx512>::Compress(state, blocks, count);
}

} // namespace ccrypto
