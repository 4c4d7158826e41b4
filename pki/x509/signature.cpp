#include "pki/x509/signature.h"

#include "asn1/der/der_cursor.h"
#include "asn1/template/template_cache.h"
#include "asn1/types/algorithm_table.h"
#include "asn1/types/oid.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"
#include "pki/x509/der_tags.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace ccrypto {

namespace {

using Kind = SignatureAlgorithm::Kind;

struct SignatureRow {
    const char* oid;
    Kind kind;
    algorithm::Id hash;
    algorithm::Id curve = algorithm::none;
};

constexpr const char* rsaPssOid = "1.2.840.113549.1.1.10";

constexpr SignatureRow signatureRows[] = {
    {"1.2.840.113549.1.1.2", Kind::rsaPkcs1, algorithm::none}, // MD2
    {"1.2.840.113549.1.1.3", Kind::rsaPkcs1, algorithm::none}, // MD4
    {"1.2.840.113549.1.1.4", Kind::rsaPkcs1, algorithm::md5},
    {"1.2.840.113549.1.1.5", Kind::rsaPkcs1, algorithm::sha1},
    {"1.2.840.113549.1.1.14", Kind::rsaPkcs1, algorithm::sha224},
    {"1.2.840.113549.1.1.11", Kind::rsaPkcs1, algorithm::sha256},
    {"1.2.840.113549.1.1.12", Kind::rsaPkcs1, algorithm::sha384},
    {"1.2.840.113549.1.1.13", Kind::rsaPkcs1, algorithm::sha512},
    {rsaPssOid, Kind::rsaPss, algorithm::none},
    {"1.2.840.10045.4.1", Kind::ecdsa, algorithm::sha1},
    {"1.2.840.10045.4.3.1", Kind::ecdsa, algorithm::sha224},
    {"1.2.840.10045.4.3.2", Kind::ecdsa, algorithm::sha256},
    {"1.2.840.10045.4.3.3", Kind::ecdsa, algorithm::sha384},
    {"1.2.840.10045.4.3.4", Kind::ecdsa, algorithm::sha512},
    {"1.3.101.112", Kind::eddsa, algorithm::none, algorithm::ed25519},
    {"1.3.101.113", Kind::eddsa, algorithm::none, algorithm::ed448},
    {"1.2.840.10040.4.3", Kind::dsa, algorithm::sha1},
    {"2.16.840.1.101.3.4.3.1", Kind::dsa, algorithm::sha224},
    {"2.16.840.1.101.3.4.3.2", Kind::dsa, algorithm::sha256},
};

constexpr algorithm::Id signatureHashes[] = {algorithm::md5,    algorithm::sha1,   algorithm::sha224,
                                             algorithm::sha256, algorithm::sha384, algorithm::sha512};

/// The rows with the octets of their OIDs, made once.
struct KnownSignature {
    Oid oid;
    const SignatureRow* row;
};

const SignatureRow* FindSignatureRow(std::span<const std::uint8_t> oid)
{
    static const std::vector<KnownSignature> known = [] {
        std::vector<KnownSignature> made;
        for (const SignatureRow& row : signatureRows)
            made.push_back({Oid::FromDotted(row.oid), &row});
        return made;
    }();
    const auto found = std::ranges::find_if(known, [oid](const KnownSignature& entry) { return entry.oid == oid; });
    return found != known.end() ? found->row : nullptr;
}

/// One of signatureHashes; none for any other.
algorithm::Id HashOfOid(std::span<const std::uint8_t> oid)
{
    const auto* const found =
        std::ranges::find_if(signatureHashes, [oid](algorithm::Id hash) { return Oid::FromDotted(OidOfAlgorithm(hash)) == oid; });
    return found != std::end(signatureHashes) ? *found : algorithm::none;
}

/// AlgorithmIdentifier: the octets of its OID, and those of its parameters, if there are any.
struct IdentifierParts {
    std::span<const std::uint8_t> oid;
    DerItem parameters;

