#include "pki/keys/key_objects.h"

#include "asn1/der/der_parser.h"
#include "asn1/types/asn1_values.h"
#include "core/diagnostics/auto_logger.h"

#include <iterator>

using namespace ccrypto;

namespace {

constexpr const char* publicKeyInfoTemplate = "SEQUENCE[CONSTRUCTED] {algorithmIdentifier,BIT_STRING[PRIMITIVE]{#00,publicKey}}";
constexpr const char* privateKeyInfoTemplate =
    "SEQUENCE{INTEGER=version,algorithmIdentifier,OCTET_STRING [PRIMITIVE]{PrivateKey}"
    "CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL){attributes}CONTEXT_SPECIFIC[1,PRIMITIVE](OPTIONAL){publicKey}}";
constexpr const char* encryptedPrivateKeyInfoTemplate = "SEQUENCE{algorithmIdentifier,OCTET_STRING[PRIMITIVE]{encryptedData}}";
constexpr const char* rsaPublicKeyTemplate = "SEQUENCE{INTEGER=modulus,INTEGER=publicExponent}";
constexpr const char* rsaPrivateKeyTemplate =
    "SEQUENCE{INTEGER=version,INTEGER=modulus,INTEGER=publicExponent,INTEGER=privateExponent,INTEGER=prime1,INTEGER=prime2,"
    "INTEGER=exponent1,INTEGER=exponent2,INTEGER=coefficient}";
constexpr const char* ecPrivateKeyTemplate =
    "SEQUENCE{INTEGER=version,OCTET_STRING[PRIMITIVE]{privateKey},CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL){parameters}"
    "CONTEXT_SPECIFIC[1,CONSTRUCTED](OPTIONAL){BIT_STRING[PRIMITIVE]{#00,publicKey}}}";

constexpr const char* dsaParametersTemplate = "SEQUENCE{INTEGER=p,INTEGER=q,INTEGER=g}";
constexpr const char* dsaPublicKeyTemplate = "INTEGER=y";

template <typename Numbers>
struct NamedNumber {
    const char* name;
    element Numbers::*number;
};

template <typename Numbers>
using NumberNames = std::span<const NamedNumber<Numbers>>;

constexpr NamedNumber<CCryptoRSANumbers> rsaNumberNames[] = {
    {"modulus", &CCryptoRSANumbers::modulus},
    {"publicExponent", &CCryptoRSANumbers::publicExponent},
    {"privateExponent", &CCryptoRSANumbers::privateExponent},
    {"prime1", &CCryptoRSANumbers::prime1},
    {"prime2", &CCryptoRSANumbers::prime2},
    {"exponent1", &CCryptoRSANumbers::exponent1},
    {"exponent2", &CCryptoRSANumbers::exponent2},
    {"coefficient", &CCryptoRSANumbers::coefficient},
};
constexpr NumberNames<CCryptoRSANumbers> rsaNumbers{rsaNumberNames};
constexpr NumberNames<CCryptoRSANumbers> publicRsaNumbers = rsaNumbers.first(2);

constexpr NamedNumber<CCryptoDSANumbers> dsaNumberNames[] = {
    {"p", &CCryptoDSANumbers::prime},
    {"q", &CCryptoDSANumbers::order},
    {"g", &CCryptoDSANumbers::generator},
    {"y", &CCryptoDSANumbers::publicValue},
};
constexpr NumberNames<CCryptoDSANumbers> dsaParameters{dsaNumberNames, 3};
constexpr NumberNames<CCryptoDSANumbers> dsaPublicValue{dsaNumberNames + 3, 1};

template <typename Numbers>
bool ReadNumbers(const CCryptoASN1Object& object, NumberNames<Numbers> names, Numbers& numbers)
{
    for (const NamedNumber<Numbers>& entry : names) {
        element value = object.findBytes(entry.name);
        if (value.negative() || value.isEmpty())
            return false;
        numbers.*entry.number = element(value.data(), value.length());
    }
    return true;
}

template <typename Numbers>
bool FillNumbers(CCryptoParser& parser, NumberNames<Numbers> names, const Numbers& numbers)
{
    for (const NamedNumber<Numbers>& entry : names) {
        const element& value = numbers.*entry.number;
        if (value.isEmpty() || !parser.fill(entry.name, element(value.data(), value.length(), ElementType::integer)))
            return false;
    }
    return true;
}

/// A version is one byte long, whatever follows in later standards.
bool HasVersion(const CCryptoASN1Object& object, std::uint32_t first, std::uint32_t last)
{
    const element version = object.findBytes("version");
    return version.length() == 1 && !version.negative() && version.toWord32() >= first && version.toWord32() <= last;
}

/// The match ignores what follows the template's items.
bool HasItems(const elementNode* sequence, std::uint32_t count)
{
    const elementNode* item = sequence->content();
    for (; item != nullptr && count != 0; --count)
        item = item->next();
    return item == nullptr && count == 0;
}

/// Whether the first `count` items are followed by none but attributes, the public key and what a later OneAsymmetricKey adds
/// (RFC 5958, 2).
bool HasOnlyTaggedItemsAfter(const elementNode* sequence, std::uint32_t count)
{
    const elementNode* item = sequence->content();
    for (; item != nullptr; item = item->next()) {
        if (count != 0)
            --count;
        else if (item->type() != ElementType::contextSpecific)
            return false;
    }
    return count == 0;
}

/// An algorithm that was read and that the table lacks is written as it was read.
bool FillAlgorithm(CCryptoParser& parser, CCryptoAlgorithmIdentifier& algorithm)
{
    const ElementNodePtr tree =
        algorithm.isSupported() ? algorithm.BuildTree() : CCryptoDERParser().Decode(algorithm.readOctets().bytes());
    return tree != nullptr && parser.fill_tree("algorithmIdentifier", tree.get());
}

} // namespace

