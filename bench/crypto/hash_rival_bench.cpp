#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace {

struct FreeContext {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

void Hash(benchmark::State& state, const EVP_MD* function)
{
    const std::vector<std::uint8_t> bytes(16384, 0x5A);
    const std::unique_ptr<EVP_MD_CTX, FreeContext> context(EVP_MD_CTX_new());
    std::uint8_t digest[EVP_MAX_MD_SIZE];
    for (auto _ : state) {
        EVP_DigestInit_ex(context.get(), function, nullptr);
        EVP_DigestUpdate(context.get(), bytes.data(), bytes.size());
        EVP_DigestFinal_ex(context.get(), digest, nullptr);
        benchmark::DoNotOptimize(digest);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes.size()));
}

BENCHMARK_CAPTURE(Hash, md5, EVP_md5())->Name("MD5 of 16 KiB vs openssl");
BENCHMARK_CAPTURE(Hash, sha1, EVP_sha1())->Name("SHA-1 of 16 KiB vs openssl");
BENCHMARK_CAPTURE(Hash, sha256, EVP_sha256())->Name("SHA-256 of 16 KiB vs openssl");
BENCHMARK_CAPTURE(Hash, sha512, EVP_sha512())->Name("SHA-512 of 16 KiB vs openssl");
BENCHMARK_CAPTURE(Hash, sha3_256, EVP_sha3_256())->Name("SHA3-256 of 16 KiB vs openssl");
BENCHMARK_CAPTURE(Hash, shake256, EVP_shake256())->Name("SHAKE256 of 16 KiB vs openssl");

} // namespace
