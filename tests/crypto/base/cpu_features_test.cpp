#include "crypto/base/cpu_features.h"

#include <gtest/gtest.h>

#include <array>

using namespace ccrypto;

TEST(CpuFeatures, TheEnvironmentCanOnlyForbid)
{
    constexpr std::uint32_t all =
        cpu::shaNi | cpu::avx2 | cpu::aesNi | cpu::pclmul | cpu::vaes | cpu::adx | cpu::avx512 | cpu::ifma;
    struct {
        const char* text;
        std::uint32_t present;
        std::uint32_t left;
        const char* unknown;
    } const cases[] = {
        {"", all, all, ""},
        {"portable", all, cpu::none, ""},
        {"-shani", all, all & ~cpu::shaNi, ""},
        {"-adx,-shani", all, all & ~(cpu::adx | cpu::shaNi), ""},
        {"-vaes,", all, all & ~cpu::vaes, ""},
        {"-aesni", all, all & ~(cpu::aesNi | cpu::vaes), ""},
        {"-avx2", all, all & ~(cpu::avx2 | cpu::vaes | cpu::avx512 | cpu::ifma), ""},
        {"avx2,-avx512, -adx", all, all & ~(cpu::avx512 | cpu::ifma), "avx2"},
        {"-ifma", all, all & ~cpu::ifma, ""},
        {"-adx,,-", all, all & ~cpu::adx, "-"},
        {"shani,avx2", cpu::adx, cpu::adx, "shani"},
    };
    for (const auto& row : cases) {
        std::string_view unknown = "of a call before";
        EXPECT_EQ(cpu::LimitFeatures(row.present, row.text, unknown), row.left) << row.text;
        EXPECT_EQ(unknown, row.unknown);
    }
}

TEST(CpuFeatures, TheLastVariantThatMayRunIsChosen)
{
    using Calls = int (*)();
    const std::array<Variant<Calls>, 2> variants = {{
        {"portable", cpu::none, [] { return 1; }},
        {"impossible", 1u << 31, [] { return 2; }},
    }};
    EXPECT_EQ(ChooseVariant<Calls>(variants).calls(), 1);
    EXPECT_EQ(cpu::AllowedFeatures() & ~cpu::PresentFeatures(), 0u);
}
