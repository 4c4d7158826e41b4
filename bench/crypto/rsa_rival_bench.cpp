#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <array>
#include <map>
#include <memory>
#include <vector>

namespace {

struct Free {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
};
using Key = std::unique_ptr<EVP_PKEY, Free>;
using Context = std::unique_ptr<EVP_PKEY_CTX, Free>;

constexpr std::array<unsigned char, 32> digest = {1, 2, 3};

EVP_PKEY* KeyOf(std::int64_t bits)
{
    static std::map<std::int64_t, Key> keys;
    Key& key = keys[bits];
    if (key == nullptr)
        key.reset(EVP_RSA_gen(static_cast<unsigned>(bits)));
    return key.get();
}

Context Ready(EVP_PKEY* key, int (*init)(EVP_PKEY_CTX*))
{
    Context context(EVP_PKEY_CTX_new(key, nullptr));
    init(context.get());
    EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING);
    EVP_PKEY_CTX_set_signature_md(context.get(), EVP_sha256());
    return context;
}

std::vector<unsigned char> Signature(EVP_PKEY_CTX* context)
{
    std::vector<unsigned char> signature(1024);
    std::size_t length = signature.size();
    if (EVP_PKEY_sign(context, signature.data(), &length, digest.data(), digest.size()) != 1)
        length = 0;
    signature.resize(length);
    return signature;
}

void Sign(benchmark::State& state)
{
    const Context context = Ready(KeyOf(state.range(0)), EVP_PKEY_sign_init);
    for (auto _ : state)
        if (Signature(context.get()).empty())
            state.SkipWithError("no signature");
}
BENCHMARK(Sign)->Name("RSA sign vs openssl")->Arg(2048)->Arg(3072)->Arg(4096);

void Verify(benchmark::State& state)
{
    EVP_PKEY* const key = KeyOf(state.range(0));
    const std::vector<unsigned char> signature = Signature(Ready(key, EVP_PKEY_sign_init).get());
    const Context context = Ready(key, EVP_PKEY_verify_init);
    for (auto _ : state)
        if (EVP_PKEY_verify(context.get(), signature.data(), signature.size(), digest.data(), digest.size()) != 1)
            state.SkipWithError("not verified");
}
BENCHMARK(Verify)->Name("RSA verify vs openssl")->Arg(2048)->Arg(3072)->Arg(4096);

void Generate(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Key(EVP_RSA_gen(2048)));
}
BENCHMARK(Generate)->Name("RSA-2048 key generation vs openssl")->Unit(benchmark::kMillisecond);

} // namespace
