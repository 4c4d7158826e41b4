#include "bench/pki/cms_message.h"
#include "crypto/ec/ec.h"
#include "crypto/hash/hash.h"
#include "pki/cms/document.h"
#include "pki/cms/pkcs7.h"
#include "pki/cms/signed_data_verification.h"
#include "pki/keys/ec_key_pair.h"
#include "pki/keys/rsa_key_pair.h"
#include "pki/x509/certificate_builder.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace ccrypto {

namespace {

std::vector<std::uint8_t> ReadCmsFile(const std::string& name)
{
    std::ifstream file(std::string(PATH_BUNDLES) + "/cms/" + name + ".der", std::ios::binary);
    std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (bytes.empty()) {
        std::fprintf(stderr, "no message: %s\n", name.c_str());
        std::exit(1);
    }
    return bytes;
}

enum class SigningKey { rsa2048, p256 };

/// A key, its certificate, and content to be signed: short content is embedded, long content is detached, as of a document.
struct SigningBench {
    SigningBench(SigningKey kind, std::size_t size) : content(size, 0x61)
    {
        if (kind == SigningKey::rsa2048)
            key = std::make_unique<CCryptoRSAKeyPair>(CCryptoRSA::Generate(2048));
        else
            key = std::make_unique<CCryptoECKeyPair>(CCryptoEC::Generate(algorithm::prime256v1));
        // CN=Signer
        const std::uint8_t name[] = {0x30, 0x11, 0x31, 0x0F, 0x30, 0x0D, 0x06, 0x03, 0x55, 0x04,
                                     0x03, 0x0C, 0x06, 'S',  'i',  'g',  'n',  'e',  'r'};
        CertificateFields fields;
        fields.serialNumber = NewSerialNumber();
        fields.issuer = fields.subject = element(name, sizeof name);
        fields.validFrom = CCryptoDateTime(CCryptoString("20260101000000Z"));
        fields.validTo = CCryptoDateTime(CCryptoString("20360101000000Z"));
        fields.publicKeyInfo = key->publicKeyInfo();
        request.signer = LoadCertificate(IssueCertificate(fields, *key, algorithm::sha256).bytes());
        request.key = key.get();
        if (kind == SigningKey::rsa2048)
            request.content = content;
        request.addsSigningTime = true;
        request.now = CCryptoDateTime(CCryptoString("20270101000000Z"));
        hashContent();
        if (CCryptoPKCS7::ComputeSignature(request).isEmpty())
            std::abort();
    }

    void hashContent() { request.documentDigest = ICryptoHash::Create(algorithm::sha256)->digestOf(content); }

    std::vector<std::uint8_t> content;
    std::unique_ptr<ICryptoKeyPair> key;
    SCryptoSignature request;
};

void SignMessage(benchmark::State& state, SigningKey kind, std::size_t size)
{
    SigningBench bench(kind, size);
    for (auto _ : state) {
        bench.hashContent();
        benchmark::DoNotOptimize(CCryptoPKCS7::ComputeSignature(bench.request));
    }
}
BENCHMARK_CAPTURE(SignMessage, rsa, SigningKey::rsa2048, 1000)->Name("CMS sign 1 kB embedded, RSA-2048");
BENCHMARK_CAPTURE(SignMessage, p256, SigningKey::p256, 1'000'000)->Name("CMS sign 1 MB detached, P-256");

void SignDigest(benchmark::State& state, SigningKey kind, std::size_t size)
{
    SigningBench bench(kind, size);
    for (auto _ : state) {
        bench.hashContent();
        benchmark::DoNotOptimize(bench.key->signer()->sign(algorithm::sha256, bench.request.documentDigest.bytes()));
    }
}
BENCHMARK_CAPTURE(SignDigest, rsa, SigningKey::rsa2048, 1000)->Name("CMS sign 1 kB embedded, RSA-2048 vs digest and signature");
BENCHMARK_CAPTURE(SignDigest, p256, SigningKey::p256, 1'000'000)->Name("CMS sign 1 MB detached, P-256 vs digest and signature");

void VerifyMessage(benchmark::State& state, const char* name)
{
    const CmsMessage bench = ReadCmsMessage(name);
    SignedDataTrust trust;
    trust.anchors = {LoadCertificate(bench.anchor)};
    SignedDataOptions options;
    options.validation.at = CCryptoDateTime(CCryptoString("20270101000000Z"));
    for (auto _ : state) {
        CCryptoPKCS7Document document;
        if (!document.Parse(bench.message) ||
            VerifySignedData(*document.signedData(), nullptr, trust, options).verdict != Verdict::valid)
            state.SkipWithError("not valid");
    }
}
BENCHMARK_CAPTURE(VerifyMessage, p256, "ec_attached")->Name("CMS verify with its chain, P-256");
BENCHMARK_CAPTURE(VerifyMessage, rsa, "rsa")->Name("CMS verify with its chain, RSA-2048");

} // namespace

CmsMessage ReadCmsMessage(const char* name)
{
    return {ReadCmsFile(name), ReadCmsFile("certificate_root")};
}

} // namespace ccrypto
