#include "tests/core/settings/scratch_registry.h"

#include "tests/support/temporary_directory.h"

#include <stdlib.h>

#include <optional>

using namespace ccrypto;

namespace {

std::optional<TemporaryDirectory> directory;

} // namespace

namespace ccrypto {

ScratchRegistry::ScratchRegistry()
{
    directory.emplace();
    setenv("CRYPTO_REGISTRY_MACHINE", (*directory / u8"machine").c_str(), 1);
    setenv("CRYPTO_REGISTRY_USER", (*directory / u8"user").c_str(), 1);
}

ScratchRegistry::~ScratchRegistry()
{
    unsetenv("CRYPTO_REGISTRY_MACHINE");
    unsetenv("CRYPTO_REGISTRY_USER");
    directory.reset();
}

} // namespace ccrypto
