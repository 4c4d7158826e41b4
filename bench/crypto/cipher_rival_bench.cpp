#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#include <cstring>
#include <memory>
#include <vector>

namespace {

constexpr int textLength = 16384;

struct FreeContext {
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
struct FreeCipher {
    void operator()(EVP_CIPHER* cipher) const { EVP_CIPHER_free(cipher); }
};

/// As `openssl speed` does it: the key is set once; Galois/counter mode gets a new vector for each text.
void Run(benchmark::State& state, const char* name, bool encrypts)
{
    static const bool legacy =
        OSSL_PROVIDER_load(nullptr, "legacy") != nullptr && OSSL_PROVIDER_load(nullptr, "default") != nullptr;
    const std::unique_ptr<EVP_CIPHER, FreeCipher> cipher(EVP_CIPHER_fetch(nullptr, name, nullptr));
    if (!legacy || cipher == nullptr) {
        state.SkipWithError("not there");
        return;
    }
    const std::vector<std::uint8_t> key(64, 0x3C);
    const std::vector<std::uint8_t> iv(16, 0x5A);
    const std::vector<std::uint8_t> text(textLength, 1);
    std::vector<std::uint8_t> out(textLength + 64);
    const std::unique_ptr<EVP_CIPHER_CTX, FreeContext> context(EVP_CIPHER_CTX_new());
    EVP_CipherInit_ex2(context.get(), cipher.get(), key.data(), iv.data(), encrypts ? 1 : 0, nullptr);
    EVP_CIPHER_CTX_set_padding(context.get(), 0);
    const bool hasTag = std::strstr(name, "GCM") != nullptr;
    for (auto _ : state) {
        int length = 0;
        if (hasTag)
            EVP_CipherInit_ex2(context.get(), nullptr, nullptr, iv.data(), -1, nullptr);
        EVP_CipherUpdate(context.get(), out.data(), &length, text.data(), textLength);
        if (hasTag && encrypts)
            EVP_CipherFinal_ex(context.get(), out.data() + length, &length);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * textLength));
}

BENCHMARK_CAPTURE(Run, gcmEncrypt, "AES-128-GCM", true)->Name("AES-128-GCM encrypt 16 KiB vs openssl");
BENCHMARK_CAPTURE(Run, gcmDecrypt, "AES-128-GCM", false)->Name("AES-128-GCM decrypt 16 KiB vs openssl");
BENCHMARK_CAPTURE(Run, cbcEncrypt, "AES-128-CBC", true)->Name("AES-128-CBC encrypt 16 KiB vs openssl");
BENCHMARK_CAPTURE(Run, cbcDecrypt, "AES-128-CBC", false)->Name("AES-128-CBC decrypt 16 KiB vs openssl");
BENCHMARK_CAPTURE(Run, ctr, "AES-128-CTR", true)->Name("AES-128-CTR 16 KiB vs openssl");
BENCHMARK_CAPTURE(Run, desEncrypt, "DES-EDE3-CBC", true)->Name("3DES-CBC encrypt 16 KiB vs openssl");
BENCHMARK_CAPTURE(Run, desDecrypt, "DES-EDE3-CBC", false)->Name("3DES-CBC decrypt 16 KiB vs openssl");
BENCHMARK_CAPTURE(Run, rc4, "RC4", true)->Name("RC4 16 KiB vs openssl");

} // namespace
