#include "core/base/algorithm.h"
#include "crypto/kdf/key_derivation.h"

#include <benchmark/benchmark.h>

#include <array>

using namespace ccrypto;

namespace {

constexpr std::array<std::uint8_t, 8> password = {'p', 'a', 's', 's', 'w', 'o', 'r', 'd'};
constexpr std::array<std::uint8_t, 8> salt = {1, 2, 3, 4, 5, 6, 7, 8};

/// A key of 32 bytes from 10000 iterations.
void PBKDF2(benchmark::State& state, algorithm::Id hashId)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(CCryptoKeyDerivation::PBKDF2(hashId, password, salt, 10000, 32));
}

BENCHMARK_CAPTURE(PBKDF2, sha1, algorithm::sha1)->Name("PBKDF2-SHA1");
BENCHMARK_CAPTURE(PBKDF2, sha256, algorithm::sha256)->Name("PBKDF2-SHA256");
BENCHMARK_CAPTURE(PBKDF2, sha512, algorithm::sha512)->Name("PBKDF2-SHA512");

} // namespace