namespace ccrypto {

CCryptoString OidOfNode(const elementNode* node)
{
    if (node == nullptr || node->type() != ElementType::objectIdentifier)
        return {};
    return CCryptoASN1ObjectIdentifier(node).oid();
}

} // namespace ccrypto

CCryptoSubjectPublicKeyInfo::CCryptoSubjectPublicKeyInfo() : CCryptoASN1Object(publicKeyInfoTemplate) {}

bool CCryptoSubjectPublicKeyInfo::BuildNode()
{
    return FillAlgorithm(builder(), algorithm) && builder().fill("publicKey", Octets(publicKey));
}

bool CCryptoSubjectPublicKeyInfo::ParseNode()
{
    publicKey = Octets(findBytes("publicKey"));
    return HasItems(data(), 2) && algorithm.Parse(find("algorithmIdentifier"));
}

CCryptoPrivateKeyInfo::CCryptoPrivateKeyInfo() : CCryptoASN1Object(privateKeyInfoTemplate)
{
    allowSurplus();
}

bool CCryptoPrivateKeyInfo::BuildNode()
{
    return builder().fill("version", element(std::uint32_t{0})) && FillAlgorithm(builder(), algorithm) &&
           builder().fill("PrivateKey", Octets(privateKey));
}

bool CCryptoPrivateKeyInfo::ParseNode()
{
    privateKey = Octets(findBytes("PrivateKey"));
    if (isBound("publicKey")) {
        // A BIT STRING under an implicit tag: the number of unused bits comes first.
        const element bits = findBytes("publicKey");
        if (bits.length() < 2 || bits[0] != 0)
            return false;
        publicKey = element(bits.data() + 1, bits.length() - 1);
    }
    return HasVersion(*this, 0, 1) && HasOnlyTaggedItemsAfter(data(), 3) && algorithm.Parse(find("algorithmIdentifier"));
}

CCryptoEncryptedPrivateKeyInfo::CCryptoEncryptedPrivateKeyInfo() : CCryptoASN1Object(encryptedPrivateKeyInfoTemplate) {}

