#include <benchmark/benchmark.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace {

constexpr std::array<std::uint8_t, 16> rivalKey = {1, 2, 3};

struct FreeMAC {
    void operator()(EVP_MAC* mac) const { EVP_MAC_free(mac); }
    void operator()(EVP_MAC_CTX* context) const { EVP_MAC_CTX_free(context); }
};

/// `option` names what the MAC is made with.
void Authenticate(benchmark::State& state, const char* name, const char* option, const char* value)
{
    const std::vector<std::uint8_t> message(1024, 0x5A);
    const std::unique_ptr<EVP_MAC, FreeMAC> mac(EVP_MAC_fetch(nullptr, name, nullptr));
    const std::unique_ptr<EVP_MAC_CTX, FreeMAC> context(EVP_MAC_CTX_new(mac.get()));
    const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(option, const_cast<char*>(value), 0),
                                     OSSL_PARAM_construct_end()};
    std::array<std::uint8_t, EVP_MAX_MD_SIZE> made;
    bool ok = EVP_MAC_init(context.get(), rivalKey.data(), rivalKey.size(), parameters) == 1;
    for (auto _ : state) {
        std::size_t length = 0;
        ok &= EVP_MAC_init(context.get(), nullptr, 0, nullptr) == 1;
        EVP_MAC_update(context.get(), message.data(), message.size());
        ok &= EVP_MAC_final(context.get(), made.data(), &length, made.size()) == 1;
        benchmark::DoNotOptimize(made);
    }
    if (!ok)
        state.SkipWithError("refused");
}

void WrapKey(benchmark::State& state)
{
    struct FreeCipher {
        void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
    };
    const std::array<std::uint8_t, 32> secret = {7};
    std::array<std::uint8_t, 64> wrapped;
    for (auto _ : state) {
        const std::unique_ptr<EVP_CIPHER_CTX, FreeCipher> context(EVP_CIPHER_CTX_new());
        EVP_CIPHER_CTX_set_flags(context.get(), EVP_CIPHER_CTX_FLAG_WRAP_ALLOW);
        int length = 0;
        if (EVP_EncryptInit_ex(context.get(), EVP_aes_128_wrap(), nullptr, rivalKey.data(), nullptr) != 1 ||
            EVP_EncryptUpdate(context.get(), wrapped.data(), &length, secret.data(), secret.size()) != 1)
            state.SkipWithError("refused");
        benchmark::DoNotOptimize(wrapped);
    }
}

void RandomBytes(benchmark::State& state)
{
    std::array<std::uint8_t, 32> bytes;
    for (auto _ : state) {
        if (RAND_bytes(bytes.data(), bytes.size()) != 1)
            state.SkipWithError("no random bytes");
        benchmark::DoNotOptimize(bytes);
    }
}

BENCHMARK_CAPTURE(Authenticate, hmac, "HMAC", OSSL_MAC_PARAM_DIGEST, "SHA256")->Name("HMAC-SHA256 of 1 KiB vs openssl");
BENCHMARK_CAPTURE(Authenticate, cmac, "CMAC", OSSL_MAC_PARAM_CIPHER, "AES-128-CBC")->Name("AES-128-CMAC of 1 KiB vs openssl");
BENCHMARK(WrapKey)->Name("AES-128 key wrap of 32 bytes vs openssl");
BENCHMARK(RandomBytes)->Name("32 random bytes vs openssl");

} // namespace
