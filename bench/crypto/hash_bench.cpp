#include "crypto/hash/hash.h"

#include <benchmark/benchmark.h>

#include <vector>

using namespace ccrypto;

namespace {

void Hash(benchmark::State& state, const char* name)
{
    const std::vector<std::uint8_t> bytes(16384, 0x5A);
    const auto hash = ICryptoHash::CreateByName(name);
    std::uint8_t digest[maxDigestSize];
    for (auto _ : state) {
        hash->update(bytes);
        hash->final(digest);
        benchmark::DoNotOptimize(digest);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes.size()));
}

BENCHMARK_CAPTURE(Hash, md4, "md4")->Name("MD4 of 16 KiB");
BENCHMARK_CAPTURE(Hash, md5, "md5")->Name("MD5 of 16 KiB");
BENCHMARK_CAPTURE(Hash, sha1, "sha1")->Name("SHA-1 of 16 KiB");
BENCHMARK_CAPTURE(Hash, sha256, "sha256")->Name("SHA-256 of 16 KiB");
BENCHMARK_CAPTURE(Hash, sha512, "sha512")->Name("SHA-512 of 16 KiB");
BENCHMARK_CAPTURE(Hash, sha3_256, "sha3-256")->Name("SHA3-256 of 16 KiB");
BENCHMARK_CAPTURE(Hash, shake256, "shake256")->Name("SHAKE256 of 16 KiB");

} // namespace
