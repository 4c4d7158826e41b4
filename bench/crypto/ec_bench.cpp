#include "core/base/algorithm.h"
#include "crypto/ec/curve_point.h"
#include "crypto/ec/ec.h"
#include "crypto/ec/eddsa.h"
#include "crypto/random/random.h"

#include <benchmark/benchmark.h>

#include <array>

using namespace ccrypto;

namespace {

constexpr std::array<std::uint8_t, 32> digest = {1, 2, 3};

std::unique_ptr<CCryptoEC> NewKey(benchmark::State& state, algorithm::Id curve)
{
    auto key = CCryptoEC::Generate(curve);
    if (key == nullptr)
        state.SkipWithError("no key");
    return key;
}

void Sign(benchmark::State& state, algorithm::Id curve)
{
    const auto key = NewKey(state, curve);
    for (auto _ : state)
        benchmark::DoNotOptimize(key->signHash(digest, SignatureForm::der));
}
BENCHMARK_CAPTURE(Sign, p256, algorithm::prime256v1)->Name("ECDSA P-256 sign");
BENCHMARK_CAPTURE(Sign, p384, algorithm::secp384r1)->Name("ECDSA P-384 sign");
BENCHMARK_CAPTURE(Sign, p521, algorithm::secp521r1)->Name("ECDSA P-521 sign");
BENCHMARK_CAPTURE(Sign, bp256, algorithm::brainpoolP256r1)->Name("ECDSA brainpoolP256r1 sign");
BENCHMARK_CAPTURE(Sign, bp320, algorithm::brainpoolP320r1)->Name("ECDSA brainpoolP320r1 sign");
BENCHMARK_CAPTURE(Sign, bp384, algorithm::brainpoolP384r1)->Name("ECDSA brainpoolP384r1 sign");
BENCHMARK_CAPTURE(Sign, bp512, algorithm::brainpoolP512r1)->Name("ECDSA brainpoolP512r1 sign");
BENCHMARK_CAPTURE(Sign, p224, algorithm::secp224r1)->Name("ECDSA P-224 sign");
BENCHMARK_CAPTURE(Sign, k256, algorithm::secp256k1)->Name("ECDSA secp256k1 sign");

void Verify(benchmark::State& state, algorithm::Id curve)
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
BENCHMARK_CAPTURE(Verify, bp320, algorithm::brainpoolP320r1)->Name("ECDSA brainpoolP320r1 verify");
BENCHMARK_CAPTURE(Verify, bp384, algorithm::brainpoolP384r1)->Name("ECDSA brainpoolP384r1 verify");
BENCHMARK_CAPTURE(Verify, bp512, algorithm::brainpoolP512r1)->Name("ECDSA brainpoolP512r1 verify");
BENCHMARK_CAPTURE(Verify, p224, algorithm::secp224r1)->Name("ECDSA P-224 verify");
BENCHMARK_CAPTURE(Verify, k256, algorithm::secp256k1)->Name("ECDSA secp256k1 verify");

void Agree(benchmark::State& state, algorithm::Id curve)
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

constexpr std::array<std::uint8_t, 32> message = {1, 2, 3};

void SignMessage(benchmark::State& state, algorithm::Id curve)
{
    const auto key = EddsaKey::Generate(curve);
    for (auto _ : state)
        benchmark::DoNotOptimize(key->sign(message));
}
BENCHMARK_CAPTURE(SignMessage, ed25519, algorithm::ed25519)->Name("Ed25519 sign");
BENCHMARK_CAPTURE(SignMessage, ed448, algorithm::ed448)->Name("Ed448 sign");

void VerifyMessage(benchmark::State& state, algorithm::Id curve)
{
    const auto key = EddsaKey::Generate(curve);
    const element signature = key->sign(message);
    for (auto _ : state)
        if (!key->verify(message, signature.bytes()))
            state.SkipWithError("not verified");
}
BENCHMARK_CAPTURE(VerifyMessage, ed25519, algorithm::ed25519)->Name("Ed25519 verify");
BENCHMARK_CAPTURE(VerifyMessage, ed448, algorithm::ed448)->Name("Ed448 verify");

/// Of any point by a secret scalar, to both coordinates.
void MultiplyPoint(benchmark::State& state, algorithm::Id curve)
{
    const auto key = NewKey(state, curve);
    const auto point = CurvePoint::FromBytes(curve, NewKey(state, curve)->publicPoint().bytes());
    const element scalar = key->privateScalar();
    for (auto _ : state)
        benchmark::DoNotOptimize(Multiply(*point, scalar.bytes()));
}
BENCHMARK_CAPTURE(MultiplyPoint, p256, algorithm::prime256v1)->Name("point multiplication P-256");
BENCHMARK_CAPTURE(MultiplyPoint, p384, algorithm::secp384r1)->Name("point multiplication P-384");
BENCHMARK_CAPTURE(MultiplyPoint, bp256, algorithm::brainpoolP256r1)->Name("point multiplication brainpoolP256r1");
BENCHMARK_CAPTURE(MultiplyPoint, bp512, algorithm::brainpoolP512r1)->Name("point multiplication brainpoolP512r1");

} // namespace
