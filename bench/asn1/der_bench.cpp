#include "asn1/der/der_parser.h"
#include "asn1/parser/parser.h"
#include "asn1/template/gen_parser.h"
#include "asn1/template/template_cache.h"
#include "asn1/template/template_match.h"
#include "bench/asn1/certificates.h"

#include <benchmark/benchmark.h>

using namespace ccrypto;

namespace {

constexpr const char* certificateTemplate =
    "SEQUENCE {SEQUENCE {CONTEXT_SPECIFIC[0] { INTEGER { VERSION } },INTEGER { SERIAL_NUMBER },SIGNATURE_ALGORITHM,"
    "SEQUENCE[CONSTRUCTED] { ISSUER },SEQUENCE { VALID_FROM_TAG { VALID_FROM }, VALID_TO_TAG { VALID_TO } },"
    "SEQUENCE[CONSTRUCTED] { SUBJECT },PUBLIC_KEY,CONTEXT_SPECIFIC[3,CONSTRUCTED] { SEQUENCE[CONSTRUCTED] { EXTENSIONS } }} "
    "SIGNATURE_ALGORITHM_2, BIT_STRING { SIGNATURE } }";
constexpr const char* signerInfoTemplate =
    "SEQUENCE {INTEGER = version;signerIdentifier,digestAlgorithm,CONTEXT_SPECIFIC[0, CONSTRUCTED](OPTIONAL)"
    "{authenticatedAttributes}signatureAlgorithm,OCTET_STRING { signature }CONTEXT_SPECIFIC[1, CONSTRUCTED](OPTIONAL)"
    "{unAuthenticatedAttributes}}";

void Decode(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(CCryptoDERParser().Decode(Certificate().bytes()));
    state.counters["bytes"] = Certificate().length();
}
BENCHMARK(Decode)->Name("certificate, DER to tree");

void Encode(benchmark::State& state)
{
    const ElementNodePtr tree = CCryptoDERParser().Decode(Certificate().bytes());
    // What is signed: the first item, which is copied so that its siblings are left out.
    const ElementNodePtr signedPart = tree->content()->clone();
    for (auto _ : state)
        benchmark::DoNotOptimize(CCryptoParser::ToDer(signedPart.get()));
}
BENCHMARK(Encode)->Name("certificate, tree to DER");

void Match(benchmark::State& state)
{
    const ElementNodePtr tree = CCryptoDERParser().Decode(Certificate().bytes());
    CCryptoTemplateMatch match;
    for (auto _ : state) {
        if (!match.Match(ParsedTemplate(certificateTemplate), tree.get()))
            state.SkipWithError("the certificate does not match");
    }
}
BENCHMARK(Match)->Name("certificate, template match");
BENCHMARK(Decode)->Name("certificate, template match vs its decoding");

constexpr std::uint32_t largeList = 10000000;
constexpr std::uint32_t smallList = 100000;

void DecodeAll(benchmark::State& state, const element& der)
{
    for (auto _ : state) {
        for (std::uint64_t done = 0; done < largeList; done += der.length())
            benchmark::DoNotOptimize(CCryptoDERParser().Decode(der.bytes()));
    }
}

void DecodeLarge(benchmark::State& state)
{
    DecodeAll(state, RevocationList(largeList));
}
void DecodeSmall(benchmark::State& state)
{
    DecodeAll(state, RevocationList(smallList));
}
void DecodeAsMuch(benchmark::State& state)
{
    DecodeAll(state, Certificate());
}
BENCHMARK(DecodeLarge)->Name("10 MB revocation list, DER to tree")->Unit(benchmark::kMillisecond);
BENCHMARK(DecodeAsMuch)->Name("10 MB revocation list, DER to tree vs certificates")->Unit(benchmark::kMillisecond);
BENCHMARK(DecodeLarge)->Name("10 MB revocation list at once")->Unit(benchmark::kMillisecond);
BENCHMARK(DecodeSmall)->Name("10 MB revocation list at once vs in lists of 100 kB")->Unit(benchmark::kMillisecond);

void DecodeWithReasons(benchmark::State& state)
{
    DecodeAll(state, RevocationList(largeList, true));
}
BENCHMARK(DecodeWithReasons)->Name("10 MB revocation list with reasons, DER to tree")->Unit(benchmark::kMillisecond);
BENCHMARK(DecodeAsMuch)->Name("10 MB revocation list with reasons, DER to tree vs certificates")->Unit(benchmark::kMillisecond);

void ParseTemplate(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(CCryptoGENParser().Parse(signerInfoTemplate));
}
BENCHMARK(ParseTemplate)->Name("SignerInfo template, parsing");

} // namespace
