#include "core/base/algorithm.h"
#include "crypto/ec/ec.h"
#include "crypto/random/random.h"

#include <benchmark/benchmark.h>

#include <array>

using namespace ccrypto;

namespace {

constexpr std::array<std::uint8_t, 32> digest = {1, 2, 3};

std::unique_ptr<CCryptoEC> NewKey(benchmark::State& state, std::uint32_t curve)
{
    auto key = CCryptoEC::Generate(curve);
    if (key == nullptr)
        state.SkipWithError("no key");
    return key;
}

void Sign(benchmark::State& state, std::uint32_t curve)
{
    const auto key = NewKey(state, curve);
    for (auto _ : state)
        benchmark::DoNotOptimize(key->signHash(digest, SignatureForm::der));
}
BENCHMARK_CAPTURE(Sign, p256, algorithm::prime256v1)->Name("ECDSA P-256 sign");
BENCHMARK_CAPTURE(Sign, p384, algorithm::secp384r1)->Name("ECDSA P-384 sign");
BENCHMARK_CAPTURE(Sign, p521, algorithm::secp521r1)->Name("ECDSA P-521 sign");
BENCHMARK_CAPTURE(Sign, bp256, algorithm::brainpoolP256r1)->Name("ECDSA brainpoolP256r1 sign");

void Verify(benchmark::State& state, std::uint32_t curve)
{
    const auto key = NewKey(state, curve);
    const element signature = key->signHash(digest, SignatureForm::der);
    for (auto _ : state)
        benchmark::DoNotOptimize(key->verifyHash(digest, signature.bytes(), SignatureForm::der));
}
BENCHMARK_CAPTURE(Verify, p256, algorithm::prime256v1)->Name("ECDSA P-256 verify");
BENCHMARK_CAPTURE(Verify, p384, algorithm::secp384r1)->Name("ECDSA P-384 verify");
BENCHMARK_CAPTURE(Verify, p521, algorithm::secp521r1)->Name("ECDSA P-521 verify");
BENCHMARK_CAPTURE(Verify, bp256, algorithm::brainpoolP256r1)->Name("ECDSA brainpoolP256r1 verify");

void Agree(benchmark::State& state, std::uint32_t curve)
{
    const auto key = NewKey(state, curve);
    const element point = NewKey(state, curve)->publicPoint();
    for (auto _ : state)
        benchmark::DoNotOptimize(key->agree(point.bytes()));
}
BENCHMARK_CAPTURE(Agree, x25519, algorithm::x25519)->Name("X25519");
BENCHMARK_CAPTURE(Agree, x448, algorithm::x448)->Name("X448");
BENCHMARK_CAPTURE(Agree, p256, algorithm::prime256v1)->Name("ECDH P-256");
BENCHMARK_CAPTURE(Agree, p384, algorithm::secp384r1)->Name("ECDH P-384");

} // namespace
