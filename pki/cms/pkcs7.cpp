#include "pki/cms/pkcs7.h"

#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/failure.h"
#include "crypto/hash/hash.h"
#include "pki/cms/ber_gathering.h"
#include "pki/cms/signed_data.h"
#include "pki/cms/signed_message_writing.h"
#include "pki/cms/signer_check.h"
#include "pki/x509/crl.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/signature.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <set>
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

/// The algorithm identifiers of a choice, DER.
struct SignatureAlgorithms {
    element digest;
    element signature;
};

const SignatureAlgorithms& AlgorithmsOf(const SignatureChoice& choice)
{
    static const auto all = [] {
        std::array<SignatureAlgorithms, std::size(signatureChoices)> encoded;
        for (std::size_t index = 0; index < encoded.size(); ++index) {
            const SignatureChoice& entry = signatureChoices[index];
            encoded[index].digest = CCryptoAlgorithmIdentifier(entry.hash, false).BuildDer();
            encoded[index].signature = CCryptoAlgorithmIdentifier(entry.signature, entry.hasNull).BuildDer();
        }
        return encoded;
    }();
    return all[static_cast<std::size_t>(&choice - signatureChoices)];
}

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
    return OnlyValue(der.bytes(), der_tag::sequence).has_value();
}

/// The signer's certificate and those besides it, each once.
bool AddCertificates(const SCryptoSignature& signature, std::vector<OctetSpan>& certificates)
{
    certificates.push_back(signature.signer->der().bytes());
    std::set<std::string_view> known = {signature.signer->der().view()};
    for (const CertificatePtr& extra : signature.extraCertificates) {
        if (extra == nullptr || !extra->isLoaded() || !extra->isDer())
            return false;
        if (known.insert(extra->der().view()).second)
            certificates.push_back(extra->der().bytes());
    }
    return certificates.size() <= CCryptoPKCS7SignedDataObject::maxCertificates;
}

/// The signer's description, signed, DER; empty, logged, when it cannot be made or the key fails.
element SignAttributes(const SCryptoSignature& signature, const SignatureAlgorithms& algorithms, const SignerAttributes& attributes)
{
    CCryptoAutoLogger logger("SignAttributes");
    const element signedAttributes = BuildSignedAttributes(attributes);
    element unsignedAttributes;
    if (signedAttributes.isEmpty() || !BuildUnsignedAttributes(attributes, unsignedAttributes))
        return logger.fail(element());

    const std::size_t failures = FailureCount();
    const element octets = SignOctets(*signature.key, signature.hash, signedAttributes.bytes());
    if (octets.isEmpty()) {
        const std::optional<Failure> failure = LastFailureSince(failures);
        return logger.fail(element(), "signHash: %s", failure ? failure->text.c_str() : "The key does not sign");
    }
    const element issuer = signature.signer->issuer().GetDerEncodedElement();
    logger.setResult(true);
    return WriteSigner({.issuer = issuer.bytes(),
                        .serialNumber = signature.signer->serialNumber().bytes(),
                        .digestAlgorithm = algorithms.digest.bytes(),
                        .signedAttributes = signedAttributes.bytes(),
                        .signatureAlgorithm = algorithms.signature.bytes(),
                        .signature = octets.bytes(),
                        .unsignedAttributes = unsignedAttributes.bytes()});
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

    const SignatureAlgorithms& algorithms = AlgorithmsOf(*choice);
    SignerAttributes attributes;
    attributes.signer = signature.signer.get();
    attributes.hash = signature.hash;
    attributes.digestAlgorithm = algorithms.digest;
    attributes.messageDigest = DigestOfDocument(signature);
    if (attributes.messageDigest.isEmpty())
        return logger.fail(element());
    if (signature.addsSigningTime)
        attributes.signingTime = now;
    if (signature.addsAlgorithmProtection)
        attributes.protectedSignatureAlgorithm = algorithms.signature;
    attributes.embedding = signature.embedding;
    attributes.ocspResponse = signature.ocspResponse;
    attributes.crl = signature.crl;

    SignedDataOctets data;
    if (!AddCertificates(signature, data.certificates))
        return logger.fail(element(), "A certificate to be embedded is not DER, or there are too many");
    const element signer = SignAttributes(signature, algorithms, attributes);
    if (signer.isEmpty())
        return logger.fail(element());
    data.digestAlgorithms = algorithms.digest.bytes();
    data.content = signature.content;
    data.signerInfos = signer.bytes();
    element der = WriteSignedData(data, SignedDataForm::message);
    logger.setResult(!der.isEmpty());
    return der;
}
