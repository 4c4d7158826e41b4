#include "pki/cms/signer_signature.h"

#include "asn1/der/der_cursor.h"
#include "asn1/types/algorithm_table.h"
#include "pki/x509/x509_time.h"

#include <algorithm>
#include <iterator>

namespace ccrypto {

namespace {

constexpr std::uint8_t sequenceId = 0x30;
constexpr std::uint8_t protectedSignatureId = 0xA1;

constexpr algorithm::Id messageHashes[] = {algorithm::md5,    algorithm::sha1,   algorithm::sha224,  algorithm::sha256,
                                           algorithm::sha384, algorithm::sha512, algorithm::shake256};

/// Algorithms of keys, which leave the hash of the signature to the digest algorithm.
struct KeyAlgorithm {
    const char* oid;
    SignatureAlgorithm::Kind kind;
    bool hasNull; ///< or nothing
};
constexpr KeyAlgorithm keyAlgorithms[] = {
    {"1.2.840.113549.1.1.1", SignatureAlgorithm::Kind::rsaPkcs1, true},
    {"1.2.840.10045.2.1", SignatureAlgorithm::Kind::ecdsa, false},
    {"1.2.840.10040.4.1", SignatureAlgorithm::Kind::dsa, false},
};

/// OID and parameters of an AlgorithmIdentifier's value; NULL counts as nothing.
struct AlgorithmParts {
    std::span<const std::uint8_t> oid;
    std::span<const std::uint8_t> parameters;
    bool hasNull = false;

