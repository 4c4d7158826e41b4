#include "bench/asn1/certificates.h"

#include <benchmark/benchmark.h>
#include <openssl/x509.h>

#include <memory>

using namespace ccrypto;

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
    for (auto _ : state)
        benchmark::DoNotOptimize(Read(Certificate()));
}
BENCHMARK(Decode)->Name("certificate, DER to tree vs d2i_X509");
BENCHMARK(Decode)->Name("SignerInfo template, parsing vs d2i_X509");

void Encode(benchmark::State& state)
{
    const CertificateOwner certificate = Read(Certificate());
    for (auto _ : state) {
        unsigned char* encoded = nullptr;
        i2d_re_X509_tbs(certificate.get(), &encoded);
        OPENSSL_free(encoded);
    }
}
BENCHMARK(Encode)->Name("certificate, tree to DER vs i2d_re_X509_tbs");

} // namespace
