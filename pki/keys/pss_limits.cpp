#include "pki/keys/pss_limits.h"

#include "asn1/types/asn1_object.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"

namespace ccrypto {

namespace {

constexpr std::string_view pssOid = "1.2.840.113549.1.1.10";
constexpr std::int32_t maxSaltLength = 1024;

constexpr const char* pssParametersTemplate =
    "SEQUENCE{CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL){hashAlgorithm}"
    "CONTEXT_SPECIFIC[1,CONSTRUCTED](OPTIONAL){SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.1.8\",maskHashAlgorithm}}"
    "CONTEXT_SPECIFIC[2,CONSTRUCTED](OPTIONAL){INTEGER=saltLength}"
    "CONTEXT_SPECIFIC[3,CONSTRUCTED](OPTIONAL){INTEGER=trailerField}}";

/// RSASSA-PSS-params (RFC 8017, A.2.3); only read.
class PssParameters : public CCryptoASN1Object {
public:
    PssParameters() : CCryptoASN1Object(pssParametersTemplate) {}

    bool BuildNode() override { return false; }
    bool ParseNode() override
    {
        return readHash("hashAlgorithm", hash) && readHash("maskHashAlgorithm", maskHash) && readSmall("saltLength", saltLength) &&
               readSmall("trailerField", trailer) && saltLength <= maxSaltLength && trailer == 1;
    }

    algorithm::Id hash = algorithm::sha1;
    algorithm::Id maskHash = algorithm::sha1;
    std::int32_t saltLength = 20;
    std::int32_t trailer = 1;

private:
    bool readHash(const char* name, algorithm::Id& id) const
    {
        if (!isBound(name))
            return true;
        CCryptoAlgorithmIdentifier identifier;
        if (!identifier.Parse(find(name)))
            return false;
        id = identifier.id();
        return id != algorithm::md5Sha1 && ICryptoHash::Create(id) != nullptr;
    }

    /// A number of at most two bytes, not negative.
    bool readSmall(const char* name, std::int32_t& number) const
    {
        if (!isBound(name))
            return true;
        const element value = findBytes(name);
        number = static_cast<std::int32_t>(value.toWord32());
        return !value.isEmpty() && !value.negative() && value.length() <= 2;
    }
};

} // namespace

bool PssLimits::allow(algorithm::Id signedHash, const SCryptoPadding& padding) const
{
    CCryptoAutoLogger logger("PssLimits::allow");
    if (padding.scheme != SCryptoPadding::Scheme::masked)
        return logger.fail(false, "The key is for PSS alone");
    if (hash == algorithm::none)
        return logger.setResult(true);
    const algorithm::Id mask = padding.masking.maskHash != algorithm::none ? padding.masking.maskHash : signedHash;
    if (signedHash != hash || mask != maskHash)
        return logger.fail(false, "The key is for PSS with other hashes");
    const std::unique_ptr<ICryptoHash> function = ICryptoHash::Create(signedHash);
    const std::int32_t salt = padding.masking.saltLength == CCryptoRSAPadding::saltAsLongAsDigest
                                  ? static_cast<std::int32_t>(function->digestSize())
                                  : padding.masking.saltLength;
    if (salt != CCryptoRSAPadding::saltOfAnyLength && salt < minSaltLength)
        return logger.fail(false, "The key is for PSS with a salt of %d bytes and more", minSaltLength);
    return logger.setResult(true);
}

bool IsPss(const CCryptoAlgorithmIdentifier& identifier)
{
    return identifier.oid().view() == pssOid;
}

std::optional<PssLimits> ReadPssLimits(const CCryptoAlgorithmIdentifier& identifier)
{
    CCryptoAutoLogger logger("ReadPssLimits");
    PssLimits limits;
    limits.algorithm = identifier.readOctets();
    if (identifier.parameters() != nullptr) {
        PssParameters parameters;
        if (!parameters.Parse(identifier.parameters()))
            return logger.fail(std::optional<PssLimits>(), "The parameters of RSASSA-PSS are not supported");
        limits.hash = parameters.hash;
        limits.maskHash = parameters.maskHash;
        limits.minSaltLength = parameters.saltLength;
    }
    logger.setResult(true);
    return limits;
}

} // namespace ccrypto
