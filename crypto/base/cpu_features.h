#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace ccrypto {

/// Groups of processor instructions that some of the library's code is written for.
namespace cpu {

enum Feature : std::uint32_t {
    none = 0,
    shaNi = 1u << 0,  ///< SHA-1 and SHA-256 rounds (SHA, SSSE3, SSE4.1)
    avx2 = 1u << 1,   ///< 256-bit integers, and BMI1 and BMI2, which every such processor has
    aesNi = 1u << 2,  ///< AES rounds (AES, SSSE3, SSE4.1)
    pclmul = 1u << 3, ///< carry-less products (PCLMULQDQ, SSSE3)
    vaes = 1u << 4,   ///< AES rounds and carry-less products of 256 bits (VAES, VPCLMULQDQ, AVX2)
    adx = 1u << 5,    ///< MULX, ADCX and ADOX (BMI2, ADX)
    avx512 = 1u << 6, ///< rotations and three-operand logic of 256 bits (AVX512F, AVX512VL, AVX2)
    ifma = 1u << 7,   ///< products of 52-bit digits, eight at a time (AVX512_IFMA, AVX512F)
};

/// The features that this process may use: those that the processor has and whose registers the operating system saves, without
/// those that the environment forbids. The processor is asked once.
///
/// The environment variable CRYPTO_CPU is read once: "portable" forbids all features, any other text is a list of words separated
/// by commas, such as "-avx2", each of which forbids one. Unknown words are logged and ignored. The variable is for tests and
/// measurements: it cannot allow what the processor lacks.
std::uint32_t AllowedFeatures();

/// The features of the processor, whatever the environment forbids.
std::uint32_t PresentFeatures();

/// The words of the features, as the environment variable takes them: "shani, avx2". Empty for none.
std::string Names(std::uint32_t features);

/// The features of `present` that `text`, the value of the environment variable, does not forbid. \param unknown the first word
/// that is not known, else empty.
std::uint32_t LimitFeatures(std::uint32_t present, std::string_view text, std::string_view& unknown);

/// The first word of the environment variable that is not known, else empty.
std::string_view UnknownWord();

} // namespace cpu

/// One way to compute something, of several that give the same results.
template <typename Calls>
struct Variant {
    const char* name;    ///< "portable", "avx2", ...
    std::uint32_t needs; ///< cpu::Feature, or-ed
    Calls calls;         ///< a function pointer, or a struct of them
};

/// The calls of the last variant whose needs this process may use. The first one of `variants`, the portable one, needs nothing.
template <typename Calls>
const Variant<Calls>& ChooseVariant(std::span<const Variant<Calls>> variants)
{
    const std::uint32_t allowed = cpu::AllowedFeatures();
    const Variant<Calls>* chosen = &variants.front();
    for (const Variant<Calls>& variant : variants)
        if ((variant.needs & ~allowed) == 0)
            chosen = &variant;
    return *chosen;
}

} // namespace ccrypto
