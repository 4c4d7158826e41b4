#include "pki/cms/signed_message_writing.h"

#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/cms/filled_template.h"
#include "pki/x509/der_tags.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr const char* signerInfoToSignTemplate =
    "SEQUENCE {INTEGER = "
    "1;SEQUENCE{SEQUENCE[CONSTRUCTED]{issuer},INTEGER{serialNumber}};digestAlgorithm,CONTEXT_SPECIFIC[0]{authenticatedAttributes}"
    "digestEncryptionAlgorithm,OCTET_STRING { encryptedDigest "
    "}CONTEXT_SPECIFIC[1,CONSTRUCTED](OPTIONAL){unauthenticatedAttributes}}";
constexpr const char* signedDataToSignTemplate =
    "SEQUENCE{INTEGER =  1,SET[CONSTRUCTED]{ digestAlgorithm },SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.7.1\","
    "toBeSignedContentInfo},CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL) { ExtendedCertificatesAndCertificates },"
    "CONTEXT_SPECIFIC[1,CONSTRUCTED](OPTIONAL) { CertificateRevocationLists },SET { signerInfos }}";
constexpr const char* embeddedContentTemplate = "CONTEXT_SPECIFIC[0](OPTIONAL){ OCTET_STRING { content }},";
constexpr const char* signedMessageTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.7.2\",CONTEXT_SPECIFIC[0] { signedData }}";

element JoinSorted(std::vector<OctetSpan> items)
{
    std::ranges::sort(items, [](OctetSpan left, OctetSpan right) { return std::ranges::lexicographical_compare(left, right); });
    std::size_t length = 0;
    for (const OctetSpan item : items)
        length += item.size();
    element joined;
    joined.reserve(static_cast<std::uint32_t>(std::min<std::size_t>(length, UINT32_MAX)));
    for (const OctetSpan item : items)
        joined.append(item.data(), static_cast<std::uint32_t>(item.size()));
    return joined;
}

} // namespace

element WriteSigner(const SignerOctets& signer)
{
    CCryptoAutoLogger logger("WriteSigner");
    static const DerTemplate layout(signerInfoToSignTemplate);
    const auto issuer = OnlyValue(signer.issuer, der_tag::sequence);
    const auto attributes = OnlyValue(signer.signedAttributes, der_tag::set);
    const auto unsignedAttributes = OnlyValue(signer.unsignedAttributes, der_tag::set);
    if (!issuer || !attributes || (!unsignedAttributes && !signer.unsignedAttributes.empty()))
        return logger.fail(element(), "A signer is written with issuer, serial number and signed attributes");
    FilledTemplate filled(layout);
    filled.putElements("issuer", *issuer);
    filled.putOctets("serialNumber", signer.serialNumber);
    filled.putElements("digestAlgorithm", signer.digestAlgorithm);
    filled.putElements("authenticatedAttributes", *attributes);
    filled.putElements("digestEncryptionAlgorithm", signer.signatureAlgorithm);
    filled.putOctets("encryptedDigest", signer.signature);
    if (unsignedAttributes)
        filled.putElements("unauthenticatedAttributes", *unsignedAttributes);
    element der = filled.toDer();
    logger.setResult(!der.isEmpty());
    return der;
}

element WriteSignedData(const SignedDataOctets& data, SignedDataForm form)
{
    static const DerTemplate dataLayout(signedDataToSignTemplate), contentLayout(embeddedContentTemplate),
        messageLayout(signedMessageTemplate);
    const element certificates = JoinSorted(data.certificates);
    const element crls = JoinSorted(data.crls);

    FilledTemplate filled(dataLayout), content(contentLayout);
    filled.putElements("digestAlgorithm", data.digestAlgorithms);
    if (data.content) {
        content.putOctets("content", *data.content);
        filled.putTemplate("toBeSignedContentInfo", content);
    }
    if (!certificates.isEmpty())
        filled.putElements("ExtendedCertificatesAndCertificates", certificates.bytes());
    if (!crls.isEmpty())
        filled.putElements("CertificateRevocationLists", crls.bytes());
    filled.putElements("signerInfos", data.signerInfos);
    if (form == SignedDataForm::bare)
        return filled.toDer();
    FilledTemplate message(messageLayout);
    message.putTemplate("signedData", filled);
    return message.toDer();
}

} // namespace ccrypto
