#include "bench/pki/path_bundle.h"
#include "pki/validation/path_validation.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>

using namespace ccrypto;

namespace {

CrlPtr LoadList(const BundleBytes& der)
{
    auto list = std::make_shared<CCrypto_X509_CRL>();
    if (!list->LoadCRL(element(der.data(), static_cast<std::uint32_t>(der.size()))))
        std::abort();
    return list;
}

struct LoadedPath {
    explicit LoadedPath(const char* keys)
    {
        const PathBundle bundle = ReadPathBundle(keys);
        leaf = LoadCertificate(bundle.leaf);
        authority = LoadCertificate(bundle.authority);
        anchor = LoadCertificate(bundle.anchor);
        pool.add(authority, false);
        pool.add(anchor, true);
        sources.crls = {LoadList(bundle.anchorList), LoadList(bundle.authorityList)};
        options.at = CCryptoDateTime(CCryptoString("20270101000000Z"));
        options.status = ValidationOptions::Status::chain;
    }

    CertificatePtr leaf, authority, anchor;
    CertificatePool pool;
    StatusSources sources;
    ValidationOptions options;
};

void ValidatePath(benchmark::State& state, const char* keys)
{
    const LoadedPath path(keys);
    for (auto _ : state)
        if (ValidateCertificate(path.leaf, path.pool, path.sources, path.options).verdict != Verdict::valid)
            state.SkipWithError("not valid");
}
BENCHMARK_CAPTURE(ValidatePath, p256, "p256")->Name("path of three and two lists, P-256");
BENCHMARK_CAPTURE(ValidatePath, rsa, "rsa2048")->Name("path of three and two lists, RSA-2048");
BENCHMARK_CAPTURE(ValidatePath, p256Bare, "p256")->Name("path beyond its signatures, P-256");
BENCHMARK_CAPTURE(ValidatePath, rsaBare, "rsa2048")->Name("path beyond its signatures, RSA-2048");

void CheckSignatures(benchmark::State& state, const char* keys)
{
    const LoadedPath path(keys);
    ICryptoKeyPair& anchorKey = *path.anchor->publicKey();
    ICryptoKeyPair& authorityKey = *path.authority->publicKey();
    for (auto _ : state) {
        benchmark::DoNotOptimize(path.authority->verifySignature(anchorKey));
        benchmark::DoNotOptimize(path.leaf->verifySignature(authorityKey));
        benchmark::DoNotOptimize(path.sources.crls[0]->verifySignature(anchorKey));
        benchmark::DoNotOptimize(path.sources.crls[1]->verifySignature(authorityKey));
    }
}
BENCHMARK_CAPTURE(CheckSignatures, p256, "p256")->Name("path beyond its signatures, P-256 vs the four signatures");
BENCHMARK_CAPTURE(CheckSignatures, rsa, "rsa2048")->Name("path beyond its signatures, RSA-2048 vs the four signatures");

} // namespace
