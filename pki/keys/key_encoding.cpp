#include "pki/keys/key_encoding.h"

#include "asn1/types/algorithm_table.h"
#include "asn1/types/asn1_values.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/keys/dsa_key_pair.h"
#include "pki/keys/ec_key_pair.h"
#include "pki/keys/eddsa_key_pair.h"
#include "pki/keys/key_objects.h"
#include "pki/keys/pss_limits.h"
#include "pki/keys/rsa_key_pair.h"

namespace ccrypto {

namespace {

using KeyPair = std::unique_ptr<ICryptoKeyPair>;

bool IsEddsa(algorithm::Id id)
{
    return id == algorithm::ed25519 || id == algorithm::ed448;
}

/// The algorithms of RFC 8410, which are the curve and have no parameters.
bool IsCurveByItself(algorithm::Id id)
{
    return id == algorithm::x25519 || id == algorithm::x448 || IsEddsa(id);
}

KeyPair PairOf(std::unique_ptr<CCryptoRSA> key)
{
    return key != nullptr ? std::make_unique<CCryptoRSAKeyPair>(std::move(key)) : nullptr;
}

KeyPair PairOf(std::unique_ptr<CCryptoEC> key)
{
    return key != nullptr ? std::make_unique<CCryptoECKeyPair>(std::move(key)) : nullptr;
}

KeyPair PairOf(std::unique_ptr<EddsaKey> key)
{
    return key != nullptr ? std::make_unique<CCryptoEddsaKeyPair>(std::move(key)) : nullptr;
}

/// The kind of key that an AlgorithmIdentifier says: rsaEncryption, or the curve. \return none, logged, for algorithms and curves
/// that are none here, and for parameters that the algorithm does not have (RFC 8017, A.1; RFC 5480, 2.1.1; RFC 8410, 3).
algorithm::Id KindOf(CCryptoAutoLogger& logger, const CCryptoAlgorithmIdentifier& identifier)
{
    const algorithm::Id id = identifier.id();
    const elementNode* const parameters = identifier.parameters();
    if (IsPss(identifier))
        return algorithm::rsaEncryption;
    if (!identifier.isSupported())
        return logger.fail(algorithm::none, "Unsupported algorithm: %s", identifier.oid().c_str());
    if (id == algorithm::ecPublicKey) {
        const CCryptoString oid = OidOfNode(parameters);
        if (oid.isEmpty())
            return logger.fail(algorithm::none, "The curve is not given by its name");
        const CurveFacts* curve = FindCurve(AlgorithmOfOid(oid.view()));
        if (curve == nullptr || !curve->signs)
            return logger.fail(algorithm::none, "Unsupported curve: %s", oid.c_str());
        return curve->id;
    }
    // Parameters are read with the key; they may be absent (RFC 3279, 2.3.2).
    if (id == algorithm::dsa)
        return id;
    if (id != algorithm::rsaEncryption && !IsCurveByItself(id))
        return logger.fail(algorithm::none, "Unsupported algorithm: %s", identifier.oid().c_str());
    // Some leave out the NULL that RSA has.
    const bool isNull = parameters != nullptr && parameters->type() == ElementType::asn1Null;
    if (parameters != nullptr && !(isNull && id == algorithm::rsaEncryption))
        return logger.fail(algorithm::none, "Keys of algorithm %u have no such parameters", id);
    return id;
}

void SetAlgorithm(CCryptoAlgorithmIdentifier& identifier, const CurveFacts& curve)
{
    identifier.setId(curve.signs ? algorithm::ecPublicKey : curve.id);
    identifier.setNullParameters(false);
    if (curve.signs)
        identifier.setParameters(CCryptoASN1ObjectIdentifier(CCryptoString(OidOfAlgorithm(curve.id))).BuildTree().get());
}

bool SetRSAAlgorithm(CCryptoAlgorithmIdentifier& identifier, const element* encoded)
{
    if (encoded != nullptr)
        return identifier.ParseDer(*encoded);
    identifier.setId(algorithm::rsaEncryption);
    identifier.setNullParameters(true);
    return true;
}

/// The key, limited as its algorithm says. \return null for null, and, logged, for limits that are not supported.
KeyPair PairOf(std::unique_ptr<CCryptoRSA> key, const CCryptoAlgorithmIdentifier& identifier)
{
    if (key == nullptr || !IsPss(identifier))
        return PairOf(std::move(key));
    std::optional<PssLimits> limits = ReadPssLimits(identifier);
    return limits ? std::make_unique<CCryptoRSAKeyPair>(std::move(key), std::move(limits)) : nullptr;
}

std::unique_ptr<CCryptoRSA> ReadRSAPublicKey(CCryptoAutoLogger& logger, const element& der)
{
    CCryptoRSAPublicKeyObject object;
    if (!object.ParseDer(der))
        return logger.fail(std::unique_ptr<CCryptoRSA>(), "Not an RSAPublicKey");
    return CCryptoRSA::FromPublic(object.numbers.modulus, object.numbers.publicExponent);
}

std::unique_ptr<CCryptoRSA> ReadRSAPrivateKey(CCryptoAutoLogger& logger, const element& der)
{
    CCryptoRSAPrivateKeyObject object;
    if (!object.ParseDer(der))
        return logger.fail(std::unique_ptr<CCryptoRSA>(), "Not an RSAPrivateKey of two primes");
    return CCryptoRSA::FromPrivate(object.numbers);
}

/// The scalar with the leading zero bytes that some writers leave out, against RFC 5915, 3.
element WholeScalar(const element& scalar, std::uint32_t length)
{
    if (scalar.isEmpty() || scalar.length() >= length)
        return scalar;
    element whole;
    whole.resize(length - scalar.length());
    whole.append(scalar.data(), scalar.length());
    return whole;
}

/// An ECPrivateKey whose curve is `curve`, or is named in it when `curve` is none; both must be the same when both are there.
KeyPair PairOfECPrivateKey(CCryptoAutoLogger& logger, const element& der, algorithm::Id curve)
{
    CCryptoECPrivateKeyObject object;
    if (!object.ParseDer(der))
        return logger.fail(KeyPair(), "Not an ECPrivateKey, or one whose curve is not given by its name");
    if (!object.curveOid.isEmpty()) {
        const CurveFacts* named = FindCurve(AlgorithmOfOid(object.curveOid.view()));
        if (named == nullptr || !named->signs || (curve != algorithm::none && named->id != curve))
            return logger.fail(KeyPair(), "The curve is not supported, or not the one it belongs to");
        curve = named->id;
    }
    if (curve == algorithm::none)
        return logger.fail(KeyPair(), "The curve is not named");
    const element scalar = WholeScalar(object.scalar, FindCurve(curve)->orderBytes);
    if (object.publicPoint.isEmpty())
        return PairOf(CCryptoEC::FromPrivate(curve, scalar.bytes()));
    return PairOf(CCryptoEC::FromPrivate(curve, scalar.bytes(), object.publicPoint.bytes()));
}

/// The private key of the algorithms of RFC 8410 is an OCTET STRING in the OCTET STRING (RFC 8410, 7).
KeyPair PairOfCurvePrivateKey(CCryptoAutoLogger& logger, const element& der, algorithm::Id curve)
{
    CCryptoASN1OctetStringObject object;
    if (!object.ParseDer(der))
        return logger.fail(KeyPair(), "Not a CurvePrivateKey");
    if (IsEddsa(curve))
        return PairOf(EddsaKey::FromSeed(curve, object.bytes().bytes()));
    return PairOf(CCryptoEC::FromPrivate(curve, object.bytes().bytes()));
}

KeyPair PairOfPoint(const element& point, algorithm::Id curve)
{
    if (IsEddsa(curve))
        return PairOf(EddsaKey::FromPublic(curve, point.bytes()));
    return PairOf(CCryptoEC::FromPublic(curve, point.bytes()));
}

KeyPair PairOfDSA(CCryptoAutoLogger& logger, const CCryptoAlgorithmIdentifier& identifier, const element& publicKey)
{
    CCryptoDSAPublicKeyObject object;
    if (!object.ParseDer(publicKey))
        return logger.fail(KeyPair(), "Not a DSAPublicKey");
    if (identifier.parameters() == nullptr)
        return CCryptoDSAKeyPair::WithoutParameters(object.numbers.publicValue);
    CCryptoDSAParametersObject parameters;
    if (!parameters.Parse(identifier.parameters()))
        return logger.fail(KeyPair(), "Not Dss-Parms");
    CCryptoDSANumbers numbers = std::move(parameters.numbers);
    numbers.publicValue = object.numbers.publicValue;
    std::unique_ptr<CCryptoDSA> key = CCryptoDSA::FromPublic(numbers);
    return key != nullptr ? std::make_unique<CCryptoDSAKeyPair>(std::move(key)) : nullptr;
}

KeyPair PairOfPublicKey(CCryptoAutoLogger& logger, const CCryptoAlgorithmIdentifier& identifier, algorithm::Id kind,
                        const element& publicKey)
{
    if (kind == algorithm::dsa)
        return PairOfDSA(logger, identifier, publicKey);
    return kind == algorithm::rsaEncryption ? PairOf(ReadRSAPublicKey(logger, publicKey), identifier)
                                            : PairOfPoint(publicKey, kind);
}

/// Whether the public key that is beside a private one is that of `key`, in whatever form of its point.
bool IsPublicHalf(CCryptoAutoLogger& logger, const CCryptoPrivateKeyInfo& info, algorithm::Id kind, const ICryptoKeyPair& key)
{
    const KeyPair given = PairOfPublicKey(logger, info.algorithm, kind, info.publicKey);
    return given != nullptr && given->publicKeyInfo() == key.publicKeyInfo();
}

element ECPrivateKeyObjectOf(const CCryptoEC& key, bool withCurve)
{
    CCryptoECPrivateKeyObject object;
    object.scalar = key.privateScalar();
    if (withCurve)
        object.curveOid = CCryptoString(OidOfAlgorithm(key.curve().id));
    object.publicPoint = key.publicPoint();
    return object.BuildDer();
}

} // namespace

std::unique_ptr<ICryptoKeyPair> LoadPublicKeyInfo(const element& der)
{
    CCryptoAutoLogger logger("LoadPublicKeyInfo");
    CCryptoSubjectPublicKeyInfo info;
    if (!info.ParseDer(der))
        return logger.fail(KeyPair(), "Not a SubjectPublicKeyInfo");
    const algorithm::Id kind = KindOf(logger, info.algorithm);
    if (kind == algorithm::none)
        return nullptr;
    KeyPair key = PairOfPublicKey(logger, info.algorithm, kind, info.publicKey);
    logger.setResult(key != nullptr);
    return key;
}

element PublicKeyInfoOf(const CCryptoRSA& key, const element* algorithm)
{
    CCryptoSubjectPublicKeyInfo info;
    if (!SetRSAAlgorithm(info.algorithm, algorithm))
        return {};
    info.publicKey = RSAPublicKeyOf(key);
    return info.BuildDer();
}

element PublicKeyInfoOf(const CCryptoEC& key)
{
    CCryptoSubjectPublicKeyInfo info;
    SetAlgorithm(info.algorithm, key.curve());
    info.publicKey = key.publicPoint();
    return info.BuildDer();
}

element PublicKeyInfoOf(const EddsaKey& key)
{
    CCryptoSubjectPublicKeyInfo info;
    info.algorithm.setId(key.curve());
    info.algorithm.setNullParameters(false);
    info.publicKey = key.publicKey();
    return info.BuildDer();
}

element PublicKeyInfoOf(const CCryptoDSANumbers& numbers)
{
    CCryptoSubjectPublicKeyInfo info;
    info.algorithm.setId(algorithm::dsa);
    info.algorithm.setNullParameters(false);
    if (!numbers.prime.isEmpty()) {
        CCryptoDSAParametersObject parameters;
        parameters.numbers = numbers;
        info.algorithm.setParameters(parameters.BuildTree().get());
    }
    CCryptoDSAPublicKeyObject key;
    key.numbers = numbers;
    info.publicKey = key.BuildDer();
    return info.BuildDer();
}

std::unique_ptr<ICryptoKeyPair> LoadPrivateKeyInfo(const element& der)
{
    CCryptoAutoLogger logger("LoadPrivateKeyInfo");
    CCryptoPrivateKeyInfo info;
    if (!info.ParseDer(der))
        return logger.fail(KeyPair(), "Not a PrivateKeyInfo");
    const algorithm::Id kind = KindOf(logger, info.algorithm);
    if (kind == algorithm::none)
        return nullptr;
    if (kind == algorithm::dsa)
        return logger.fail(KeyPair(), "DSA only verifies: its private keys are not supported");
    KeyPair key;
    if (kind == algorithm::rsaEncryption)
        key = PairOf(ReadRSAPrivateKey(logger, info.privateKey), info.algorithm);
    else if (IsCurveByItself(kind))
        key = PairOfCurvePrivateKey(logger, info.privateKey, kind);
    else
        key = PairOfECPrivateKey(logger, info.privateKey, kind);
    if (key != nullptr && !info.publicKey.isEmpty() && !IsPublicHalf(logger, info, kind, *key))
        return logger.fail(KeyPair(), "The public key is not the private key's");
    logger.setResult(key != nullptr);
    return key;
}

element PrivateKeyInfoOf(const CCryptoRSA& key, const element* algorithm)
{
    CCryptoAutoLogger logger("PrivateKeyInfoOf");
    if (!key.isPrivate())
        return logger.fail(element(), "The key has no private half");
    CCryptoPrivateKeyInfo info;
    if (!SetRSAAlgorithm(info.algorithm, algorithm))
        return logger.fail(element(), "Not an AlgorithmIdentifier");
    info.privateKey = RSAPrivateKeyOf(key);
    logger.setResult(true);
    return info.BuildDer();
}

element PrivateKeyInfoOf(const CCryptoEC& key)
{
    CCryptoAutoLogger logger("PrivateKeyInfoOf");
    if (!key.hasPrivate())
        return logger.fail(element(), "The key has no private half");
    CCryptoPrivateKeyInfo info;
    SetAlgorithm(info.algorithm, key.curve());
    info.privateKey =
        key.curve().signs ? ECPrivateKeyObjectOf(key, false) : CCryptoASN1OctetStringObject(key.privateScalar()).BuildDer();
    logger.setResult(true);
    return info.BuildDer();
}

element PrivateKeyInfoOf(const EddsaKey& key)
{
    CCryptoAutoLogger logger("PrivateKeyInfoOf");
    if (!key.hasPrivate())
        return logger.fail(element(), "The key has no private half");
    CCryptoPrivateKeyInfo info;
    info.algorithm.setId(key.curve());
    info.algorithm.setNullParameters(false);
    info.privateKey = CCryptoASN1OctetStringObject(key.seed()).BuildDer();
    logger.setResult(true);
    return info.BuildDer();
}

std::unique_ptr<ICryptoKeyPair> LoadRSAPublicKey(const element& der)
{
    CCryptoAutoLogger logger("LoadRSAPublicKey");
    KeyPair key = PairOf(ReadRSAPublicKey(logger, der));
    logger.setResult(key != nullptr);
    return key;
}

std::unique_ptr<ICryptoKeyPair> LoadRSAPrivateKey(const element& der)
{
    CCryptoAutoLogger logger("LoadRSAPrivateKey");
    KeyPair key = PairOf(ReadRSAPrivateKey(logger, der));
    logger.setResult(key != nullptr);
    return key;
}

element RSAPublicKeyOf(const CCryptoRSA& key)
{
    CCryptoRSAPublicKeyObject object;
    object.numbers.modulus = key.modulus();
    object.numbers.publicExponent = key.publicExponent();
    return object.BuildDer();
}

element RSAPrivateKeyOf(const CCryptoRSA& key)
{
    CCryptoAutoLogger logger("RSAPrivateKeyOf");
    if (!key.isPrivate())
        return logger.fail(element(), "The key has no private half");
    CCryptoRSAPrivateKeyObject object;
    object.numbers = key.numbers();
    logger.setResult(true);
    return object.BuildDer();
}

std::unique_ptr<ICryptoKeyPair> LoadECPrivateKey(const element& der)
{
    CCryptoAutoLogger logger("LoadECPrivateKey");
    KeyPair key = PairOfECPrivateKey(logger, der, algorithm::none);
    if (key != nullptr)
        logger.setResult(true);
    return key;
}

element ECPrivateKeyOf(const CCryptoEC& key)
{
    CCryptoAutoLogger logger("ECPrivateKeyOf");
    if (!key.hasPrivate() || !key.curve().signs)
        return logger.fail(element(), "The key has no private half, or no form of its own for it");
    logger.setResult(true);
    return ECPrivateKeyObjectOf(key, true);
}

} // namespace ccrypto
