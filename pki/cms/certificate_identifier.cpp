#include "pki/cms/certificate_identifier.h"

#include "asn1/der/der_cursor.h"
#include "asn1/parser/parser.h"
#include "pki/x509/certificate.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/extensions.h"

namespace ccrypto {

namespace {

constexpr std::uint8_t integerIdentifier = 0x02;
constexpr std::uint8_t keyIdentifierTag = 0x80;

element ElementOf(std::span<const std::uint8_t> octets)
{
    return {octets.data(), static_cast<std::uint32_t>(octets.size())};
}

} // namespace

bool CertificateIdentifier::read(const elementNode* node)
{
    *this = {};
    if (node == nullptr)
        return false;
    const ElementNodePtr alone = node->clone();
    const element octets = CCryptoParser::ToDer(alone.get());
    if (const auto key = OnlyValue(octets.bytes(), keyIdentifierTag)) {
        keyIdentifier = ElementOf(*key);
        return !keyIdentifier.isEmpty();
    }
    const auto pair = OnlyValue(octets.bytes(), der_tag::sequence);
    if (!pair)
        return false;
    DerCursor cursor(*pair);
    issuer = ElementOf(cursor.read(der_tag::sequence).octets);
    serialNumber = ElementOf(cursor.read(integerIdentifier).value);
    return !issuer.isEmpty() && !serialNumber.isEmpty() && cursor.atEnd();
}

bool CertificateIdentifier::means(const CCrypto_X509_Certificate& certificate) const
{
    if (!isByKey())
        return Octets(certificate.serialNumber()) == serialNumber && certificate.issuer().GetDerEncodedElement() == issuer;
    const CCrypto_X509_Value* const extension = certificate.extensions().find(oids::subjectKeyIdentifier);
    if (extension == nullptr)
        return false;
    const std::optional<element> identifier = ReadSubjectKeyIdentifier(extension->content().bytes());
    return identifier && Octets(*identifier) == keyIdentifier;
}

} // namespace ccrypto
