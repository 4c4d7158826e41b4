#include "tools/cryptotool/cli/version.h"

#include "crypto/base/cpu_features.h"

#include <cstdint>

using namespace ccrypto;

namespace ccrypto {

namespace {

struct FeatureName {
    std::uint32_t bit;
    const char* name;
};

constexpr FeatureName featureNames[] = {
    {cpu::shaNi, "shani"},   {cpu::avx2, "avx2"}, {cpu::aesNi, "aesni"},
    {cpu::pclmul, "pclmul"}, {cpu::vaes, "vaes"}, {cpu::adx, "adx"},
};

} // namespace

std::string VersionText()
{
    std::string used;
    for (const FeatureName& feature : featureNames)
        if ((cpu::AllowedFeatures() & feature.bit) != 0)
            used += std::string(used.empty() ? "" : ", ") + feature.name;
    return "cryptotool " CRYPTOTOOL_VERSION "\ncommit " + std::string(sourceCommit) + "\nprocessor " +
           (used.empty() ? "portable" : used) + "\n";
}

} // namespace ccrypto
