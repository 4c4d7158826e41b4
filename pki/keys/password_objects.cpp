#include "pki/keys/password_objects.h"

#include "asn1/types/algorithm_identifier.h"
#include "asn1/types/algorithm_table.h"

using namespace ccrypto;

namespace {

constexpr const char* pbes2Template =
    "SEQUENCE{SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.5.12\" -- pkcs5PBKDF2\n"
    "SEQUENCE {OCTET_STRING { salt },INTEGER = iterations,INTEGER (OPTIONAL) = keyLength,prf (OPTIONAL)}}"
    "SEQUENCE {OBJECT_IDENTIFIER = encryptionAlgorithm,OCTET_STRING = IV}}";
constexpr const char* pbes2WithRC2Template =
    "SEQUENCE{SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.5.12\" -- pkcs5PBKDF2\n"
    "SEQUENCE {OCTET_STRING { salt },INTEGER = iterations,INTEGER (OPTIONAL) = keyLength,prf (OPTIONAL)}}"
    "SEQUENCE {OBJECT_IDENTIFIER = encryptionAlgorithm,SEQUENCE{INTEGER=rc2Version,OCTET_STRING = IV}}}";
constexpr const char* pkcs12Template = "SEQUENCE{OCTET_STRING{salt},INTEGER=iterations}";

/// Of an INTEGER that is there, is not negative and fits 32 bits.
bool ReadNumber(const CCryptoASN1Object& object, const char* name, std::uint32_t& number)
{
    const element value = object.findBytes(name);
    const bool fits = value.length() <= 4 || (value.length() == 5 && value[0] == 0);
    number = value.toWord32();
    return !value.isEmpty() && !value.negative() && fits;
}

/// Effective key bits of an rc2ParameterVersion (RFC 8018, B.2.3); 0 for an unknown one.
std::uint32_t EffectiveBitsOfVersion(std::uint32_t version)
{
    switch (version) {
    case 160:
        return 40;
    case 120:
        return 64;
    case 58:
        return 128;
    default:
        return version >= 256 && version <= 1024 ? version : 0;
    }
}

} // namespace

CCryptoPBES2Parameters::CCryptoPBES2Parameters(Form form)
    : CCryptoASN1Object(form == Form::plain ? pbes2Template : pbes2WithRC2Template), form_(form)
{
}

void CCryptoPBES2Parameters::ClearFields()
{
    salt = {};
    iterations = 0;
    keyLength = 0;
    prf = algorithm::hmacSha1;
    cipher = algorithm::none;
    rc2EffectiveBits = 0;
    iv = {};
}

bool CCryptoPBES2Parameters::BuildNode()
{
    if (form_ != Form::plain || *OidOfAlgorithm(cipher) == '\0')
        return false;
    // The default is left out (X.690, 11.5).
    if (prf != algorithm::hmacSha1) {
        const ElementNodePtr tree = CCryptoAlgorithmIdentifier(prf, true).BuildTree();
        if (tree == nullptr || !builder().fill_tree("prf", tree.get()))
            return false;
    }
    return builder().fill("salt", Octets(salt)) && builder().fill("iterations", element(iterations)) &&
           builder().fill("encryptionAlgorithm", element(OidOfAlgorithm(cipher))) && builder().fill("IV", Octets(iv));
}

bool CCryptoPBES2Parameters::ParseNode()
{
    salt = Octets(findBytes("salt"));
    iv = Octets(findBytes("IV"));
    if (!ReadNumber(*this, "iterations", iterations))
        return false;
    // A key length that is given is not 0.
    if (isBound("keyLength") && (!ReadNumber(*this, "keyLength", keyLength) || keyLength == 0))
        return false;
    if (const elementNode* node = find("prf"); node != nullptr) {
        CCryptoAlgorithmIdentifier identifier;
        if (!identifier.Parse(node))
            return false;
        prf = identifier.id();
    }
    cipher = AlgorithmOfOid(findText("encryptionAlgorithm").view());
    if (form_ == Form::rc2) {
        std::uint32_t version = 0;
        if (!ReadNumber(*this, "rc2Version", version) || cipher != algorithm::rc2Cbc)
            return false;
        rc2EffectiveBits = EffectiveBitsOfVersion(version);
    }
    return cipher != algorithm::none;
}

CCryptoPKCS12Parameters::CCryptoPKCS12Parameters() : CCryptoASN1Object(pkcs12Template) {}

void CCryptoPKCS12Parameters::ClearFields()
{
    salt = {};
    iterations = 0;
}

bool CCryptoPKCS12Parameters::BuildNode()
{
    return builder().fill("salt", Octets(salt)) && builder().fill("iterations", element(iterations));
}

bool CCryptoPKCS12Parameters::ParseNode()
{
    salt = Octets(findBytes("salt"));
    return ReadNumber(*this, "iterations", iterations);
}
