#include "bench/asn1/certificates.h"
#include "pki/x509/certificate.h"

#include <benchmark/benchmark.h>

using namespace ccrypto;

namespace {

void LoadOurs(benchmark::State& state)
{
    for (auto _ : state) {
        CCrypto_X509_Certificate certificate;
        if (!certificate.LoadCertificate(Certificate()))
            state.SkipWithError("the certificate does not load");
    }
    state.counters["bytes"] = Certificate().length();
}
BENCHMARK(LoadOurs)->Name("certificate to object, key loaded");

} // namespace
