#include "bench/asn1/certificates.h"

#include <benchmark/benchmark.h>
#include <openssl/x509.h>

#include <memory>

namespace {

struct FreeCertificate {
    void operator()(X509* certificate) const { X509_free(certificate); }
};
using CertificateOwner = std::unique_ptr<X509, FreeCertificate>;

CertificateOwner Read(const element& der)
{
    const unsigned char* position = der.data();
    return CertificateOwner(d2i_X509(nullptr, &position, static_cast<long>(der.length())));
}

void Decode(benchmark::State& state)
{
    const std::vector<element>& all = Certificates();
    std::size_t index = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(Read(all[index++ % all.size()]));
}
BENCHMARK(Decode)->Name("certificate, DER to tree vs d2i_X509");
BENCHMARK(Decode)->Name("SignerInfo template, parsing vs d2i_X509");

void Encode(benchmark::State& state)
{
    std::vector<CertificateOwner> certificates;
    for (const element& each : Certificates())
        certificates.push_back(Read(each));
    std::size_t index = 0;
    for (auto _ : state) {
        unsigned char* encoded = nullptr;
        i2d_re_X509_tbs(certificates[index++ % certificates.size()].get(), &encoded);
        OPENSSL_free(encoded);
    }
}
BENCHMARK(Encode)->Name("certificate, tree to DER vs i2d_re_X509_tbs");

} // namespace
