#include <benchmark/benchmark.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/obj_mac.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace {

constexpr std::array<std::uint8_t, 32> digest = {1, 2, 3};

struct FreeKey {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
using Key = std::unique_ptr<EVP_PKEY, FreeKey>;
struct FreeContext {
    void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_PKEY_CTX, FreeContext>;
using MessageContext = std::unique_ptr<EVP_MD_CTX, FreeContext>;

/// Of the kind EVP_PKEY_EC on the curve `nid`, or of another kind.
Key NewKey(int kind, int nid)
{
    const Context context(EVP_PKEY_CTX_new_id(kind, nullptr));
    EVP_PKEY_keygen_init(context.get());
    if (kind == EVP_PKEY_EC)
        EVP_PKEY_CTX_set_ec_paramgen_curve_nid(context.get(), nid);
    EVP_PKEY* key = nullptr;
    EVP_PKEY_keygen(context.get(), &key);
    return Key(key);
}

std::vector<std::uint8_t> SignOnce(EVP_PKEY_CTX* context)
{
    std::vector<std::uint8_t> signature(160);
    std::size_t length = signature.size();
    EVP_PKEY_sign(context, signature.data(), &length, digest.data(), digest.size());
    signature.resize(length);
    return signature;
}

void Sign(benchmark::State& state, int nid)
{
    const Key key = NewKey(EVP_PKEY_EC, nid);
    const Context context(EVP_PKEY_CTX_new(key.get(), nullptr));
    EVP_PKEY_sign_init(context.get());
    for (auto _ : state)
        benchmark::DoNotOptimize(SignOnce(context.get()));
}
BENCHMARK_CAPTURE(Sign, p256, NID_X9_62_prime256v1)->Name("ECDSA P-256 sign vs openssl");
BENCHMARK_CAPTURE(Sign, p384, NID_secp384r1)->Name("ECDSA P-384 sign vs openssl");
BENCHMARK_CAPTURE(Sign, p521, NID_secp521r1)->Name("ECDSA P-521 sign vs openssl");
BENCHMARK_CAPTURE(Sign, bp256, NID_brainpoolP256r1)->Name("ECDSA brainpoolP256r1 sign vs openssl");
BENCHMARK_CAPTURE(Sign, bp320, NID_brainpoolP320r1)->Name("ECDSA brainpoolP320r1 sign vs openssl");
BENCHMARK_CAPTURE(Sign, bp384, NID_brainpoolP384r1)->Name("ECDSA brainpoolP384r1 sign vs openssl");
BENCHMARK_CAPTURE(Sign, bp512, NID_brainpoolP512r1)->Name("ECDSA brainpoolP512r1 sign vs openssl");
BENCHMARK_CAPTURE(Sign, p224, NID_secp224r1)->Name("ECDSA P-224 sign vs openssl");
BENCHMARK_CAPTURE(Sign, k256, NID_secp256k1)->Name("ECDSA secp256k1 sign vs openssl");

void Verify(benchmark::State& state, int nid)
{
    const Key key = NewKey(EVP_PKEY_EC, nid);
    const Context context(EVP_PKEY_CTX_new(key.get(), nullptr));
    EVP_PKEY_sign_init(context.get());
    const std::vector<std::uint8_t> signature = SignOnce(context.get());
    EVP_PKEY_verify_init(context.get());
    for (auto _ : state)
        if (EVP_PKEY_verify(context.get(), signature.data(), signature.size(), digest.data(), digest.size()) != 1)
            state.SkipWithError("not verified");
}
BENCHMARK_CAPTURE(Verify, p256, NID_X9_62_prime256v1)->Name("ECDSA P-256 verify vs openssl");
BENCHMARK_CAPTURE(Verify, p384, NID_secp384r1)->Name("ECDSA P-384 verify vs openssl");
BENCHMARK_CAPTURE(Verify, p521, NID_secp521r1)->Name("ECDSA P-521 verify vs openssl");
BENCHMARK_CAPTURE(Verify, bp256, NID_brainpoolP256r1)->Name("ECDSA brainpoolP256r1 verify vs openssl");
BENCHMARK_CAPTURE(Verify, bp320, NID_brainpoolP320r1)->Name("ECDSA brainpoolP320r1 verify vs openssl");
BENCHMARK_CAPTURE(Verify, bp384, NID_brainpoolP384r1)->Name("ECDSA brainpoolP384r1 verify vs openssl");
BENCHMARK_CAPTURE(Verify, bp512, NID_brainpoolP512r1)->Name("ECDSA brainpoolP512r1 verify vs openssl");
BENCHMARK_CAPTURE(Verify, p224, NID_secp224r1)->Name("ECDSA P-224 verify vs openssl");
BENCHMARK_CAPTURE(Verify, k256, NID_secp256k1)->Name("ECDSA secp256k1 verify vs openssl");

void Agree(benchmark::State& state, int kind, int nid)
{
    const Key key = NewKey(kind, nid);
    const Key peer = NewKey(kind, nid);
    const Context context(EVP_PKEY_CTX_new(key.get(), nullptr));
    EVP_PKEY_derive_init(context.get());
    // The peer is one key; setting it is a part of the agreement.
    for (auto _ : state) {
        std::array<std::uint8_t, 72> secret;
        std::size_t length = secret.size();
        if (EVP_PKEY_derive_set_peer(context.get(), peer.get()) != 1 || EVP_PKEY_derive(context.get(), secret.data(), &length) != 1)
            state.SkipWithError("not agreed");
    }
}
BENCHMARK_CAPTURE(Agree, x25519, EVP_PKEY_X25519, 0)->Name("X25519 vs openssl");
BENCHMARK_CAPTURE(Agree, x448, EVP_PKEY_X448, 0)->Name("X448 vs openssl");
BENCHMARK_CAPTURE(Agree, p256, EVP_PKEY_EC, NID_X9_62_prime256v1)->Name("ECDH P-256 vs openssl");
BENCHMARK_CAPTURE(Agree, p384, EVP_PKEY_EC, NID_secp384r1)->Name("ECDH P-384 vs openssl");

constexpr std::array<std::uint8_t, 32> message = {1, 2, 3};

void SignMessage(benchmark::State& state, int kind)
{
    const Key key = NewKey(kind, 0);
    const MessageContext context(EVP_MD_CTX_new());
    EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, key.get());
    for (auto _ : state) {
        std::array<std::uint8_t, 114> signature;
        std::size_t length = signature.size();
        if (EVP_DigestSign(context.get(), signature.data(), &length, message.data(), message.size()) != 1)
            state.SkipWithError("not signed");
    }
}
BENCHMARK_CAPTURE(SignMessage, ed25519, EVP_PKEY_ED25519)->Name("Ed25519 sign vs openssl");
BENCHMARK_CAPTURE(SignMessage, ed448, EVP_PKEY_ED448)->Name("Ed448 sign vs openssl");

void VerifyMessage(benchmark::State& state, int kind)
{
    const Key key = NewKey(kind, 0);
    const MessageContext signing(EVP_MD_CTX_new());
    const MessageContext verifying(EVP_MD_CTX_new());
    std::array<std::uint8_t, 114> signature;
    std::size_t length = signature.size();
    EVP_DigestSignInit(signing.get(), nullptr, nullptr, nullptr, key.get());
    EVP_DigestSign(signing.get(), signature.data(), &length, message.data(), message.size());
    EVP_DigestVerifyInit(verifying.get(), nullptr, nullptr, nullptr, key.get());
    for (auto _ : state)
        if (EVP_DigestVerify(verifying.get(), signature.data(), length, message.data(), message.size()) != 1)
            state.SkipWithError("not verified");
}
BENCHMARK_CAPTURE(VerifyMessage, ed25519, EVP_PKEY_ED25519)->Name("Ed25519 verify vs openssl");
BENCHMARK_CAPTURE(VerifyMessage, ed448, EVP_PKEY_ED448)->Name("Ed448 verify vs openssl");

struct FreeOfGroup {
    void operator()(EC_GROUP* group) const { EC_GROUP_free(group); }
    void operator()(EC_POINT* point) const { EC_POINT_free(point); }
    void operator()(BIGNUM* number) const { BN_free(number); }
    void operator()(BN_CTX* context) const { BN_CTX_free(context); }
};
template <typename Kind>
using OfGroup = std::unique_ptr<Kind, FreeOfGroup>;

/// With both coordinates, as ours gives them.
void MultiplyPoint(benchmark::State& state, int nid)
{
    const OfGroup<EC_GROUP> group(EC_GROUP_new_by_curve_name(nid));
    const OfGroup<BN_CTX> context(BN_CTX_new());
    const OfGroup<BIGNUM> scalar(BN_new());
    const OfGroup<BIGNUM> x(BN_new());
    const OfGroup<BIGNUM> y(BN_new());
    const OfGroup<EC_POINT> point(EC_POINT_new(group.get()));
    const OfGroup<EC_POINT> product(EC_POINT_new(group.get()));
    BN_rand_range(scalar.get(), EC_GROUP_get0_order(group.get()));
    EC_POINT_mul(group.get(), point.get(), scalar.get(), nullptr, nullptr, context.get());
    BN_rand_range(scalar.get(), EC_GROUP_get0_order(group.get()));
    for (auto _ : state)
        if (EC_POINT_mul(group.get(), product.get(), nullptr, point.get(), scalar.get(), context.get()) != 1 ||
            EC_POINT_get_affine_coordinates(group.get(), product.get(), x.get(), y.get(), context.get()) != 1)
            state.SkipWithError("no product");
}
BENCHMARK_CAPTURE(MultiplyPoint, p256, NID_X9_62_prime256v1)->Name("point multiplication P-256 vs openssl's EC_POINT_mul");
BENCHMARK_CAPTURE(MultiplyPoint, p384, NID_secp384r1)->Name("point multiplication P-384 vs openssl's EC_POINT_mul");
BENCHMARK_CAPTURE(MultiplyPoint, bp256, NID_brainpoolP256r1)
    ->Name("point multiplication brainpoolP256r1 vs openssl's EC_POINT_mul");
BENCHMARK_CAPTURE(MultiplyPoint, bp512, NID_brainpoolP512r1)
    ->Name("point multiplication brainpoolP512r1 vs openssl's EC_POINT_mul");

} // namespace
