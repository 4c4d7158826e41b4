#include "pki/x509/x509_base.h"

#include "asn1/der/der_parser.h"
#include "core/diagnostics/auto_logger.h"

#include <utility>

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

bool CCrypto_X509_Base::decode(CCryptoAutoLogger& logger, element der)
{
    failure_ = LoadFailure::malformed;
    if (der.isEmpty())
        return logger.fail(false, "value is empty");
    CCryptoDERParser decoder;
    tree_ = decoder.Decode(der.bytes());
    if (tree_ == nullptr)
        return logger.fail(false, "Loading failed!");
    der_ = std::move(der);
    isDer_ = decoder.isDer();
    return true;
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
