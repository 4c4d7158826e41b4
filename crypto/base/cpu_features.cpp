#include "crypto/base/cpu_features.h"

#include "core/log/log_writers.h"

#include <cpuid.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace ccrypto::cpu {

namespace {

struct Word {
    std::string_view name;
    std::uint32_t feature;
};

constexpr Word words[] = {
    {"shani", shaNi}, {"avx2", avx2}, {"aesni", aesNi},   {"pclmul", pclmul},
    {"vaes", vaes},   {"adx", adx},   {"avx512", avx512}, {"ifma", ifma},
};

constexpr bool HasAll(std::uint32_t bits, std::uint32_t wanted)
{
    return (bits & wanted) == wanted;
}

// Registers that the operating system saves, bits of XCR0.
constexpr std::uint32_t sseAndAvxRegisters = 0x6;
constexpr std::uint32_t avx512Registers = 0xE0;

std::uint32_t SavedRegisters(std::uint32_t leaf1c)
{
    constexpr std::uint32_t osxsave = 1u << 27;
    if (!HasAll(leaf1c, osxsave))
        return 0;
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

std::uint32_t AskProcessor()
{
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    std::uint32_t c = 0;
    std::uint32_t d = 0;
    if (__get_cpuid(1, &a, &b, &c, &d) == 0)
        return none;
    const std::uint32_t leaf1c = c;
    if (__get_cpuid_count(7, 0, &a, &b, &c, &d) == 0) {
        b = 0;
        c = 0;
    }

    // Bits of leaf 1, ECX, and of leaf 7, EBX and ECX (Intel SDM volume 2, CPUID).
    constexpr std::uint32_t ssse3AndSse41 = 1u << 9 | 1u << 19;
    constexpr std::uint32_t bmi1AndBmi2 = 1u << 3 | 1u << 8;
    std::uint32_t found = none;
    if (HasAll(leaf1c, ssse3AndSse41)) {
        if (HasAll(b, 1u << 29))
            found |= shaNi;
        if (HasAll(leaf1c, 1u << 25))
            found |= aesNi;
        if (HasAll(leaf1c, 1u << 1))
            found |= pclmul;
    }
    const std::uint32_t saved = SavedRegisters(leaf1c);
    if (HasAll(saved, sseAndAvxRegisters) && HasAll(leaf1c, 1u << 28) && HasAll(b, 1u << 5 | bmi1AndBmi2)) {
        found |= avx2;
        if (HasAll(found, aesNi | pclmul) && HasAll(c, 1u << 9 | 1u << 10))
            found |= vaes;
        if (HasAll(saved, avx512Registers) && HasAll(b, 1u << 16 | 1u << 31))
            found |= avx512;
        if (HasAll(found, avx512) && HasAll(b, 1u << 21))
            found |= ifma;
    }
    if (HasAll(b, 1u << 8 | 1u << 19))
        found |= adx;
    return found;
}

/// What the environment variable says, read once.
struct Environment {
    std::uint32_t allowed;
    std::string unknown;
};

const Environment& TheEnvironment()
{
    static const Environment environment = [] {
        const char* const text = std::getenv("CRYPTO_CPU");
        std::string_view unknown;
        const std::uint32_t allowed = LimitFeatures(PresentFeatures(), text == nullptr ? "" : text, unknown);
        if (!unknown.empty())
            WriteLog_G("CRYPTO_CPU: unknown word %s", std::string(unknown).c_str());
        return Environment{allowed, std::string(unknown)};
    }();
    return environment;
}

} // namespace

std::uint32_t PresentFeatures()
{
    static const std::uint32_t present = AskProcessor();
    return present;
}

std::string Names(std::uint32_t features)
{
    std::string names;
    for (const Word& word : words)
        if ((features & word.feature) != 0)
            names.append(names.empty() ? "" : ", ").append(word.name);
    return names;
}

std::uint32_t LimitFeatures(std::uint32_t present, std::string_view text, std::string_view& unknown)
{
    unknown = {};
    if (text == "portable")
        return none;
    while (!text.empty()) {
        const std::size_t comma = text.find(',');
        const std::string_view item = text.substr(0, comma);
        const auto* const word =
            std::ranges::find_if(words, [item](const Word& row) { return item.starts_with('-') && item.substr(1) == row.name; });
        if (word != std::end(words))
            present &= ~word->feature;
        else if (unknown.empty())
            unknown = item;
        text = comma == std::string_view::npos ? std::string_view{} : text.substr(comma + 1);
    }
    // Code for wide AES, for AVX-512 and for IFMA uses the other features, too.
    if (!HasAll(present, avx2 | aesNi | pclmul))
        present &= ~std::uint32_t{vaes};
    if (!HasAll(present, avx2))
        present &= ~std::uint32_t{avx512};
    if (!HasAll(present, avx512))
        present &= ~std::uint32_t{ifma};
    return present;
}

std::uint32_t AllowedFeatures()
{
    return TheEnvironment().allowed;
}

std::string_view UnknownWord()
{
    return TheEnvironment().unknown;
}

} // namespace ccrypto::cpu
