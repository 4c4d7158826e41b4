#include "core/diagnostics/auto_logger.h"
#include "core/memory/wiped.h"
#include "crypto/base/constant_time.h"
#include "crypto/rsa/rsa.h"
#include "crypto/rsa/rsa_encoding.h"

using namespace ccrypto;

namespace {

element SignBlock(CCryptoAutoLogger& logger, const CCryptoRSA& key, bool isEncoded, std::span<const std::uint8_t> block)
{
    if (!isEncoded)
        return logger.fail(element(), "The digest cannot be signed");
    element signature = key.privateOperation(block);
    logger.setResult(!signature.isEmpty());
    return signature;
}

bool VerifyBlock(CCryptoAutoLogger& logger, const CCryptoRSA& key, bool isEncoded, std::span<const std::uint8_t> block,
                 std::span<const std::uint8_t> signature)
{
    if (!isEncoded)
        return logger.fail(false, "The digest cannot be verified");
    if (signature.size() != key.bytes())
        return logger.fail(false, "The signature's length is not the key's");
    const element encoded = key.publicOperation(signature);
    if (encoded.isEmpty() || !constant_time::Declassify(constant_time::EqualBytes(encoded.data(), block.data(), block.size())))
        return logger.fail(false, "The signature does not belong to the digest");
    return logger.setResult(true);
}

} // namespace

element CCryptoRSA::signPKCS1(algorithm::Id hash, std::span<const std::uint8_t> digest) const
{
    CCryptoAutoLogger logger("CCryptoRSA::signPKCS1");

    WipedArray<std::uint8_t> block(bytes());
    return SignBlock(logger, *this, rsa_encoding::EncodePKCS1Signature(block, hash, digest), block);
}

bool CCryptoRSA::verifyPKCS1(algorithm::Id hash, std::span<const std::uint8_t> digest,
                             std::span<const std::uint8_t> signature) const
{
    CCryptoAutoLogger logger("CCryptoRSA::verifyPKCS1");

    WipedArray<std::uint8_t> block(bytes());
    return VerifyBlock(logger, *this, rsa_encoding::EncodePKCS1Signature(block, hash, digest), block, signature);
}

element CCryptoRSA::signDigestInfo(std::span<const std::uint8_t> digestInfo) const
{
    CCryptoAutoLogger logger("CCryptoRSA::signDigestInfo");

    WipedArray<std::uint8_t> block(bytes());
    return SignBlock(logger, *this, rsa_encoding::EncodeDigestInfo(block, digestInfo), block);
}

bool CCryptoRSA::verifyDigestInfo(std::span<const std::uint8_t> digestInfo, std::span<const std::uint8_t> signature) const
{
    CCryptoAutoLogger logger("CCryptoRSA::verifyDigestInfo");

    WipedArray<std::uint8_t> block(bytes());
    return VerifyBlock(logger, *this, rsa_encoding::EncodeDigestInfo(block, digestInfo), block, signature);
}

element CCryptoRSA::signPSS(const CCryptoRSAPadding& padding, std::span<const std::uint8_t> digest, ICryptoRandom& random) const
{
    CCryptoAutoLogger logger("CCryptoRSA::signPSS");

    WipedArray<std::uint8_t> block(bytes());
    return SignBlock(logger, *this, rsa_encoding::EncodePSS(block, bits(), padding, digest, random), block);
}

bool CCryptoRSA::verifyPSS(const CCryptoRSAPadding& padding, std::span<const std::uint8_t> digest,
                           std::span<const std::uint8_t> signature) const
{
    CCryptoAutoLogger logger("CCryptoRSA::verifyPSS");

    if (signature.size() != bytes())
        return logger.fail(false, "The signature's length is not the key's");
    element encoded = publicOperation(signature);
    if (encoded.isEmpty() || !rsa_encoding::VerifyPSS({encoded.data(), encoded.length()}, bits(), padding, digest))
        return logger.fail(false, "The signature does not belong to the digest");
    return logger.setResult(true);
}