    bool operator==(const AlgorithmParts& other) const
    {
        return std::ranges::equal(oid, other.oid) && std::ranges::equal(parameters, other.parameters);
    }
};

std::optional<AlgorithmParts> PartsOfAlgorithm(std::span<const std::uint8_t> value)
{
    DerCursor cursor(value);
    const DerItem oid = cursor.read(0x06);
    AlgorithmParts parts = {oid.value, {}};
    if (!cursor.atEnd()) {
        const DerItem parameters = cursor.read();
        parts.hasNull = parameters.identifier == 0x05 && parameters.value.empty();
        if (!parts.hasNull)
            parts.parameters = parameters.octets;
        if (!parameters)
            return std::nullopt;
    }
    return oid && cursor.atEnd() ? std::optional(parts) : std::nullopt;
}

/// Those of an AlgorithmIdentifier; `octets` must outlive them.
std::optional<AlgorithmParts> PartsOfIdentifier(const element& octets)
{
    const auto value = OnlyValue(octets.bytes(), sequenceId);
    return value ? PartsOfAlgorithm(*value) : std::nullopt;
}

/// How the signature was made. \return none, logged, for what is not supported.
std::optional<SignatureAlgorithm> ReadAlgorithmOfSigner(const CCryptoPKCS7SignerInfo& signer, algorithm::Id hash)
{
    const element octets = signer.signatureAlgorithm.readOctets();
    const std::optional<AlgorithmParts> parts = PartsOfIdentifier(octets);
    if (!parts)
        return std::nullopt;
    for (const KeyAlgorithm& entry : keyAlgorithms) {
        if (!(Oid::FromDotted(entry.oid) == parts->oid))
            continue;
        if (!parts->parameters.empty() || (parts->hasNull && !entry.hasNull))
            return std::nullopt;
        return SignatureAlgorithm{.kind = entry.kind, .hash = hash};
    }
    return ReadSignatureAlgorithm(octets.bytes());
}

/// The digest algorithm is that of the signature, or for EdDSA the one of RFC 8419, 3.1. SHAKE256 goes with Ed448 alone.
bool AlgorithmsFit(const SignatureAlgorithm& signature, algorithm::Id hash)
{
    if (signature.kind == SignatureAlgorithm::Kind::eddsa)
        return hash == (signature.curve == algorithm::ed25519 ? algorithm::sha512 : algorithm::shake256);
    return signature.hash == hash && hash != algorithm::shake256;
}

/// Exactly one attribute with exactly one value; else null.
const elementNode* OnlyValueOf(const CCryptoPKCS7Attributes& attributes, const Oid& type)
{
    return attributes.count(type) == 1 ? attributes.find(type)->onlyValue() : nullptr;
}

SignerFault CheckContentType(const CCryptoPKCS7Attributes& attributes, const Oid& contentType)
{
    const elementNode* const value = OnlyValueOf(attributes, cms::contentType);
    const Oid type = Oid::OfNode(value);
    if (type.isNone())
        return {Reason::malformed, "The content type is not there exactly once, with one value"};
    return type == contentType ? SignerFault()
                               : SignerFault{Reason::badSignature, "The content type is not the one that was signed"};
}

SignerFault CheckMessageDigest(const CCryptoPKCS7Attributes& attributes, const element& digest)
{
    const elementNode* const value = OnlyValueOf(attributes, cms::messageDigest);
    if (value == nullptr || value->type() != ElementType::octetString || value->value() == nullptr)
        return {Reason::malformed, "The message digest is not there exactly once, with one value"};
    if (digest.isEmpty())
        return {Reason::malformed, "The digest of the content was given for another hash function"};
    return Octets(value->value()->token()) == digest
               ? SignerFault()
               : SignerFault{Reason::badSignature, "The content does not have the digest that was signed"};
}

SignerFault CheckAlgorithmProtection(const CCryptoPKCS7SignerInfo& signer)
{
    const CCryptoPKCS7Attributes& attributes = *signer.signedAttributes;
    if (attributes.count(cms::algorithmProtection) == 0)
        return {};
    const elementNode* const node = OnlyValueOf(attributes, cms::algorithmProtection);
    const element octets = node != nullptr ? CCryptoParser::ToDer(node) : element();
    const auto value = OnlyValue(octets.bytes(), sequenceId);
    DerCursor cursor(value.value_or(std::span<const std::uint8_t>()));
    const DerItem digest = cursor.read(sequenceId);
    const DerItem signature = cursor.read(protectedSignatureId);
    if (!digest || !signature || !cursor.atEnd())
        return {Reason::malformed, "The algorithm protection is malformed"};
    const element digestOctets = signer.digestAlgorithm.readOctets();
    const element signatureOctets = signer.signatureAlgorithm.readOctets();
    const auto digestParts = PartsOfIdentifier(digestOctets);
    const auto signatureParts = PartsOfIdentifier(signatureOctets);
    const bool isSame = digestParts && digestParts == PartsOfAlgorithm(digest.value) && signatureParts &&
                        signatureParts == PartsOfAlgorithm(signature.value);
    return isSame ? SignerFault() : SignerFault{Reason::badSignature, "The protected algorithms are other ones"};
}

SignerFault ReadSigningTime(const CCryptoPKCS7Attributes& attributes, CCryptoDateTime& time)
{
    if (attributes.count(cms::signingTime) == 0)
        return {};
    time = ReadX509Time(OnlyValueOf(attributes, cms::signingTime));
    return time.isValid() ? SignerFault() : SignerFault{Reason::malformed, "The signing time is malformed"};
}

/// What anyone may add says nothing, yet would be taken for the signer's word.
SignerFault CheckPlaces(const CCryptoPKCS7SignerInfo& signer)
{
    static const Oid signedAlone[] = {cms::contentType,         cms::messageDigest,      cms::signingTime,
                                      cms::algorithmProtection, cms::signingCertificate, cms::signingCertificateV2};
    if (signer.unsignedAttributes != nullptr)
        for (const Oid& type : signedAlone)
            if (signer.unsignedAttributes->count(type) != 0)
                return {Reason::malformed, "An attribute that must be signed is not"};
    if (signer.signedAttributes != nullptr && signer.signedAttributes->count(cms::counterSignature) != 0)
        return {Reason::malformed, "A countersignature is among the signed attributes"};
    return {};
}

} // namespace

algorithm::Id ReadMessageHash(const CCryptoAlgorithmIdentifier& identifier)
{
    const element octets = identifier.readOctets();
    const std::optional<AlgorithmParts> parts = PartsOfIdentifier(octets);
    if (!parts || !parts->parameters.empty())
        return algorithm::none;
    const auto* const found = std::ranges::find(messageHashes, identifier.id());
    return found != std::end(messageHashes) && Oid::FromDotted(OidOfAlgorithm(*found)) == parts->oid ? *found : algorithm::none;
}

SignerFault SignerStatement::read(const CCryptoPKCS7SignerInfo& signer, const Oid& contentType, SignedContent* content)
{
    hash = ReadMessageHash(signer.digestAlgorithm);
    const std::optional<SignatureAlgorithm> read =
        hash != algorithm::none ? ReadAlgorithmOfSigner(signer, hash) : std::optional<SignatureAlgorithm>();
    if (!read)
        return {Reason::unsupportedAlgorithm, "The digest or the signature algorithm is not supported"};
    algorithm = *read;
    if (!AlgorithmsFit(algorithm, hash))
        return {Reason::unsupportedAlgorithm, "The signature algorithm does not go with the digest algorithm"};
    if (const SignerFault fault = CheckPlaces(signer); !fault.isNone())
        return fault;
    if (content == nullptr)
        return {Reason::malformed, CCryptoString(contentIsDetached)};

    const CCryptoPKCS7Attributes* const attributes = signer.signedAttributes.get();
    if (attributes == nullptr) {
        if (contentType != OidOfContentType(ContentType::data))
            return {Reason::malformed, "Content of another type than data has no signed attributes"};
        if (!content->octets())
            return {Reason::malformed, "Without signed attributes the content itself is needed"};
        return content->isSetOfAttributes() ? SignerFault{Reason::badSignature, "The content is itself a set of attributes"}
                                            : SignerFault();
    }
    SignerFault fault = CheckContentType(*attributes, contentType);
    if (fault.isNone())
        fault = CheckMessageDigest(*attributes, content->digest(hash));
    if (fault.isNone())
        fault = CheckAlgorithmProtection(signer);
    if (fault.isNone())
        fault = ReadSigningTime(*attributes, signingTime);
    if (!fault.isNone())
        return fault;
    for (const Oid& type : {cms::signingCertificate, cms::signingCertificateV2}) {
        if (attributes->count(type) == 0)
            continue;
        std::optional<CertificateReferences> references;
        if (attributes->count(type) == 1)
            references = ReadSigningCertificate(*attributes->find(type));
        if (!references)
            return {Reason::malformed, "The attribute of the signing certificate is malformed"};
        signingCertificates.push_back(std::move(*references));
    }
    return {};
}

SignerFault VerifySigner(const CCryptoPKCS7SignerInfo& signer, const SignerStatement& statement, ICryptoKeyPair& key,
                         SignedContent& content, AttributeOrder& order)
{
    const std::span<const std::uint8_t> signature = signer.signature.bytes();
    SignatureResult result = SignatureResult::bad;
    if (signer.signedAttributes == nullptr) {
        order = AttributeOrder::none;
        result = statement.algorithm.kind == SignatureAlgorithm::Kind::eddsa
                     ? VerifySignature(key, statement.algorithm, *content.octets(), signature)
                     : VerifyDigest(key, statement.algorithm, content.digest(statement.hash).bytes(), signature);
    } else {
        order = AttributeOrder::encoded;
        const element encoded = signer.signedAttributes->encodedSet();
        result = VerifySignature(key, statement.algorithm, encoded.bytes(), signature);
        const element sorted = result == SignatureResult::bad ? SortedSet(encoded) : element();
        if (!sorted.isEmpty() && !(sorted == encoded)) {
            order = AttributeOrder::sorted;
            result = VerifySignature(key, statement.algorithm, sorted.bytes(), signature);
        }
    }
    if (result == SignatureResult::unsupportedAlgorithm)
        return {Reason::unsupportedAlgorithm, "The signature algorithm does not go with the key"};
    return result == SignatureResult::good ? SignerFault() : SignerFault{Reason::badSignature, "The signature is not the key's"};
}

} // namespace ccrypto
