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
enum class SignedForm {
    embedded, ///< the content goes into the message, and is hashed there
    detached, ///< the content's digest is given, as of a document
};

/// A key, its certificate, and content to be signed.
struct SigningBench {
    SigningBench(SigningKey kind, std::size_t size, SignedForm form) : content(size, 0x61)
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
        if (form == SignedForm::embedded)
            request.content = content;
        request.addsSigningTime = true;
        request.now = CCryptoDateTime(CCryptoString("20270101000000Z"));
        request.documentDigest = digest();
        if (CCryptoPKCS7::ComputeSignature(request).isEmpty())
            std::abort();
    }

    [[nodiscard]] element digest() const { return ICryptoHash::Create(algorithm::sha256)->digestOf(content); }

    std::vector<std::uint8_t> content;
    std::unique_ptr<ICryptoKeyPair> key;
    SCryptoSignature request;
};

void SignMessage(benchmark::State& state, SigningKey kind, std::size_t size, SignedForm form)
{
    SigningBench bench(kind, size, form);
    for (auto _ : state) {
        bench.request.documentDigest = form == SignedForm::detached ? bench.digest() : element();
        benchmark::DoNotOptimize(CCryptoPKCS7::ComputeSignature(bench.request));
    }
}

void SignDigest(benchmark::State& state, SigningKey kind, std::size_t size, SignedForm form)
{
    SigningBench bench(kind, size, form);
    for (auto _ : state)
        benchmark::DoNotOptimize(bench.key->signer()->sign(algorithm::sha256, bench.digest().bytes()));
}

#define CMS_SIGN_BENCH(what, key, size, form)                                                                                      \
    BENCHMARK_CAPTURE(SignMessage, form##key, SigningKey::key, size, SignedForm::form)->Name(what);                                \
    BENCHMARK_CAPTURE(SignDigest, form##key, SigningKey::key, size, SignedForm::form)->Name(what " vs digest and signature")
CMS_SIGN_BENCH("CMS sign 1 kB embedded, RSA-2048", rsa2048, 1000, embedded);
CMS_SIGN_BENCH("CMS sign 1 MB detached, P-256", p256, 1'000'000, detached);
CMS_SIGN_BENCH("CMS sign 1 MB embedded, P-256", p256, 1'000'000, embedded);
#undef CMS_SIGN_BENCH

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
