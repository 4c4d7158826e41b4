#include "pki/cms/signed_attributes.h"

#include "asn1/der/der_cursor.h"
#include "asn1/tree/item_list.h"
#include "asn1/types/algorithm_identifier.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"
#include "pki/cms/tree_filling.h"
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

constexpr std::string_view utcTimeWord = "UTCTime";

/// One attribute made of its template; null when it was not filled.
ElementNodePtr AttributeTree(const char* templateText, const auto& fill)
{
    CCryptoParser parser = TemplateToFill(templateText);
    return fill(parser) ? parser.takeRoot() : nullptr;
}

ElementNodePtr DigestAlgorithmTree(algorithm::Id hash)
{
    return CCryptoAlgorithmIdentifier(hash, false).BuildTree();
}

ElementNodePtr SigningTimeTree(const CCryptoDateTime& time)
{
    CCryptoAutoLogger logger("SigningTimeTree");
    if (utcTimeWord != X509TimeTypeWord(time))
        return logger.fail(ElementNodePtr(), "The signing time is not in the years 1950 to 2049, which a UTCTime can say");
    logger.setResult(true);
    return AttributeTree(signingTimeTemplate,
                         [&](CCryptoParser& parser) { return parser.fill("signingTime", element(X509TimeText(time).view())); });
}

/// The tag of the signature algorithm is implicit (RFC 6211, 2): it stands for the SEQUENCE, whose items go into it.
ElementNodePtr AlgorithmProtectionTree(const SignerAttributes& attributes)
{
    return AttributeTree(algorithmProtectionTemplate, [&](CCryptoParser& parser) {
        return FillTree(parser, "digestAlgorithm", DigestAlgorithmTree(attributes.hash)) &&
               FillContentOf(parser, "encryptionAID", attributes.protectedSignatureAlgorithm);
    });
}

/// The algorithm is written always, the default of SHA-256 (RFC 5035, 4) among them.
ElementNodePtr SigningCertificateTree(const SignerAttributes& attributes)
{
    const std::unique_ptr<ICryptoHash> hash = ICryptoHash::Create(attributes.hash);
    if (hash == nullptr)
        return nullptr;
    const CCrypto_X509_Certificate& signer = *attributes.signer;
    return AttributeTree(signingCertificateTemplate, [&](CCryptoParser& parser) {
        return FillTree(parser, "AlgorithmIdentifier", DigestAlgorithmTree(attributes.hash)) &&
               parser.fill("certHash", hash->digestOf(signer.der().bytes())) &&
               FillDer(parser, "directoryName", signer.issuer().GetDerEncodedElement()) &&
               parser.fill("serialNumber", Octets(signer.serialNumber()));
    });
}

ElementNodePtr PdfRevocationTree(const SignerAttributes& attributes)
{
    return AttributeTree(pdfRevocationTemplate, [&](CCryptoParser& parser) {
        return attributes.ocspResponse.isEmpty()
                   ? parser.fill("adobeRevocationInfoArchivalCRL", Octets(attributes.crl))
                   : parser.fill("adobeRevocationInfoArchivalOcspResponse", Octets(attributes.ocspResponse));
    });
}

bool HasRevocation(const SignerAttributes& attributes, RevocationEmbedding embedding)
{
    return attributes.embedding == embedding && !(attributes.ocspResponse.isEmpty() && attributes.crl.isEmpty());
}

std::unique_ptr<CCryptoPKCS7Attributes> AttributesOf(const elementNode* first)
{
    auto attributes = std::make_unique<CCryptoPKCS7Attributes>();
    return attributes->ParseItems(first) ? std::move(attributes) : nullptr;
}

} // namespace

element BasicResponseOf(const element& ocspResponse)
{
    static const Oid basicResponse = Oid::FromDotted("1.3.6.1.5.5.7.48.1.1");
    DerCursor response(OnlyValue(ocspResponse.bytes(), 0x30).value_or(std::span<const std::uint8_t>()));
    const DerItem status = response.read(0x0A);
    DerCursor bytes(OnlyValue(response.read(0xA0).value, 0x30).value_or(std::span<const std::uint8_t>()));
    const DerItem type = bytes.read(0x06);
    const DerItem octets = bytes.read(0x04);
    const bool isBasic = status.value.size() == 1 && status.value[0] == 0 && basicResponse == type.value && response.atEnd() &&
                         bytes.atEnd() && OnlyValue(octets.value, 0x30).has_value();
    return isBasic ? element(octets.value.data(), static_cast<std::uint32_t>(octets.value.size())) : element();
}

std::unique_ptr<CCryptoPKCS7Attributes> BuildSignedAttributes(const SignerAttributes& attributes)
{
    CCryptoAutoLogger logger("BuildSignedAttributes");
    ItemList list;
    bool isBuilt = true;
    const auto add = [&](ElementNodePtr tree) {
        isBuilt = isBuilt && tree != nullptr;
        if (tree != nullptr)
            list.add(std::move(tree));
    };
    add(AttributeTree(contentTypeTemplate, [](CCryptoParser& parser) { return !parser.isEmpty(); }));
    if (attributes.signingTime.isValid())
        add(SigningTimeTree(attributes.signingTime));
    if (!attributes.protectedSignatureAlgorithm.isEmpty())
        add(AlgorithmProtectionTree(attributes));
    add(AttributeTree(messageDigestTemplate,
                      [&](CCryptoParser& parser) { return parser.fill("messageDigest", Octets(attributes.messageDigest)); }));
    add(SigningCertificateTree(attributes));
    if (HasRevocation(attributes, RevocationEmbedding::pdf))
        add(PdfRevocationTree(attributes));
    if (!isBuilt)
        return logger.fail(std::unique_ptr<CCryptoPKCS7Attributes>());

    std::unique_ptr<CCryptoPKCS7Attributes> built = AttributesOf(list.first.get());
    if (built == nullptr)
        return logger.fail(std::unique_ptr<CCryptoPKCS7Attributes>());
    const element set = built->encodedSet();
    if (!(SortedSet(set) == set))
        return logger.fail(std::unique_ptr<CCryptoPKCS7Attributes>(),
                           "The signed attributes would not be in the order of DER, which some verifiers hash them in");
    logger.setResult(true);
    return built;
}

bool BuildUnsignedAttributes(const SignerAttributes& attributes, std::unique_ptr<CCryptoPKCS7Attributes>& built)
{
    CCryptoAutoLogger logger("BuildUnsignedAttributes");
    built.reset();
    if (!HasRevocation(attributes, RevocationEmbedding::etsi))
        return logger.setResult(true);
    const element response = BasicResponseOf(attributes.ocspResponse);
    if (!attributes.ocspResponse.isEmpty() && response.isEmpty())
        return logger.fail(false, "The OCSP response holds no basic response");
    const ElementNodePtr tree = AttributeTree(etsiRevocationTemplate, [&](CCryptoParser& parser) {
        return response.isEmpty() ? parser.fill("etsiRevocationInfoArchivalCRL", Octets(attributes.crl))
                                  : parser.fill("etsiRevocationInfoArchivalOcspResponse", response);
    });
    built = AttributesOf(tree.get());
    return logger.setResult(built != nullptr);
}

} // namespace ccrypto
