#include "tools/cryptotool/cli/version.h"

#include "crypto/base/cpu_features.h"

namespace ccrypto {

std::string VersionText()
{
    const std::string used = cpu::Names(cpu::AllowedFeatures());
    return "cryptotool " CRYPTOTOOL_VERSION "\ncommit " + std::string(sourceCommit) + "\nprocessor " +
           (used.empty() ? "portable" : used) + "\n";
}

} // namespace ccrypto
