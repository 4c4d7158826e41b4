#include "crypto/ec/ec.h"
#include "pki/keys/ec_key_pair.h"
#include "pki/validation/path_validation.h"
#include "pki/x509/certificate_builder.h"
#include "pki/x509/extension_builder.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string>

using namespace ccrypto;

namespace {

constexpr std::uint32_t layers = 32;

struct Authority {
    element name;
    std::unique_ptr<ICryptoKeyPair> key = std::make_unique<CCryptoECKeyPair>(CCryptoEC::Generate(algorithm::prime256v1));
};

/// Two authorities of one name.
using Layer = std::array<Authority, 2>;

Layer MakeLayer(std::uint32_t number)
{
    // CN=Layer nn
    std::string name = "\x30\x13\x31\x11\x30\x0F\x06\x03\x55\x04\x03\x0C\x08Layer ";
    name += {static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
    Layer layer;
    for (Authority& authority : layer)
        authority.name = element(name);
    return layer;
}

CertificatePtr Issue(const Authority& subject, const Authority& issuer, ExtensionPtr extension = nullptr)
{
    CertificateFields fields;
    fields.serialNumber = NewSerialNumber();
    fields.issuer = issuer.name;
    fields.subject = subject.name;
    fields.validFrom = CCryptoDateTime(CCryptoString("20260101000000Z"));
    fields.validTo = CCryptoDateTime(CCryptoString("20360101000000Z"));
    fields.publicKeyInfo = subject.key->publicKeyInfo();
    fields.extensions.add(BuildBasicConstraints({true, {}}));
    if (extension != nullptr)
        fields.extensions.add(std::move(extension));
    return LoadCertificate(IssueCertificate(fields, *issuer.key, algorithm::sha256).bytes());
}

/// Each authority of a layer is certified by both of the layer above: 2^32 chains from the subject to the top.
struct CrossSigned {
    CrossSigned()
    {
        options.at = CCryptoDateTime(CCryptoString("20270101000000Z"));
        Layer layer = MakeLayer(0);
        subject = Issue(layer[0], layer[1]);
        for (std::uint32_t number = 1; number <= layers; ++number) {
            Layer above = MakeLayer(number);
            for (const Authority& authority : layer)
                for (const Authority& issuer : above)
                    pool.add(Issue(authority, issuer), false);
            layer = std::move(above);
        }
        top = std::move(layer[0]);
    }

    CertificatePtr subject;
    CertificatePool pool;
    Authority top;
    ValidationOptions options;
};

void SearchInVain(benchmark::State& state, bool isAnchored)
{
    CrossSigned web;
    if (isAnchored) {
        // Every chain ends at this anchor, whose name constraints permit the names in C=SE alone.
        const std::uint8_t constraints[] = {0x30, 0x15, 0xA0, 0x13, 0x30, 0x11, 0xA4, 0x0F, 0x30, 0x0D, 0x31, 0x0B,
                                            0x30, 0x09, 0x06, 0x03, 0x55, 0x04, 0x06, 0x13, 0x02, 'S',  'E'};
        web.pool.add(Issue(web.top, web.top, BuildExtension(oids::nameConstraints, element(constraints, sizeof constraints), true)),
                     true);
    }
    const Reason expected = isAnchored ? Reason::limit : Reason::noPath;
    for (auto _ : state)
        if (ValidateCertificate(web.subject, web.pool, {}, web.options).reason != expected)
            state.SkipWithError("another verdict");
}
BENCHMARK_CAPTURE(SearchInVain, unanchored, false)->Name("32 layers of cross-signs, no anchor");
BENCHMARK_CAPTURE(SearchInVain, anchored, true)->Name("32 layers of cross-signs, no valid path");

void TenMilliseconds(benchmark::State& state)
{
    for (auto _ : state)
        state.SetIterationTime(0.01);
}
BENCHMARK(TenMilliseconds)->Name("32 layers of cross-signs, no anchor vs 10 ms")->UseManualTime()->Iterations(1);
BENCHMARK(TenMilliseconds)->Name("32 layers of cross-signs, no valid path vs 10 ms")->UseManualTime()->Iterations(1);

} // namespace
