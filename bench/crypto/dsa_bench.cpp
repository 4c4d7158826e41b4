#include "bench/crypto/dsa_numbers.h"
#include "crypto/dsa/dsa.h"

#include <benchmark/benchmark.h>

using namespace ccrypto;

namespace {

element FromHex(const char* digits)
{
    return CCryptoBigInteger::FromHex(digits).toBytes();
}

void VerifyDSA(benchmark::State& state)
{
    const auto key = CCryptoDSA::FromPublic({FromHex(dsa_numbers::prime), FromHex(dsa_numbers::order),
                                             FromHex(dsa_numbers::generator), FromHex(dsa_numbers::publicValue)});
    const element signature = FromHex(dsa_numbers::signature);
    for (auto _ : state)
        if (!key->verifyHash(dsa_numbers::digest, signature.bytes(), SignatureForm::der))
            state.SkipWithError("not verified");
}
BENCHMARK(VerifyDSA)->Name("DSA-2048 verify");

} // namespace
