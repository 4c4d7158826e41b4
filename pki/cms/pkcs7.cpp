#include "pki/cms/pkcs7.h"

#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/failure.h"
#include "crypto/hash/hash.h"
#include "pki/cms/ber_gathering.h"
#include "pki/cms/document.h"
#include "pki/cms/signer_check.h"
#include "pki/x509/crl.h"
#include "pki/x509/signature.h"

#include <algorithm>
#include <iterator>
#include <string_view>

using namespace ccrypto;

namespace {

constexpr std::string_view pkcs1KeyName = "RSA";

/// The algorithm of a signature, beside that of the digest. That of RSA leaves the hash to the digest's.
struct SignatureChoice {
    algorithm::Id key;
    algorithm::Id hash;
    algorithm::Id signature;
    bool hasNull;
};

constexpr SignatureChoice signatureChoices[] = {
    {algorithm::rsaEncryption, algorithm::sha224, algorithm::rsaEncryption, true},
    {algorithm::rsaEncryption, algorithm::sha256, algorithm::rsaEncryption, true},
    {algorithm::rsaEncryption, algorithm::sha384, algorithm::rsaEncryption, true},
    {algorithm::rsaEncryption, algorithm::sha512, algorithm::rsaEncryption, true},
    {algorithm::ecPublicKey, algorithm::sha256, algorithm::ecdsaWithSha256, false},
    {algorithm::ecPublicKey, algorithm::sha384, algorithm::ecdsaWithSha384, false},
    {algorithm::ecPublicKey, algorithm::sha512, algorithm::ecdsaWithSha512, false},
    {algorithm::ed25519, algorithm::sha512, algorithm::ed25519, false},
    {algorithm::ed448, algorithm::shake256, algorithm::ed448, false},
};

/// Keys that are limited to PSS do not sign otherwise, and the attribute of algorithm protection with their parameters would not be
/// in order.
bool IsKnownKey(ICryptoKeyPair& key)
{
    const auto isOfKey = [&](const SignatureChoice& choice) { return choice.key == key.algorithmId(); };
    return key.signer() != nullptr && std::ranges::any_of(signatureChoices, isOfKey) &&
           (key.algorithmId() != algorithm::rsaEncryption || key.name() == pkcs1KeyName);
}

const SignatureChoice* ChooseSignature(const ICryptoKeyPair& key, algorithm::Id hash)
{
    const auto* const found = std::ranges::find_if(
        signatureChoices, [&](const SignatureChoice& choice) { return choice.key == key.algorithmId() && choice.hash == hash; });
    return found != std::end(signatureChoices) ? found : nullptr;
}

/// The document's digest as it was given, else of the content; empty, logged, when it is not one of the hash.
element DigestOfDocument(const SCryptoSignature& signature)
{
    CCryptoAutoLogger logger("DigestOfDocument");
    const std::unique_ptr<ICryptoHash> hash = ICryptoHash::Create(signature.hash);
    if (hash == nullptr)
        return logger.fail(element());
    element digest = signature.documentDigest;
    if (digest.isEmpty() && signature.content)
        digest = hash->digestOf(*signature.content);
    if (signature.content && !signature.documentDigest.isEmpty() && !(hash->digestOf(*signature.content) == digest))
        return logger.fail(element(), "The digest of the document is not that of its content");
    if (digest.length() != hash->digestSize())
        return logger.fail(element(), "The digest of the document is not one of %s", hash->name());
    logger.setResult(true);
    return digest;
}

bool IsOneSequence(const element& der)
{
    constexpr std::uint8_t sequenceIdentifier = 0x30;
    return OnlyValue(der.bytes(), sequenceIdentifier).has_value();
}

bool AddCertificates(const SCryptoSignature& signature, CCryptoPKCS7SignedDataObject& data)
{
    data.certificates.push_back(signature.signer->der());
    for (const CertificatePtr& extra : signature.extraCertificates) {
        if (extra == nullptr || !extra->isLoaded() || !extra->isDer())
            return false;
        if (std::ranges::find(data.certificates, extra->der()) == data.certificates.end())
            data.certificates.push_back(extra->der());
    }
    return data.certificates.size() <= CCryptoPKCS7SignedDataObject::maxCertificates;
}

/// The signer's description, signed; null, logged, when it cannot be made or the key fails.
std::unique_ptr<CCryptoPKCS7SignerInfo> SignAttributes(const SCryptoSignature& signature, const SignatureChoice& choice,
                                                       const SignerAttributes& attributes)
{
    CCryptoAutoLogger logger("SignAttributes");
    auto info = std::make_unique<CCryptoPKCS7SignerInfo>();
    info->signedAttributes = BuildSignedAttributes(attributes);
    if (info->signedAttributes == nullptr || !BuildUnsignedAttributes(attributes, info->unsignedAttributes))
        return logger.fail(std::unique_ptr<CCryptoPKCS7SignerInfo>());

    const std::size_t failures = FailureCount();
    info->signature = SignOctets(*signature.key, signature.hash, info->signedAttributes->encodedSet().bytes());
    if (info->signature.isEmpty()) {
        const std::optional<Failure> failure = LastFailureSince(failures);
        return logger.fail(std::unique_ptr<CCryptoPKCS7SignerInfo>(), "signHash: %s",
                           failure ? failure->text.c_str() : "The key does not sign");
    }
    info->signer.issuer = signature.signer->issuer().GetDerEncodedElement();
    info->signer.serialNumber = Octets(signature.signer->serialNumber());
    info->digestAlgorithm.setId(signature.hash);
    info->signatureAlgorithm.setId(choice.signature);
    info->signatureAlgorithm.setNullParameters(choice.hasNull);
    logger.setResult(true);
    return info;
}

} // namespace

