#include "crypto/cipher/key_wrap.h"
#include "crypto/mac/cmac.h"
#include "crypto/mac/hmac.h"
#include "crypto/mac/retail_mac.h"
#include "crypto/random/random.h"

#include <benchmark/benchmark.h>

#include <array>
#include <vector>

using namespace ccrypto;

namespace {

constexpr std::array<std::uint8_t, 16> macKey = {1, 2, 3};

/// The key is set once, as for the messages of one session.
void Authenticate(benchmark::State& state, ICryptoMAC& mac)
{
    const std::vector<std::uint8_t> message(1024, 0x5A);
    std::array<std::uint8_t, maxMACSize> made;
    bool ok = mac.setKey(macKey);
    for (auto _ : state) {
        mac.update(message);
        ok &= mac.final(made.data());
        benchmark::DoNotOptimize(made);
    }
    if (!ok)
        state.SkipWithError("refused");
}

void HmacSha256(benchmark::State& state)
{
    Authenticate(state, *CCryptoHMAC::Create(algorithm::sha256));
}

void CmacAes128(benchmark::State& state)
{
    Authenticate(state, *CCryptoCMAC::Create(algorithm::aes128Cbc));
}

void Retail(benchmark::State& state)
{
    CCryptoRetailMAC mac;
    Authenticate(state, mac);
}

void WrapKey(benchmark::State& state)
{
    const std::array<std::uint8_t, 32> secret = {7};
    for (auto _ : state)
        benchmark::DoNotOptimize(CCryptoKeyWrap::Wrap(macKey, secret));
}

void RandomBytes(benchmark::State& state)
{
    std::array<std::uint8_t, 32> bytes;
    for (auto _ : state) {
        if (!ICryptoRandom::Instance().generate(bytes))
            state.SkipWithError("no random bytes");
        benchmark::DoNotOptimize(bytes);
    }
}

BENCHMARK(HmacSha256)->Name("HMAC-SHA256 of 1 KiB");
BENCHMARK(CmacAes128)->Name("AES-128-CMAC of 1 KiB");
BENCHMARK(Retail)->Name("retail MAC of 1 KiB");
BENCHMARK(WrapKey)->Name("AES-128 key wrap of 32 bytes");
BENCHMARK(RandomBytes)->Name("32 random bytes");

} // namespace
