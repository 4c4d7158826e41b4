#include "pki/cms/signing_certificate.h"

#include "asn1/der/der_cursor.h"
#include "asn1/types/algorithm_table.h"
#include "crypto/hash/hash.h"
#include "pki/x509/certificate.h"
#include "pki/x509/name.h"

#include <algorithm>
#include <iterator>

namespace ccrypto {

namespace {

constexpr std::uint8_t sequenceTag = 0x30;
constexpr std::uint8_t octetStringTag = 0x04;
constexpr std::uint8_t integerTag = 0x02;
constexpr std::uint8_t oidTag = 0x06;
constexpr std::uint8_t nullTag = 0x05;
constexpr std::uint8_t directoryNameTag = 0xA4;

constexpr algorithm::Id referenceHashes[] = {algorithm::sha1,   algorithm::sha224, algorithm::sha256,
                                             algorithm::sha384, algorithm::sha512, algorithm::shake256};

element CopyOf(std::span<const std::uint8_t> octets)
{
    return {octets.data(), static_cast<std::uint32_t>(octets.size())};
}

/// An AlgorithmIdentifier without parameters, or with NULL. \return false for what is not one; the hash may be none all the same.
bool ReadReferenceHash(std::span<const std::uint8_t> value, algorithm::Id& hash)
{
    DerCursor cursor(value);
    const DerItem oid = cursor.read(oidTag);
    if (!cursor.atEnd() && !(cursor.read(nullTag).octets.size() == 2 && cursor.atEnd()))
        return false;
    const auto* const found =
        std::ranges::find_if(referenceHashes, [&](algorithm::Id id) { return Oid::FromDotted(OidOfAlgorithm(id)) == oid.value; });
    hash = found != std::end(referenceHashes) ? *found : algorithm::none;
    return static_cast<bool>(oid);
}

/// IssuerSerial (RFC 5035, 4).
bool ReadIssuer(std::span<const std::uint8_t> value, CertificateReference& reference)
{
    DerCursor cursor(value);
    const DerItem names = cursor.read(sequenceTag);
    reference.serialNumber = CopyOf(cursor.read(integerTag).value);
    for (DerCursor name(names.value); !name.atEnd();) {
        const DerItem item = name.read();
        if (!item)
            return false;
        if (item.identifier == directoryNameTag)
            reference.issuers.push_back(CopyOf(item.value));
    }
    return reference.hasIssuer() && cursor.atEnd();
}

bool ReadReference(std::span<const std::uint8_t> value, bool isFirstVersion, CertificateReference& reference)
{
    DerCursor cursor(value);
    reference.hash = isFirstVersion ? algorithm::sha1 : algorithm::sha256;
    if (!isFirstVersion && cursor.nextIs(sequenceTag) && !ReadReferenceHash(cursor.read(sequenceTag).value, reference.hash))
        return false;
    const DerItem digest = cursor.read(octetStringTag);
    reference.digest = CopyOf(digest.value);
    if (cursor.nextIs(sequenceTag) && !ReadIssuer(cursor.read(sequenceTag).value, reference))
        return false;
    return digest && cursor.atEnd();
}

bool IsIssuer(const element& name, const CCrypto_X509_Certificate& certificate)
{
    const element issuer = certificate.issuer().GetDerEncodedElement();
    if (issuer == name)
        return true;
    const std::optional<ComparableName> one = ComparableName::Read(issuer.bytes());
    return one && one == ComparableName::Read(name.bytes());
}

} // namespace

bool CertificateReference::means(const CCrypto_X509_Certificate& certificate) const
{
    const std::unique_ptr<ICryptoHash> function = hash != algorithm::none ? ICryptoHash::Create(hash) : nullptr;
    if (function == nullptr || !(function->digestOf(certificate.der().bytes()) == digest))
        return false;
    return !hasIssuer() || (Octets(certificate.serialNumber()) == serialNumber &&
                            std::ranges::any_of(issuers, [&](const element& name) { return IsIssuer(name, certificate); }));
}

std::optional<CertificateReferences> ReadSigningCertificate(const CCryptoPKCS7Attribute& attribute)
{
    const element octets = attribute.onlyValue() != nullptr ? CCryptoParser::ToDer(attribute.onlyValue()) : element();
    const auto value = OnlyValue(octets.bytes(), sequenceTag);
    if (!value)
        return std::nullopt;
    DerCursor cursor(*value);
    const DerItem certificates = cursor.read(sequenceTag);
    // Policies may follow, which say nothing of the certificate.
    if (!cursor.atEnd() && (!cursor.read(sequenceTag) || !cursor.atEnd()))
        return std::nullopt;
    CertificateReferences references;
    for (DerCursor one(certificates.value); !one.atEnd();) {
        CertificateReference reference;
        const DerItem item = one.read(sequenceTag);
        if (!item || !ReadReference(item.value, attribute.type() == cms::signingCertificate, reference) ||
            references.size() >= CCryptoPKCS7Attribute::maxValues)
            return std::nullopt;
        references.push_back(std::move(reference));
    }
    return references.empty() ? std::nullopt : std::optional(std::move(references));
}

} // namespace ccrypto
