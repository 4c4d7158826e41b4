#include "bench/pki/revocation_list.h"
#include "pki/x509/crl.h"

#include <benchmark/benchmark.h>

using namespace ccrypto;

namespace {

/// Neither the copy of the file nor the end of the list is measured.
void LoadAndFind(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        element file = MillionEntries();
        auto list = std::make_unique<CCrypto_X509_CRL>();
        state.ResumeTiming();
        if (!list->LoadCRL(std::move(file)) || list->find(SomeSerialNumbers()[0].bytes()).size() != 1)
            state.SkipWithError("the list does not load");
        state.PauseTiming();
        list.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(LoadAndFind)->Name("revocation list of a million, load and first look-up")->Unit(benchmark::kMillisecond);

void FindFurther(benchmark::State& state)
{
    CCrypto_X509_CRL list;
    if (!list.LoadCRL(MillionEntries()))
        state.SkipWithError("the list does not load");
    const std::vector<element>& numbers = SomeSerialNumbers();
    std::size_t next = 0;
    for (auto _ : state) {
        if (list.find(numbers[next].bytes()).size() != 1)
            state.SkipWithError("an entry is not found");
        next = (next + 1) % numbers.size();
    }
}
BENCHMARK(FindFurther)->Name("revocation list of a million, further look-up");

} // namespace
