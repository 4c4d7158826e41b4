#include "bench/pki/revocation_list.h"

#include <benchmark/benchmark.h>
#include <openssl/x509.h>

#include <memory>
#include <vector>

using namespace ccrypto;

namespace {

struct FreeList {
    void operator()(X509_CRL* list) const { X509_CRL_free(list); }
};
using ListOwner = std::unique_ptr<X509_CRL, FreeList>;

struct FreeNumber {
    void operator()(ASN1_INTEGER* number) const { ASN1_INTEGER_free(number); }
};
using NumberOwner = std::unique_ptr<ASN1_INTEGER, FreeNumber>;

ListOwner ReadList()
{
    const unsigned char* position = MillionEntries().data();
    return ListOwner(d2i_X509_CRL(nullptr, &position, static_cast<long>(MillionEntries().length())));
}

NumberOwner NumberOf(const element& contents)
{
    NumberOwner number(ASN1_INTEGER_new());
    ASN1_STRING_set(number.get(), contents.data(), static_cast<int>(contents.length()));
    return number;
}

bool IsRevoked(X509_CRL* list, ASN1_INTEGER* number)
{
    X509_REVOKED* revoked = nullptr;
    return X509_CRL_get0_by_serial(list, &revoked, number) == 1;
}

void ReadAndFind(benchmark::State& state)
{
    const NumberOwner number = NumberOf(SomeSerialNumbers()[0]);
    for (auto _ : state) {
        ListOwner list = ReadList();
        if (!IsRevoked(list.get(), number.get()))
            state.SkipWithError("the entry is not found");
        state.PauseTiming();
        list.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(ReadAndFind)
    ->Name("revocation list of a million, load and first look-up vs d2i_X509_CRL and X509_CRL_get0_by_serial")
    ->Unit(benchmark::kMillisecond);

void FindFurtherRevoked(benchmark::State& state)
{
    const ListOwner list = ReadList();
    std::vector<NumberOwner> numbers;
    for (const element& contents : SomeSerialNumbers())
        numbers.push_back(NumberOf(contents));
    // The first look-up sorts the entries.
    if (!IsRevoked(list.get(), numbers[0].get()))
        state.SkipWithError("the entry is not found");
    std::size_t next = 0;
    for (auto _ : state) {
        if (!IsRevoked(list.get(), numbers[next].get()))
            state.SkipWithError("an entry is not found");
        next = (next + 1) % numbers.size();
    }
}
BENCHMARK(FindFurtherRevoked)->Name("revocation list of a million, further look-up vs X509_CRL_get0_by_serial");

} // namespace
