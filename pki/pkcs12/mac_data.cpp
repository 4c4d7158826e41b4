#include "pki/pkcs12/mac_data.h"

#include "asn1/types/algorithm_table.h"
#include "asn1/types/asn1_values.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/kdf/key_derivation.h"
#include "crypto/mac/hmac.h"
#include "pki/cms/tree_filling.h"

#include <algorithm>
#include <iterator>

using namespace ccrypto;

namespace {

constexpr const char* pbmac1Oid = "1.2.840.113549.1.5.14";
constexpr const char* pbmac1Template =
    "SEQUENCE{SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.5.12\" -- pkcs5PBKDF2\n"
    "SEQUENCE{OCTET_STRING[PRIMITIVE]{salt},INTEGER=iterations,INTEGER=keyLength,prf(OPTIONAL)}}messageAuthScheme}";
constexpr const char* pbmac1IdentifierTemplate = "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.5.14\",parameters}";
constexpr const char* hmacTemplate = "SEQUENCE{OBJECT_IDENTIFIER=oid,NULL}";
constexpr const char* macDataTemplate =
    "SEQUENCE{SEQUENCE{digestAlgorithm,OCTET_STRING[PRIMITIVE]{digest}}OCTET_STRING[PRIMITIVE]{macSalt}"
    "INTEGER(OPTIONAL)=iterations}";

struct MacHash {
    algorithm::Id hash;
    algorithm::Id hmac;
    std::uint32_t length;
};

constexpr MacHash macHashes[] = {
    {algorithm::sha1, algorithm::hmacSha1, 20},     {algorithm::sha224, algorithm::hmacSha224, 28},
    {algorithm::sha256, algorithm::hmacSha256, 32}, {algorithm::sha384, algorithm::hmacSha384, 48},
    {algorithm::sha512, algorithm::hmacSha512, 64},
};

const MacHash* FindMacHash(algorithm::Id hash)
{
    const auto* const found = std::ranges::find(macHashes, hash, &MacHash::hash);
    return found != std::end(macHashes) ? found : nullptr;
}

/// Of a bound INTEGER that is positive and fits 32 bits; 0 for any other.
std::uint32_t PositiveNumber(const CCryptoASN1Object& object, const char* name)
{
    return object.findBytes(name).exactWord32().value_or(0);
}

/// Hashes and HMACs have none, or NULL.
bool HasNoParameters(const CCryptoAlgorithmIdentifier& identifier)
{
    return identifier.parameters() == nullptr || identifier.parameters()->type() == ElementType::asn1Null;
}

/// Of an HMAC, by the OID of RFC 8018, B.1.1: the algorithm table has another one for SHA-1, which readers of PBKDF2 do not know.
ElementNodePtr HmacTree(algorithm::Id id)
{
    CCryptoParser parser = TemplateToFill(hmacTemplate);
    const element oid(id == algorithm::hmacSha1 ? "1.2.840.113549.2.7" : OidOfAlgorithm(id));
    return parser.fill("oid", oid) ? parser.takeRoot() : nullptr;
}

} // namespace

CCryptoPBMAC1Parameters::CCryptoPBMAC1Parameters() : CCryptoASN1Object(pbmac1Template) {}

void CCryptoPBMAC1Parameters::ClearFields()
{
    salt = {};
    iterations = keyLength = 0;
    prf = algorithm::hmacSha1;
    mac = algorithm::none;
}

bool CCryptoPBMAC1Parameters::BuildNode()
{
    // The default is left out (X.690, 11.5).
    if (prf != algorithm::hmacSha1 && !FillTree(builder(), "prf", HmacTree(prf)))
        return false;
    return builder().fill("salt", Octets(salt)) && builder().fill("iterations", element(iterations)) &&
           builder().fill("keyLength", element(keyLength)) && FillTree(builder(), "messageAuthScheme", HmacTree(mac));
}

bool CCryptoPBMAC1Parameters::ParseNode()
{
    salt = Octets(findBytes("salt"));
    iterations = PositiveNumber(*this, "iterations");
    keyLength = PositiveNumber(*this, "keyLength");
    CCryptoAlgorithmIdentifier identifier;
    if (const elementNode* const node = find("prf"); node != nullptr) {
        if (!identifier.Parse(node) || !HasNoParameters(identifier))
            return false;
        prf = identifier.id();
    }
    if (!identifier.Assign(find("messageAuthScheme")) || !HasNoParameters(identifier))
        return false;
    mac = identifier.id();
    return iterations != 0 && keyLength != 0;
}

CCryptoPKCS12MacData::CCryptoPKCS12MacData() : CCryptoASN1Object(macDataTemplate) {}

void CCryptoPKCS12MacData::ClearFields()
{
    digestAlgorithm_.clear();
    isPBMAC1_ = isRead_ = false;
    pbmac1_.clear();
    mac_ = salt_ = {};
    iterations_ = 1;
}

