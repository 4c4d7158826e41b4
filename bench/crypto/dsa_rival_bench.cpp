#include "bench/crypto/dsa_numbers.h"

#include <benchmark/benchmark.h>
#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>

#include <memory>
#include <vector>

namespace {

template <auto end>
struct FreeWith {
    void operator()(auto* object) const { end(object); }
};
using Number = std::unique_ptr<BIGNUM, FreeWith<BN_free>>;
using Builder = std::unique_ptr<OSSL_PARAM_BLD, FreeWith<OSSL_PARAM_BLD_free>>;
using Parameters = std::unique_ptr<OSSL_PARAM, FreeWith<OSSL_PARAM_free>>;
using Key = std::unique_ptr<EVP_PKEY, FreeWith<EVP_PKEY_free>>;
using Context = std::unique_ptr<EVP_PKEY_CTX, FreeWith<EVP_PKEY_CTX_free>>;

Number FromHex(const char* digits)
{
    BIGNUM* number = nullptr;
    BN_hex2bn(&number, digits);
    return Number(number);
}

Key KeyOfNumbers()
{
    const Number prime = FromHex(dsa_numbers::prime);
    const Number order = FromHex(dsa_numbers::order);
    const Number generator = FromHex(dsa_numbers::generator);
    const Number publicValue = FromHex(dsa_numbers::publicValue);
    const Builder builder(OSSL_PARAM_BLD_new());
    OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_FFC_P, prime.get());
    OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_FFC_Q, order.get());
    OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_FFC_G, generator.get());
    OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_PUB_KEY, publicValue.get());
    const Parameters parameters(OSSL_PARAM_BLD_to_param(builder.get()));
    const Context context(EVP_PKEY_CTX_new_from_name(nullptr, "DSA", nullptr));
    EVP_PKEY* key = nullptr;
    EVP_PKEY_fromdata_init(context.get());
    EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, parameters.get());
    return Key(key);
}

void VerifyDSA(benchmark::State& state)
{
    const Key key = KeyOfNumbers();
    const Number digits = FromHex(dsa_numbers::signature);
    std::vector<unsigned char> signature(static_cast<std::size_t>(BN_num_bytes(digits.get())));
    BN_bn2bin(digits.get(), signature.data());
    const Context context(EVP_PKEY_CTX_new(key.get(), nullptr));
    EVP_PKEY_verify_init(context.get());
    for (auto _ : state)
        if (EVP_PKEY_verify(context.get(), signature.data(), signature.size(), dsa_numbers::digest.data(),
                            dsa_numbers::digest.size()) != 1)
            state.SkipWithError("not verified");
}
BENCHMARK(VerifyDSA)->Name("DSA-2048 verify vs openssl");

} // namespace
