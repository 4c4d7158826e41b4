#include "bench/pki/path_bundle.h"

#include <benchmark/benchmark.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

#include <memory>

using namespace ccrypto;

namespace {

struct FreePathObject {
    void operator()(X509* object) const { X509_free(object); }
    void operator()(X509_CRL* object) const { X509_CRL_free(object); }
    void operator()(X509_STORE* object) const { X509_STORE_free(object); }
    void operator()(X509_STORE_CTX* object) const { X509_STORE_CTX_free(object); }
    void operator()(STACK_OF(X509) * object) const { sk_X509_free(object); }
};
template <typename Type>
using PathOwner = std::unique_ptr<Type, FreePathObject>;

PathOwner<X509> ReadRival(const BundleBytes& der)
{
    const unsigned char* position = der.data();
    return PathOwner<X509>(d2i_X509(nullptr, &position, static_cast<long>(der.size())));
}

PathOwner<X509_CRL> ReadRivalList(const BundleBytes& der)
{
    const unsigned char* position = der.data();
    return PathOwner<X509_CRL>(d2i_X509_CRL(nullptr, &position, static_cast<long>(der.size())));
}

void VerifyRival(benchmark::State& state, const char* keys)
{
    const PathBundle bundle = ReadPathBundle(keys);
    const PathOwner<X509> leaf = ReadRival(bundle.leaf);
    const PathOwner<X509> authority = ReadRival(bundle.authority);
    const PathOwner<X509> anchor = ReadRival(bundle.anchor);
    const PathOwner<X509_CRL> anchorList = ReadRivalList(bundle.anchorList);
    const PathOwner<X509_CRL> authorityList = ReadRivalList(bundle.authorityList);
    const PathOwner<X509_STORE> store(X509_STORE_new());
    X509_STORE_add_cert(store.get(), anchor.get());
    X509_STORE_add_crl(store.get(), anchorList.get());
    X509_STORE_add_crl(store.get(), authorityList.get());
    X509_STORE_set_flags(store.get(), X509_V_FLAG_CRL_CHECK | X509_V_FLAG_CRL_CHECK_ALL);
    X509_VERIFY_PARAM_set_time(X509_STORE_get0_param(store.get()), 1798761600); // 2027-01-01
    const PathOwner<STACK_OF(X509)> between(sk_X509_new_null());
    sk_X509_push(between.get(), authority.get());
    for (auto _ : state) {
        const PathOwner<X509_STORE_CTX> context(X509_STORE_CTX_new());
        X509_STORE_CTX_init(context.get(), store.get(), leaf.get(), between.get());
        if (X509_verify_cert(context.get()) != 1)
            state.SkipWithError(X509_verify_cert_error_string(X509_STORE_CTX_get_error(context.get())));
    }
}
BENCHMARK_CAPTURE(VerifyRival, p256, "p256")->Name("path of three and two lists, P-256 vs X509_verify_cert");
BENCHMARK_CAPTURE(VerifyRival, rsa, "rsa2048")->Name("path of three and two lists, RSA-2048 vs X509_verify_cert");

} // namespace
