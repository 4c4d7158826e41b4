#include "crypto/cipher/cipher.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

using namespace ccrypto;

namespace {

constexpr std::size_t textLength = 16384;

/// Key set-up, text and tag: what one message takes.
void Run(benchmark::State& state, const char* name, CipherDirection direction)
{
    const auto cipher = ICryptoCipher::CreateByName(name);
    cipher->setPadding(false);
    const std::vector<std::uint8_t> key(cipher->keySize(), 0x3C);
    const std::vector<std::uint8_t> iv(cipher->ivSize(), 0x5A);
    const std::vector<std::uint8_t> plain(textLength, 1);
    element text(plain.data(), textLength);
    if (direction == CipherDirection::decrypt && !cipher->encrypt(key, iv, plain, text))
        state.SkipWithError("cannot encrypt");
    std::vector<std::uint8_t> out(textLength + 64);
    for (auto _ : state) {
        std::size_t written = 0;
        std::size_t end = 0;
        const bool ok = cipher->start(direction, key, iv) && cipher->update(text.bytes(), out.data(), written) &&
                        cipher->final(out.data() + written, end);
        if (!ok)
            state.SkipWithError("refused");
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * textLength));
}

BENCHMARK_CAPTURE(Run, gcmEncrypt, "aes-128-gcm", CipherDirection::encrypt)->Name("AES-128-GCM encrypt 16 KiB");
BENCHMARK_CAPTURE(Run, gcmDecrypt, "aes-128-gcm", CipherDirection::decrypt)->Name("AES-128-GCM decrypt 16 KiB");
BENCHMARK_CAPTURE(Run, cbcEncrypt, "aes-128-cbc", CipherDirection::encrypt)->Name("AES-128-CBC encrypt 16 KiB");
BENCHMARK_CAPTURE(Run, cbcDecrypt, "aes-128-cbc", CipherDirection::decrypt)->Name("AES-128-CBC decrypt 16 KiB");
BENCHMARK_CAPTURE(Run, ctr, "aes-128-ctr", CipherDirection::encrypt)->Name("AES-128-CTR 16 KiB");
BENCHMARK_CAPTURE(Run, desEncrypt, "des-ede3-cbc", CipherDirection::encrypt)->Name("3DES-CBC encrypt 16 KiB");
BENCHMARK_CAPTURE(Run, desDecrypt, "des-ede3-cbc", CipherDirection::decrypt)->Name("3DES-CBC decrypt 16 KiB");
BENCHMARK_CAPTURE(Run, rc4, "rc4", CipherDirection::encrypt)->Name("RC4 16 KiB");

} // namespace
