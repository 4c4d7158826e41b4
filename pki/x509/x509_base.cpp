#include "pki/x509/x509_base.h"

#include "core/diagnostics/auto_logger.h"

using namespace ccrypto;

bool CCrypto_X509_Base::algorithmsAgree() const
{
    const element octets = signatureAlgorithm_.readOctets();
    return !octets.isEmpty() && octets == outerSignatureAlgorithm_.readOctets();
}

SignatureResult CCrypto_X509_Base::verifySignature(ICryptoKeyPair& key) const
{
    CCryptoAutoLogger logger("CCrypto_X509_Base::verifySignature");
    if (!isLoaded() || !isDer_)
        return logger.fail(SignatureResult::bad, "The octets are not DER");
    if (!algorithmsAgree())
        return logger.fail(SignatureResult::bad, "The signed algorithm is not that of the signature");
    const std::optional<SignatureAlgorithm> algorithm = ReadSignatureAlgorithm(signatureAlgorithm_);
    if (!algorithm)
        return logger.fail(SignatureResult::unsupportedAlgorithm);
    const SignatureResult result = VerifySignature(key, *algorithm, signedOctets_, signature_.bytes());
    logger.setResult(result == SignatureResult::good);
    return result;
}

void CCrypto_X509_Base::clearBase()
{
    isDer_ = false;
    signedOctets_ = {};
    version_ = 0;
    issuer_.clear();
    extensions_.clear();
    signatureAlgorithm_.clear();
    outerSignatureAlgorithm_.clear();
    signature_ = {};
    tree_.reset();
    der_ = {};
}
