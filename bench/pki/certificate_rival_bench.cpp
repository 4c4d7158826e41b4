#include "bench/asn1/certificates.h"

#include <benchmark/benchmark.h>
#include <openssl/x509.h>

using namespace ccrypto;

namespace {

void LoadRivals(benchmark::State& state)
{
    for (auto _ : state) {
        const unsigned char* position = Certificate().data();
        X509* const certificate = d2i_X509(nullptr, &position, static_cast<long>(Certificate().length()));
        if (certificate == nullptr || X509_get0_pubkey(certificate) == nullptr)
            state.SkipWithError("the certificate does not load");
        X509_free(certificate);
    }
}
BENCHMARK(LoadRivals)->Name("certificate to object, key loaded vs d2i_X509, X509_get0_pubkey");

} // namespace