element CCryptoPKCS7::ComputeSignature(const SCryptoSignature& signature)
{
    CCryptoAutoLogger logger("CCryptoPKCS7::ComputeSignature");
    if (signature.signer == nullptr || !signature.signer->isLoaded() || !signature.signer->isDer())
        return logger.fail(element(), "Invalid subject certificate");
    const CCryptoDateTime now = signature.now.isValid() ? signature.now : CCryptoDateTime::Now();
    const CCryptoString refusal = WhySignerIsRefused(*signature.signer, now);
    if (!refusal.isEmpty())
        return logger.fail(element(), "VerifyCertificate: %s", refusal.c_str());
    if (signature.key == nullptr || !IsKnownKey(*signature.key))
        return logger.fail(element(), "Unknown key type?");
    if (!IsSameKey(*signature.signer->publicKey(), *signature.key))
        return logger.fail(element(), "VerifyCertificate: %s", "The certificate is not one of the signing key");
    const SignatureChoice* const choice = ChooseSignature(*signature.key, signature.hash);
    if (choice == nullptr)
        return logger.fail(element(), "Unsupported hash function");
    if (!(signature.crl.isEmpty() || IsOneSequence(signature.crl)) ||
        !(signature.ocspResponse.isEmpty() || IsOneSequence(signature.ocspResponse)))
        return logger.fail(element(), "What is to prove the status of the certificate is not DER");
    if (!signature.ocspResponse.isEmpty() && BasicResponseOf(signature.ocspResponse).isEmpty())
        return logger.fail(element(), "The OCSP response holds no basic response");
    if (!signature.crl.isEmpty() && !CCrypto_X509_CRL().LoadCRL(signature.crl))
        return logger.fail(element(), "The revocation list is not one");
    if (signature.content && signature.content->size() > maxMessageSize)
        return logger.fail(element(), "The content is longer than 256 MiB");

    SignerAttributes attributes;
    attributes.signer = signature.signer.get();
    attributes.hash = signature.hash;
    attributes.messageDigest = DigestOfDocument(signature);
    if (attributes.messageDigest.isEmpty())
        return logger.fail(element());
    if (signature.addsSigningTime)
        attributes.signingTime = now;
    if (signature.addsAlgorithmProtection)
        attributes.protectedSignatureAlgorithm = CCryptoAlgorithmIdentifier(choice->signature, choice->hasNull).BuildDer();
    attributes.embedding = signature.embedding;
    attributes.ocspResponse = signature.ocspResponse;
    attributes.crl = signature.crl;

    auto data = std::make_unique<CCryptoPKCS7SignedDataObject>();
    if (!AddCertificates(signature, *data))
        return logger.fail(element(), "A certificate to be embedded is not DER, or there are too many");
    std::unique_ptr<CCryptoPKCS7SignerInfo> info = SignAttributes(signature, *choice, attributes);
    if (info == nullptr)
        return logger.fail(element());
    data->contentType = OidOfContentType(ContentType::data);
    data->digestAlgorithms.push_back(std::make_unique<CCryptoAlgorithmIdentifier>(signature.hash, false));
    data->hasContent = signature.content.has_value();
    if (data->hasContent)
        data->content = element(signature.content->data(), static_cast<std::uint32_t>(signature.content->size()));
    data->signerInfos.push_back(std::move(info));

    CCryptoPKCS7Document document;
    document.setSignedData(std::move(data));
    element der = document.GetDerEncodedObject();
    logger.setResult(!der.isEmpty());
    return der;
}
