#include "crypto/bigint/big_integer.h"
#include "crypto/rsa/rsa.h"

#include <benchmark/benchmark.h>

#include <array>
#include <map>

namespace {

constexpr std::array<std::uint8_t, 32> digest = {1, 2, 3};

const CCryptoRSA& Key(std::int64_t bits)
{
    static std::map<std::int64_t, std::unique_ptr<CCryptoRSA>> keys;
    std::unique_ptr<CCryptoRSA>& key = keys[bits];
    if (key == nullptr)
        key = CCryptoRSA::Generate(static_cast<std::uint32_t>(bits));
    return *key;
}

void Sign(benchmark::State& state)
{
    const CCryptoRSA& key = Key(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(key.signPKCS1(ccrypto::algorithm::sha256, digest));
}
BENCHMARK(Sign)->Name("RSA sign")->Arg(2048)->Arg(3072)->Arg(4096);

void Verify(benchmark::State& state)
{
    const CCryptoRSA& key = Key(state.range(0));
    const element signature = key.signPKCS1(ccrypto::algorithm::sha256, digest);
    for (auto _ : state)
        benchmark::DoNotOptimize(key.verifyPKCS1(ccrypto::algorithm::sha256, digest, signature.bytes()));
}
BENCHMARK(Verify)->Name("RSA verify")->Arg(2048)->Arg(3072)->Arg(4096);

void Generate(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(CCryptoRSA::Generate(2048));
}
BENCHMARK(Generate)->Name("RSA-2048 key generation")->Unit(benchmark::kMillisecond);

void Product(benchmark::State& state)
{
    const auto bytes = static_cast<std::uint32_t>(state.range(0)) / 8;
    element digits;
    digits.resize(bytes);
    for (std::uint32_t i = 0; i < bytes; ++i)
        digits.data()[i] = static_cast<std::uint8_t>(i * 29 + 1);
    const CCryptoBigInteger number = CCryptoBigInteger::FromBytes(digits.bytes());
    for (auto _ : state)
        benchmark::DoNotOptimize(number * number);
}
BENCHMARK(Product)->Name("product of big integers")->RangeMultiplier(2)->Range(512, 32768);

} // namespace