bool CCryptoPKCS12MacData::BuildNode()
{
    ElementNodePtr identifier;
    if (isPBMAC1_) {
        CCryptoParser parser = TemplateToFill(pbmac1IdentifierTemplate);
        if (!FillTree(parser, "parameters", pbmac1_.BuildTree()))
            return false;
        identifier = parser.takeRoot();
    } else {
        identifier = digestAlgorithm_.BuildTree();
    }
    // The default is left out (X.690, 11.5).
    if (iterations_ != 1 && !builder().fill("iterations", element(iterations_)))
        return false;
    return FillTree(builder(), "digestAlgorithm", std::move(identifier)) && builder().fill("digest", Octets(mac_)) &&
           builder().fill("macSalt", Octets(salt_));
}

bool CCryptoPKCS12MacData::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS12MacData::ParseNode");
    if (!digestAlgorithm_.Parse(find("digestAlgorithm")))
        return logger.setResult(false);
    mac_ = Octets(findBytes("digest"));
    salt_ = Octets(findBytes("macSalt"));
    if (isBound("iterations"))
        iterations_ = PositiveNumber(*this, "iterations");
    isPBMAC1_ = digestAlgorithm_.oid() == pbmac1Oid;
    isRead_ = isPBMAC1_ && pbmac1_.Parse(digestAlgorithm_.parameters());
    return logger.setResult(true);
}

algorithm::Id CCryptoPKCS12MacData::hash() const
{
    return isPBMAC1_ ? HashOfHMAC(pbmac1_.mac) : digestAlgorithm_.id();
}

bool CCryptoPKCS12MacData::isSupported() const
{
    CCryptoAutoLogger logger("CCryptoPKCS12MacData::isSupported");
    const MacHash* const row = FindMacHash(hash());
    if (row == nullptr || mac_.length() != row->length)
        return logger.fail(false, "The algorithm of the MAC is not supported");
    if (!isPBMAC1_ && !HasNoParameters(digestAlgorithm_))
        return logger.fail(false, "The algorithm of the MAC has parameters");
    if (!isPBMAC1_)
        return logger.setResult(CCryptoKeyDerivation::Allows(row->hash, salt_.bytes(), iterations_, row->length));
    if (!isRead_ || pbmac1_.mac != row->hmac || !IsHMAC(pbmac1_.prf))
        return logger.fail(false, "The algorithm of the MAC is not supported");
    if (pbmac1_.keyLength < minKey)
        return logger.fail(false, "The key of the MAC is too short");
    return logger.setResult(CCryptoKeyDerivation::Allows(pbmac1_.prf, pbmac1_.salt.bytes(), pbmac1_.iterations, pbmac1_.keyLength));
}

void CCryptoPKCS12MacData::set(algorithm::Id hash, std::uint32_t iterations, const element& salt, bool isPBMAC1)
{
    ClearFields();
    isPBMAC1_ = isRead_ = isPBMAC1;
    salt_ = salt;
    const MacHash* const row = FindMacHash(hash);
    if (!isPBMAC1) {
        digestAlgorithm_.setId(hash);
        digestAlgorithm_.setNullParameters(true);
        iterations_ = iterations;
    } else if (row != nullptr) {
        pbmac1_.salt = salt;
        pbmac1_.iterations = iterations;
        pbmac1_.keyLength = row->length;
        pbmac1_.prf = pbmac1_.mac = row->hmac;
    }
}

element CCryptoPKCS12MacData::deriveKey(std::optional<std::string_view> password) const
{
    if (isPBMAC1_) {
        const std::string_view text = password.value_or("");
        const std::span octets(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
        return CCryptoKeyDerivation::PBKDF2(pbmac1_.prf, octets, pbmac1_.salt.bytes(), pbmac1_.iterations, pbmac1_.keyLength);
    }
    const MacHash* const row = FindMacHash(hash());
    const element units = password ? CCryptoKeyDerivation::PKCS12Password(*password) : element();
    if (row == nullptr || (password && units.isEmpty()))
        return {};
    return CCryptoKeyDerivation::PKCS12(row->hash, CCryptoKeyDerivation::PKCS12Use::mac, units.bytes(), salt_.bytes(), iterations_,
                                        row->length);
}

element CCryptoPKCS12MacData::compute(std::optional<std::string_view> password, std::span<const std::uint8_t> content) const
{
    const element key = deriveKey(password);
    const auto hmac = CCryptoHMAC::Create(hash());
    if (key.isEmpty() || hmac == nullptr || !hmac->setKey(key.bytes()))
        return {};
    hmac->update(content.data(), content.size());
    element mac;
    mac.resize(hmac->macSize());
    return hmac->final(mac.data()) ? mac : element();
}

bool CCryptoPKCS12MacData::sign(std::string_view password, std::span<const std::uint8_t> content)
{
    CCryptoAutoLogger logger("CCryptoPKCS12MacData::sign");
    mac_ = compute(password, content);
    return logger.setResult(!mac_.isEmpty());
}

bool CCryptoPKCS12MacData::verify(std::optional<std::string_view> password, std::span<const std::uint8_t> content) const
{
    CCryptoAutoLogger logger("CCryptoPKCS12MacData::verify");
    if (!isSupported())
        return logger.fail(false);
    const element computed = compute(password, content);
    // The comparison of element takes time that depends on the lengths alone.
    return logger.setResult(!computed.isEmpty() && computed == mac_);
}