bool CCryptoEncryptedPrivateKeyInfo::BuildNode()
{
    return FillAlgorithm(builder(), algorithm) && builder().fill("encryptedData", Octets(encryptedData));
}

bool CCryptoEncryptedPrivateKeyInfo::ParseNode()
{
    encryptedData = Octets(findBytes("encryptedData"));
    return HasItems(data(), 2) && algorithm.Parse(find("algorithmIdentifier"));
}

CCryptoRSAPublicKeyObject::CCryptoRSAPublicKeyObject() : CCryptoASN1Object(rsaPublicKeyTemplate) {}

bool CCryptoRSAPublicKeyObject::BuildNode()
{
    return FillNumbers(builder(), publicRsaNumbers, numbers);
}

bool CCryptoRSAPublicKeyObject::ParseNode()
{
    return HasItems(data(), 2) && ReadNumbers(*this, publicRsaNumbers, numbers);
}

CCryptoRSAPrivateKeyObject::CCryptoRSAPrivateKeyObject() : CCryptoASN1Object(rsaPrivateKeyTemplate) {}

bool CCryptoRSAPrivateKeyObject::BuildNode()
{
    return builder().fill("version", element(std::uint32_t{0})) && FillNumbers(builder(), rsaNumbers, numbers);
}

bool CCryptoRSAPrivateKeyObject::ParseNode()
{
    return HasVersion(*this, 0, 0) && HasItems(data(), 9) && ReadNumbers(*this, rsaNumbers, numbers);
}

CCryptoDSAParametersObject::CCryptoDSAParametersObject() : CCryptoASN1Object(dsaParametersTemplate) {}

bool CCryptoDSAParametersObject::BuildNode()
{
    return FillNumbers(builder(), dsaParameters, numbers);
}

bool CCryptoDSAParametersObject::ParseNode()
{
    return ReadNumbers(*this, dsaParameters, numbers);
}

CCryptoDSAPublicKeyObject::CCryptoDSAPublicKeyObject() : CCryptoASN1Object(dsaPublicKeyTemplate) {}

bool CCryptoDSAPublicKeyObject::BuildNode()
{
    return FillNumbers(builder(), dsaPublicValue, numbers);
}

bool CCryptoDSAPublicKeyObject::ParseNode()
{
    return ReadNumbers(*this, dsaPublicValue, numbers);
}

CCryptoECPrivateKeyObject::CCryptoECPrivateKeyObject() : CCryptoASN1Object(ecPrivateKeyTemplate) {}

void CCryptoECPrivateKeyObject::ClearFields()
{
    scalar = {};
    curveOid = {};
    publicPoint = {};
}

bool CCryptoECPrivateKeyObject::BuildNode()
{
    if (!builder().fill("version", element(std::uint32_t{1})) || !builder().fill("privateKey", Octets(scalar)))
        return false;
    if (!curveOid.isEmpty()) {
        const ElementNodePtr name = CCryptoASN1ObjectIdentifier(curveOid).BuildTree();
        if (name == nullptr || !builder().fill_tree("parameters", name.get()))
            return false;
    }
    return publicPoint.isEmpty() || builder().fill("publicKey", Octets(publicPoint));
}

bool CCryptoECPrivateKeyObject::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoECPrivateKeyObject::ParseNode");
    if (!HasVersion(*this, 1, 1))
        return logger.fail(false, "The version of the key is not 1");
    if (!HasItems(data(), 2u + isBound("parameters") + isBound("publicKey")))
        return logger.fail(false, "There is more than a key in it");
    scalar = Octets(findBytes("privateKey"));
    publicPoint = Octets(findBytes("publicKey"));
    if (const elementNode* parameters = find("parameters"); parameters != nullptr) {
        curveOid = OidOfNode(parameters);
        if (curveOid.isEmpty())
            return logger.fail(false, "The curve is not given by its name");
    }
    return logger.setResult(true);
}
