#include "asn1/der_parser.h"
#include "asn1/gen_parser.h"
#include "asn1/parser.h"
#include "asn1/template_cache.h"
#include "asn1/template_match.h"
#include "bench/asn1/certificates.h"

#include <benchmark/benchmark.h>

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

/// Each round takes the next certificate; the time is that of one of the middle size.
const element& Next(std::size_t& index)
{
    const std::vector<element>& all = Certificates();
    return all[index++ % all.size()];
}

bool HasCertificates(benchmark::State& state)
{
    if (Certificates().empty())
        state.SkipWithError("the system has no trust store");
    return !Certificates().empty();
}

void Decode(benchmark::State& state)
{
    if (!HasCertificates(state))
        return;
    std::size_t index = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(CCryptoDERParser().Decode(Next(index).bytes()));
}
BENCHMARK(Decode)->Name("certificate, DER to tree");

void Encode(benchmark::State& state)
{
    if (!HasCertificates(state))
        return;
    std::vector<ElementNodePtr> trees;
    for (const element& each : Certificates())
        trees.push_back(CCryptoDERParser().Decode(each.bytes()));
    std::size_t index = 0;
    // What is signed: the first item.
    for (auto _ : state)
        benchmark::DoNotOptimize(CCryptoParser::ToDer(trees[index++ % trees.size()]->content()));
}
BENCHMARK(Encode)->Name("certificate, tree to DER");

void Match(benchmark::State& state)
{
    if (!HasCertificates(state))
        return;
    std::vector<ElementNodePtr> trees;
    for (const element& each : Certificates())
        trees.push_back(CCryptoDERParser().Decode(each.bytes()));
    std::size_t index = 0;
    std::size_t matched = 0;
    CCryptoTemplateMatch match;
    for (auto _ : state)
        matched += match.Match(ParsedTemplate(certificateTemplate), trees[index++ % trees.size()].get()) ? 1u : 0u;
    if (matched == 0)
        state.SkipWithError("no certificate matches");
}
BENCHMARK(Match)->Name("certificate, template match");
BENCHMARK(Decode)->Name("certificate, template match vs its decoding");

/// The same number of bytes as the list, in certificates.
constexpr std::uint32_t listEntries = 200000;

void DecodeList(benchmark::State& state)
{
    static const element list = RevocationList(listEntries);
    for (auto _ : state)
        benchmark::DoNotOptimize(CCryptoDERParser().Decode(list.bytes()));
    state.counters["bytes"] = list.length();
}
BENCHMARK(DecodeList)->Name("10 MB revocation list, DER to tree")->Unit(benchmark::kMillisecond);

void DecodeAsMuch(benchmark::State& state)
{
    if (!HasCertificates(state))
        return;
    const std::uint64_t bytes = RevocationList(listEntries).length();
    std::size_t index = 0;
    for (auto _ : state) {
        for (std::uint64_t done = 0; done < bytes;) {
            const element& each = Next(index);
            benchmark::DoNotOptimize(CCryptoDERParser().Decode(each.bytes()));
            done += each.length();
        }
    }
}
BENCHMARK(DecodeAsMuch)->Name("10 MB revocation list, DER to tree vs certificates of that size")->Unit(benchmark::kMillisecond);

void ParseTemplate(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(CCryptoGENParser().Parse(signerInfoTemplate));
}
BENCHMARK(ParseTemplate)->Name("SignerInfo template, parsing");

} // namespace
