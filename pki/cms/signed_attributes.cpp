#include "pki/cms/signed_attributes.h"

#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"
#include "pki/cms/attributes.h"
#include "pki/cms/filled_template.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/x509_time.h"

#include <string_view>

namespace ccrypto {

namespace {

constexpr const char* contentTypeTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.9.3\",SET{OBJECT_IDENTIFIER=\"1.2.840.113549.1.7.1\"}}";
constexpr const char* signingTimeTemplate = "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.9.5\",SET{UTCTime{signingTime}}}";
constexpr const char* algorithmProtectionTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.9.52\",SET{SEQUENCE{digestAlgorithm,CONTEXT_SPECIFIC [ 1 ] { encryptionAID }}}}";
constexpr const char* messageDigestTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.9.4\",SET{OCTET_STRING{messageDigest}}}";
constexpr const char* signingCertificateTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.9.16.2.47\",SET{SEQUENCE{SEQUENCE{SEQUENCE{AlgorithmIdentifier,"
    "OCTET_STRING{certHash},SEQUENCE(OPTIONAL){SEQUENCE{CONTEXT_SPECIFIC(OPTIONAL)[0]{otherName},"
    "CONTEXT_SPECIFIC(OPTIONAL)[1]{rfc822Name},CONTEXT_SPECIFIC(OPTIONAL)[2]{dNSName},CONTEXT_SPECIFIC(OPTIONAL)[3]{x400Address},"
    "CONTEXT_SPECIFIC(OPTIONAL)[4]{directoryName},CONTEXT_SPECIFIC(OPTIONAL)[5]{ediPartyName},"
    "CONTEXT_SPECIFIC(OPTIONAL)[6]{uniformResourceIdentifier},CONTEXT_SPECIFIC(OPTIONAL)[7]{iPAddress},"
    "CONTEXT_SPECIFIC(OPTIONAL)[8]{registeredID}},INTEGER{serialNumber}}}}}}}";
constexpr const char* pdfRevocationTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113583.1.1.8\",SET{SEQUENCE{"
    "CONTEXT_SPECIFIC(OPTIONAL)[0]{SEQUENCE[CONSTRUCTED]{adobeRevocationInfoArchivalCRL}}"
    "CONTEXT_SPECIFIC(OPTIONAL)[1]{SEQUENCE[CONSTRUCTED]{adobeRevocationInfoArchivalOcspResponse}}}}}";
constexpr const char* etsiRevocationTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.9.16.2.22\",SET{SEQUENCE{"
    "CONTEXT_SPECIFIC(OPTIONAL)[0]{SEQUENCE[CONSTRUCTED]{etsiRevocationInfoArchivalCRL}}"
    "CONTEXT_SPECIFIC(OPTIONAL)[1]{SEQUENCE[CONSTRUCTED]{etsiRevocationInfoArchivalOcspResponse}}}}}";

constexpr const char* attributesTemplate = "SET[CONSTRUCTED]{ authenticatedAttributes }";

constexpr std::string_view utcTimeWord = "UTCTime";

/// Of several attributes: what is not empty is appended.
bool Add(element attribute, element& attributes)
{
    attributes.append(attribute.data(), attribute.length());
    return !attribute.isEmpty();
}

element SigningTime(const CCryptoDateTime& time)
{
    CCryptoAutoLogger logger("SigningTime");
    static const DerTemplate layout(signingTimeTemplate);
    if (utcTimeWord != X509TimeTypeWord(time))
        return logger.fail(element(), "The signing time is not in the years 1950 to 2049, which a UTCTime can say");
    const element text(X509TimeText(time).view());
    FilledTemplate attribute(layout);
    attribute.putOctets("signingTime", text.bytes());
    logger.setResult(true);
    return attribute.toDer();
}

/// The tag of the signature algorithm is implicit (RFC 6211, 2): it stands for the SEQUENCE, whose items go into it.
element AlgorithmProtection(const SignerAttributes& attributes)
{
    static const DerTemplate layout(algorithmProtectionTemplate);
    const auto signatureAlgorithm = OnlyValue(attributes.protectedSignatureAlgorithm.bytes(), der_tag::sequence);
    if (!signatureAlgorithm)
        return {};
    FilledTemplate attribute(layout);
    attribute.putElements("digestAlgorithm", attributes.digestAlgorithm.bytes());
    attribute.putElements("encryptionAID", *signatureAlgorithm);
    return attribute.toDer();
}

element MessageDigest(const element& digest)
{
    static const DerTemplate layout(messageDigestTemplate);
    FilledTemplate attribute(layout);
    attribute.putOctets("messageDigest", digest.bytes());
    return attribute.toDer();
}

/// The algorithm is written always, the default of SHA-256 (RFC 5035, 4) among them.
element SigningCertificate(const SignerAttributes& attributes)
{
    static const DerTemplate layout(signingCertificateTemplate);
    const std::unique_ptr<ICryptoHash> hash = ICryptoHash::Create(attributes.hash);
    if (hash == nullptr)
        return {};
    const CCrypto_X509_Certificate& signer = *attributes.signer;
    const element digest = hash->digestOf(signer.der().bytes());
    const element issuer = signer.issuer().GetDerEncodedElement();
    FilledTemplate attribute(layout);
    attribute.putElements("AlgorithmIdentifier", attributes.digestAlgorithm.bytes());
    attribute.putOctets("certHash", digest.bytes());
    attribute.putElements("directoryName", issuer.bytes());
    attribute.putOctets("serialNumber", signer.serialNumber().bytes());
    return attribute.toDer();
}

/// The response goes before the list.
element RevocationInformation(const DerTemplate& layout, const char* listName, const char* responseName,
                              const SignerAttributes& attributes, const element& response)
{
    FilledTemplate attribute(layout);
    if (attributes.ocspResponse.isEmpty())
        attribute.putElements(listName, attributes.crl.bytes());
    else
        attribute.putElements(responseName, response.bytes());
    return attribute.toDer();
}

bool HasRevocation(const SignerAttributes& attributes, RevocationEmbedding embedding)
{
    return attributes.embedding == embedding && !(attributes.ocspResponse.isEmpty() && attributes.crl.isEmpty());
}

element SetOf(const element& attributes)
{
    static const DerTemplate layout(attributesTemplate);
    FilledTemplate set(layout);
    set.putElements("authenticatedAttributes", attributes.bytes());
    return set.toDer();
}

} // namespace

element BasicResponseOf(const element& ocspResponse)
{
    static const Oid basicResponse = Oid::FromDotted("1.3.6.1.5.5.7.48.1.1");
    DerCursor response(OnlyValue(ocspResponse.bytes(), der_tag::sequence).value_or(std::span<const std::uint8_t>()));
    const DerItem status = response.read(0x0A);
    DerCursor bytes(OnlyValue(response.read(0xA0).value, der_tag::sequence).value_or(std::span<const std::uint8_t>()));
    const DerItem type = bytes.read(0x06);
    const DerItem octets = bytes.read(0x04);
    const bool isBasic = status.value.size() == 1 && status.value[0] == 0 && basicResponse == type.value && response.atEnd() &&
                         bytes.atEnd() && OnlyValue(octets.value, der_tag::sequence).has_value();
    return isBasic ? element(octets.value.data(), static_cast<std::uint32_t>(octets.value.size())) : element();
}

element BuildSignedAttributes(const SignerAttributes& attributes)
{
    CCryptoAutoLogger logger("BuildSignedAttributes");
    static const DerTemplate contentType(contentTypeTemplate);
    static const DerTemplate pdfRevocation(pdfRevocationTemplate);
    element list;
    bool isBuilt = Add(FilledTemplate(contentType).toDer(), list);
    if (attributes.signingTime.isValid())
        isBuilt = isBuilt && Add(SigningTime(attributes.signingTime), list);
    if (!attributes.protectedSignatureAlgorithm.isEmpty())
        isBuilt = isBuilt && Add(AlgorithmProtection(attributes), list);
    isBuilt = isBuilt && Add(MessageDigest(attributes.messageDigest), list) && Add(SigningCertificate(attributes), list);
    if (HasRevocation(attributes, RevocationEmbedding::pdf))
        isBuilt =
            isBuilt && Add(RevocationInformation(pdfRevocation, "adobeRevocationInfoArchivalCRL",
                                                 "adobeRevocationInfoArchivalOcspResponse", attributes, attributes.ocspResponse),
                           list);
    const element set = isBuilt ? SetOf(list) : element();
    if (set.isEmpty())
        return logger.fail(element());
    if (!(SortedSet(set) == set))
        return logger.fail(element(), "The signed attributes would not be in the order of DER, which some verifiers hash them in");
    logger.setResult(true);
    return set;
}

bool BuildUnsignedAttributes(const SignerAttributes& attributes, element& built)
{
    CCryptoAutoLogger logger("BuildUnsignedAttributes");
    static const DerTemplate etsiRevocation(etsiRevocationTemplate);
    built = {};
    if (!HasRevocation(attributes, RevocationEmbedding::etsi))
        return logger.setResult(true);
    const element response = BasicResponseOf(attributes.ocspResponse);
    if (!attributes.ocspResponse.isEmpty() && response.isEmpty())
        return logger.fail(false, "The OCSP response holds no basic response");
    built = SetOf(RevocationInformation(etsiRevocation, "etsiRevocationInfoArchivalCRL", "etsiRevocationInfoArchivalOcspResponse",
                                        attributes, response));
    return logger.setResult(!built.isEmpty());
}

} // namespace ccrypto
