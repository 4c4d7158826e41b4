#include "fuzz/require.h"
#include "pki/x509/certificate.h"
#include "pki/x509/name.h"

using namespace ccrypto;

namespace {

bool IsShownText(std::string_view text)
{
    for (const char character : text) {
        if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F)
            return false;
    }
    return true;
}

/// A name prints the same from its octets and from its values, and without controls; it compares as itself.
void CheckName(const CCrypto_X509_ValueList& name, bool isDer)
{
    const element octets = name.GetDerEncodedElement();
    const CCryptoString text = NameText(name);
    Require(IsShownText(text.view()));
    const auto comparable = ComparableName::Read(octets.bytes());
    if (!isDer)
        return;
    Require(comparable && comparable->isWithin(*comparable) && comparable->isEmpty() == name.isEmpty());
    Require(NameText(octets.bytes()) == text);
}

} // namespace

/// What loads as DER encodes to the same octets; what does not leaves the object empty; the fields write a certificate that loads.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const element der(data, static_cast<std::uint32_t>(size));
    CCrypto_X509_Certificate certificate;
    if (!certificate.LoadCertificate(der)) {
        Require(!certificate.isLoaded() && certificate.publicKey() == nullptr && certificate.failure() != LoadFailure::none);
        return 0;
    }
    CCryptoParser parser;
    Require(parser.Load_DER_Memory(der) && parser.isDer() == certificate.isDer());
    Require(!certificate.isDer() || parser.ToDer() == der);
    Require(certificate.GetCertificate() == der);
    if (certificate.verifySignature(*certificate.publicKey()) == SignatureResult::good)
        Require(certificate.isDer() && certificate.algorithmsAgree());
    CheckName(certificate.issuer(), certificate.isDer());
    CheckName(certificate.subject(), certificate.isDer());
    for (const auto& extension : certificate.extensions().values())
        Require(!extension->oid().isNone() && extension->value() != nullptr);

    const element signature = certificate.signature();
    const element serialNumber = certificate.serialNumber();
    certificate.setSignature(signature);
    const element built = certificate.GetCertificate();
    CCrypto_X509_Certificate again;
    if (certificate.isLoaded() || built.isEmpty())
        return 0;
    Require(again.LoadCertificate(built) && again.signature() == signature && again.serialNumber() == serialNumber);
    return 0;
}