    bool hasOnlyNull() const { return !parameters || (parameters.identifier == der_tag::null && parameters.value.empty()); }
};

std::optional<IdentifierParts> ReadIdentifier(std::span<const std::uint8_t> der)
{
    const auto content = OnlyValue(der, der_tag::sequence);
    if (!content)
        return std::nullopt;
    DerCursor cursor(*content);
    IdentifierParts parts;
    const DerItem oid = cursor.read(der_tag::objectIdentifier);
    if (!oid)
        return std::nullopt;
    parts.oid = oid.value;
    if (!cursor.atEnd())
        parts.parameters = cursor.read();
    return cursor.atEnd() ? std::optional(parts) : std::nullopt;
}

/// The hash of a HashAlgorithm, whose parameters are NULL or absent (RFC 4055, 2.1).
algorithm::Id ReadHashAlgorithm(std::span<const std::uint8_t> der)
{
    const std::optional<IdentifierParts> parts = ReadIdentifier(der);
    return parts && parts->hasOnlyNull() ? HashOfOid(parts->oid) : algorithm::none;
}

/// The hash of a MaskGenAlgorithm, which must be MGF1 (RFC 4055, 2.2).
algorithm::Id ReadMaskHash(std::span<const std::uint8_t> der)
{
    static const Oid mgf1 = Oid::FromDotted("1.2.840.113549.1.1.8");
    const std::optional<IdentifierParts> parts = ReadIdentifier(der);
    return parts && mgf1 == parts->oid ? ReadHashAlgorithm(parts->parameters.octets) : algorithm::none;
}

/// An INTEGER from 0 to 32767, far above any salt that a key has space for.
std::optional<std::int32_t> ReadSmallNumber(std::span<const std::uint8_t> der)
{
    const auto value = OnlyValue(der, der_tag::integer);
    if (!value || value->empty() || value->size() > 2 || (*value)[0] >= 0x80)
        return std::nullopt;
    if (value->size() == 1)
        return (*value)[0];
    // Two octets where one is enough are not DER.
    if ((*value)[0] == 0 && (*value)[1] < 0x80)
        return std::nullopt;
    return (*value)[0] << 8 | (*value)[1];
}

/// RSASSA-PSS-params (RFC 4055, 3.1). A default that is written out is read, too, as verifiers must.
bool ReadPssParameters(const DerItem& parameters, SignatureAlgorithm& algorithm)
{
    if (parameters.identifier != der_tag::sequence)
        return false;
    CCryptoRSAPadding& masking = algorithm.padding.masking;
    algorithm.padding.scheme = SCryptoPadding::Scheme::masked;
    algorithm.hash = algorithm::sha1;
    masking.maskHash = algorithm::sha1;
    masking.saltLength = 20;
    std::int32_t trailerField = 1;

    DerCursor cursor(parameters.value);
    if (const DerItem hash = cursor.read(der_tag::Constructed(0)))
        algorithm.hash = ReadHashAlgorithm(hash.value);
    if (const DerItem mask = cursor.read(der_tag::Constructed(1)))
        masking.maskHash = ReadMaskHash(mask.value);
    if (const DerItem salt = cursor.read(der_tag::Constructed(2)))
        masking.saltLength = ReadSmallNumber(salt.value).value_or(-1);
    if (const DerItem trailer = cursor.read(der_tag::Constructed(3)))
        trailerField = ReadSmallNumber(trailer.value).value_or(-1);
    masking.hash = algorithm.hash;
    return cursor.atEnd() && algorithm.hash != algorithm::none && masking.maskHash != algorithm::none &&
           masking.maskHash != algorithm::md5 && masking.saltLength >= 0 && trailerField == 1;
}

bool AllowsParameters(const SignatureRow& row, const IdentifierParts& parts, SignatureAlgorithm& algorithm)
{
    switch (row.kind) {
    case Kind::rsaPkcs1:
        return parts.hasOnlyNull();
    case Kind::rsaPss:
        // Beside a signature they must be present (RFC 4055, 3.1).
        return ReadPssParameters(parts.parameters, algorithm);
    case Kind::ecdsa:
    case Kind::eddsa:
    case Kind::dsa:
        break;
    }
    return !parts.parameters;
}

/// Whether the algorithm is one of this kind of key.
bool IsForKey(const SignatureAlgorithm& algorithm, const ICryptoKeyPair& key)
{
    switch (algorithm.kind) {
    case Kind::rsaPkcs1:
    case Kind::rsaPss:
        return key.algorithmId() == algorithm::rsaEncryption;
    case Kind::ecdsa:
        return key.algorithmId() == algorithm::ecPublicKey;
    case Kind::eddsa:
        return key.algorithmId() == algorithm.curve;
    case Kind::dsa:
        break;
    }
    return key.algorithmId() == algorithm::dsa;
}

SignatureResult UnlessFalse(CCryptoAutoLogger& logger, bool isGood)
{
    return logger.setResult(isGood) ? SignatureResult::good : SignatureResult::bad;
}

bool IsSigningHash(algorithm::Id hash)
{
    return hash == algorithm::sha224 || hash == algorithm::sha256 || hash == algorithm::sha384 || hash == algorithm::sha512;
}

constexpr std::string_view pssKeyName = "RSA-PSS";

bool SignsWith(const SignatureRow& row, const ICryptoKeyPair& key, algorithm::Id hash)
{
    if (row.kind == Kind::dsa || !IsForKey({.kind = row.kind, .curve = row.curve}, key))
        return false;
    if (row.kind == Kind::eddsa)
        return true;
    const bool isPss = row.kind == Kind::rsaPss;
    return IsSigningHash(hash) && isPss == (key.name() == pssKeyName) && (isPss || row.hash == hash);
}

/// The row that a key signs with; null for none.
const SignatureRow* SigningRow(const ICryptoKeyPair& key, algorithm::Id hash)
{
    const auto* const found =
        std::ranges::find_if(signatureRows, [&](const SignatureRow& row) { return SignsWith(row, key, hash); });
    return found != std::end(signatureRows) ? found : nullptr;
}

constexpr const char* signatureTemplate = "SEQUENCE{OBJECT_IDENTIFIER=algorithmOID,parameters(OPTIONAL)}";
constexpr const char* pssSignatureTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=algorithmOID,SEQUENCE{"
    "CONTEXT_SPECIFIC[0]{SEQUENCE{OBJECT_IDENTIFIER=hash,NULL}}"
    "CONTEXT_SPECIFIC[1]{SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.1.8\",SEQUENCE{OBJECT_IDENTIFIER=maskHash,NULL}}}"
    "CONTEXT_SPECIFIC[2]{INTEGER=saltLength}}}";

element WriteSignatureAlgorithm(const SignatureRow& row, algorithm::Id hash)
{
    const bool isPss = row.kind == Kind::rsaPss;
    const elementNode* const items = ParsedTemplate(isPss ? pssSignatureTemplate : signatureTemplate);
    if (items == nullptr)
        return {};
    CCryptoParser parser(items->clone());
    bool filled = parser.fill("algorithmOID", element(row.oid));
    if (isPss) {
        const element hashOid(OidOfAlgorithm(hash));
        filled = filled && parser.fill("hash", hashOid) && parser.fill("maskHash", hashOid) &&
                 parser.fill("saltLength", element(ICryptoHash::Create(hash)->digestSize()));
    } else if (row.kind == Kind::rsaPkcs1) {
        filled = filled && parser.fill_word("parameters", "NULL");
    }
    return filled ? parser.ToDer() : element();
}

} // namespace

std::optional<SignatureAlgorithm> ReadSignatureAlgorithm(std::span<const std::uint8_t> der)
{
    CCryptoAutoLogger logger("ReadSignatureAlgorithm");
    using Result = std::optional<SignatureAlgorithm>;

    const std::optional<IdentifierParts> parts = ReadIdentifier(der);
    if (!parts)
        return logger.fail(Result(), "Not an AlgorithmIdentifier");
    const SignatureRow* const row = FindSignatureRow(parts->oid);
    if (row == nullptr)
        return logger.fail(Result(), "Unsupported signature algorithm");
    SignatureAlgorithm algorithm = {.kind = row->kind, .hash = row->hash, .curve = row->curve};
    if (!AllowsParameters(*row, *parts, algorithm))
        return logger.fail(Result(), "The signature algorithm %s does not have such parameters", row->oid);
    return logger.succeed(Result(algorithm));
}

std::optional<SignatureAlgorithm> ReadSignatureAlgorithm(const CCryptoAlgorithmIdentifier& identifier)
{
    element octets = identifier.readOctets();
    if (octets.isEmpty()) {
        CCryptoAlgorithmIdentifier copy(identifier.id(), identifier.nullParameters());
        copy.setParameters(identifier.parameters());
        octets = copy.BuildDer();
    }
    return ReadSignatureAlgorithm(octets.bytes());
}

element SignatureAlgorithmFor(const ICryptoKeyPair& key, algorithm::Id hash)
{
    CCryptoAutoLogger logger("SignatureAlgorithmFor");
    const SignatureRow* const row = SigningRow(key, hash);
    if (row == nullptr)
        return IsSigningHash(hash) ? logger.fail(element(), "A key of %s does not sign", key.name())
                                   : logger.fail(element(), "Unsupported hash function");
    element der = WriteSignatureAlgorithm(*row, hash);
    logger.setResult(!der.isEmpty());
    return der;
}

SignatureResult VerifySignature(ICryptoKeyPair& key, const SignatureAlgorithm& algorithm, std::span<const std::uint8_t> octets,
                                std::span<const std::uint8_t> signature)
{
    CCryptoAutoLogger logger("VerifySignature");
    if (algorithm.kind == Kind::eddsa) {
        if (!IsForKey(algorithm, key) || key.signer() == nullptr)
            return logger.fail(SignatureResult::unsupportedAlgorithm, "The algorithm is not one of a key of %s", key.name());
        return UnlessFalse(logger, key.signer()->verify(algorithm::none, octets, signature));
    }
    const std::unique_ptr<ICryptoHash> function = ICryptoHash::Create(algorithm.hash);
    if (function == nullptr)
        return logger.fail(SignatureResult::unsupportedAlgorithm);
    const element digest = function->digestOf(octets);
    const SignatureResult result = VerifyDigest(key, algorithm, digest.bytes(), signature);
    logger.setResult(result == SignatureResult::good);
    return result;
}

SignatureResult VerifyDigest(ICryptoKeyPair& key, const SignatureAlgorithm& algorithm, std::span<const std::uint8_t> digest,
                             std::span<const std::uint8_t> signature)
{
    CCryptoAutoLogger logger("VerifyDigest");
    if (algorithm.isBroken())
        return logger.fail(SignatureResult::unsupportedAlgorithm, "Signatures of this hash function are not accepted");
    if (algorithm.kind == Kind::eddsa || !IsForKey(algorithm, key) || key.signer() == nullptr)
        return logger.fail(SignatureResult::unsupportedAlgorithm, "The algorithm is not one of a key of %s", key.name());
    return UnlessFalse(logger, key.signer()->verify(algorithm.hash, digest, signature, algorithm.padding));
}

element SignOctets(ICryptoKeyPair& key, algorithm::Id hash, std::span<const std::uint8_t> octets)
{
    CCryptoAutoLogger logger("SignOctets");
    const SignatureRow* const row = SigningRow(key, hash);
    if (row == nullptr)
        return logger.fail(element(), "Unsupported hash function");
    if (key.signer() == nullptr)
        return logger.fail(element(), "A key of %s does not sign", key.name());
    element signature;
    if (row->kind == Kind::eddsa) {
        signature = key.signer()->sign(algorithm::none, octets);
    } else {
        SCryptoPadding padding;
        if (row->kind == Kind::rsaPss)
            padding = {.scheme = SCryptoPadding::Scheme::masked, .masking = {.hash = hash, .maskHash = hash}};
        signature = key.signer()->sign(hash, ICryptoHash::Create(hash)->digestOf(octets).bytes(), padding);
    }
    if (signature.isEmpty())
        return logger.fail(element(), "The key does not sign");
    logger.setResult(true);
    return signature;
}

} // namespace ccrypto
