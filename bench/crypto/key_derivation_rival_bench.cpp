#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <array>
#include <cstdint>

namespace {

constexpr char password[] = "password";
constexpr std::array<std::uint8_t, 8> salt = {1, 2, 3, 4, 5, 6, 7, 8};

void PBKDF2(benchmark::State& state, const EVP_MD* function)
{
    std::array<std::uint8_t, 32> key;
    for (auto _ : state) {
        PKCS5_PBKDF2_HMAC(password, sizeof password - 1, salt.data(), salt.size(), 10000, function, key.size(), key.data());
        benchmark::DoNotOptimize(key);
    }
}

BENCHMARK_CAPTURE(PBKDF2, sha1, EVP_sha1())->Name("PBKDF2-SHA1 vs openssl");
BENCHMARK_CAPTURE(PBKDF2, sha256, EVP_sha256())->Name("PBKDF2-SHA256 vs openssl");
BENCHMARK_CAPTURE(PBKDF2, sha512, EVP_sha512())->Name("PBKDF2-SHA512 vs openssl");

} // namespace
