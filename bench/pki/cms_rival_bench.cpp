#include "bench/pki/cms_message.h"

#include <benchmark/benchmark.h>
#include <openssl/cms.h>
#include <openssl/x509_vfy.h>

#include <memory>

using namespace ccrypto;

namespace {

struct FreeCmsObject {
    void operator()(CMS_ContentInfo* object) const { CMS_ContentInfo_free(object); }
    void operator()(X509* object) const { X509_free(object); }
    void operator()(X509_STORE* object) const { X509_STORE_free(object); }
};
template <typename Type>
using CmsOwner = std::unique_ptr<Type, FreeCmsObject>;

void VerifyRivalMessage(benchmark::State& state, const char* name)
{
    const CmsMessage bench = ReadCmsMessage(name);
    const unsigned char* position = bench.anchor.data();
    const CmsOwner<X509> anchor(d2i_X509(nullptr, &position, static_cast<long>(bench.anchor.size())));
    const CmsOwner<X509_STORE> store(X509_STORE_new());
    X509_STORE_add_cert(store.get(), anchor.get());
    for (auto _ : state) {
        position = bench.message.data();
        const CmsOwner<CMS_ContentInfo> message(d2i_CMS_ContentInfo(nullptr, &position, static_cast<long>(bench.message.size())));
        if (CMS_verify(message.get(), nullptr, store.get(), nullptr, nullptr, CMS_BINARY) != 1)
            state.SkipWithError("not valid");
    }
}
BENCHMARK_CAPTURE(VerifyRivalMessage, p256, "ec_attached")->Name("CMS verify with its chain, P-256 vs CMS_verify");
BENCHMARK_CAPTURE(VerifyRivalMessage, rsa, "rsa")->Name("CMS verify with its chain, RSA-2048 vs CMS_verify");

} // namespace
