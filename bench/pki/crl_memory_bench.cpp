#include "bench/pki/revocation_list.h"
#include "pki/x509/crl.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

using namespace ccrypto;

// Bytes in the place of nanoseconds, which gives a ratio of sizes like one of times.

namespace {

double AllocatedBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

void SetBytes(benchmark::State& state, double bytes)
{
    state.SetIterationTime(bytes * 1e-9);
}

/// All that a loaded list holds, the octets of the file included.
void HeldByList(benchmark::State& state)
{
    for (auto _ : state) {
        const double before = AllocatedBytes();
        CCrypto_X509_CRL list;
        if (!list.LoadCRL(MillionEntries()))
            state.SkipWithError("the list does not load");
        SetBytes(state, AllocatedBytes() - before);
    }
}
BENCHMARK(HeldByList)->Name("revocation list of a million, memory")->UseManualTime();

void SizeOfFile(benchmark::State& state)
{
    for (auto _ : state)
        SetBytes(state, MillionEntries().length());
}
BENCHMARK(SizeOfFile)->Name("revocation list of a million, memory vs its file")->UseManualTime();

} // namespace
