#include "core/text/string.h"

#include <benchmark/benchmark.h>

#include <array>
#include <string>
#include <string_view>

namespace {

/// Pieces as paths and log texts are put together of: 1 to 16 bytes, one in eight with a character beyond ASCII.
constexpr std::array<std::string_view, 8> pieces = {
    "a", "*", "C:\\", ".pdf", "Documents", "r\xC3\xA4port", "2026-11-22", "signed and sealed"};

void AppendCryptoString(benchmark::State& state)
{
    for (auto _ : state) {
        CCryptoString text;
        for (std::int64_t index = 0; index < state.range(0); ++index)
            text.append(pieces[static_cast<std::size_t>(index) % pieces.size()]);
        benchmark::DoNotOptimize(text.c_str());
    }
}

void AppendStandardString(benchmark::State& state)
{
    for (auto _ : state) {
        std::string text;
        for (std::int64_t index = 0; index < state.range(0); ++index)
            text.append(pieces[static_cast<std::size_t>(index) % pieces.size()]);
        benchmark::DoNotOptimize(text.c_str());
    }
}

BENCHMARK(AppendCryptoString)->Name("string append of short pieces")->Arg(1000000);
BENCHMARK(AppendStandardString)->Name("string append of short pieces vs std::string")->Arg(1000000);

} // namespace
