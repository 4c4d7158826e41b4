#include "core/memory/wiped.h"
#include "crypto/cipher/des_bit_planes.h"

#include <immintrin.h>

namespace ccrypto {

namespace {

/// Unlike __m256i, with a logical shift.
using Words [[gnu::vector_size(32)]] = std::uint64_t;

struct Lane {
    using Register = Words;
    static constexpr int words = 4;
    [[gnu::always_inline]] static Register Load(const std::uint64_t* from)
    {
        return reinterpret_cast<Words>(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
    }
    [[gnu::always_inline]] static void Store(std::uint64_t* to, Register value)
    {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), reinterpret_cast<__m256i>(value));
    }
    [[gnu::always_inline]] static Register Broadcast(std::uint64_t word)
    {
        return reinterpret_cast<Words>(_mm256_set1_epi64x(static_cast<long long>(word)));
    }
};

void Transform(const des::Schedule& schedule, std::uint8_t* out, const std::uint8_t* in)
{
    Wiped<des::Planes<Lane>> planes;
    planes.transform(schedule, out, in);
}

} // namespace

const des::Calls des::avx2Calls = {256, Transform};

} // namespace ccrypto
