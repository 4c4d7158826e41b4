#include "pki/ocsp/cert_id.h"

#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"
#include "pki/x509/certificate.h"
#include "pki/x509/field_reading.h"

#include <algorithm>
#include <iterator>

using namespace ccrypto;

namespace {

constexpr const char* certIdTemplate =
    "SEQUENCE[CONSTRUCTED] { hashAlgorithm,OCTET_STRING=issuerNameHash,OCTET_STRING=issuerKeyHash,INTEGER=serialNumber }";

constexpr algorithm::Id certIdHashes[] = {algorithm::sha1, algorithm::sha224, algorithm::sha256, algorithm::sha384,
                                          algorithm::sha512};

bool IsCertIdHash(algorithm::Id hash)
{
    return std::ranges::find(certIdHashes, hash) != std::end(certIdHashes);
}

element CertIdDigest(algorithm::Id hash, const element& octets)
{
    const std::unique_ptr<ICryptoHash> function = ICryptoHash::Create(hash);
    return function != nullptr ? function->digestOf(octets.bytes()) : element();
}

bool SameCertIdOctets(const element& left, const element& right)
{
    return left.view() == right.view();
}

} // namespace

namespace CCryptoOCSP {

CCertID::CCertID() : CStructure(certIdTemplate) {}

CCertID::CCertID(const elementNode* node) : CCertID()
{
    construct(node);
}

void CCertID::ClearFields()
{
    hashAlgorithm.setId(algorithm::none);
    hashAlgorithm.setParameters(nullptr);
    issuerNameHash = issuerKeyHash = serialNumber = {};
}

bool CCertID::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CCertID::ParseNode");
    if (!hashAlgorithm.Parse(find("hashAlgorithm")))
        return logger.setResult(false);
    issuerNameHash = Octets(findBytes("issuerNameHash"));
    issuerKeyHash = Octets(findBytes("issuerKeyHash"));
    serialNumber = Octets(findBytes("serialNumber"));
    if (serialNumber.isEmpty() || serialNumber.length() > maxSerialNumber)
        return logger.fail(false, "A serial number of %u bytes", serialNumber.length());
    // What is answered repeats the number, and must be DER.
    if (!IsMinimalInteger(serialNumber.bytes()))
        return logger.fail(false, "The serial number has more octets than it needs");
    return logger.setResult(true);
}

bool CCertID::SetTemplateValues()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CCertID::SetTemplateValues");
    if (serialNumber.isEmpty() || issuerNameHash.isEmpty() || issuerKeyHash.isEmpty())
        return logger.fail(false, "A hash or the serial number is missing");
    return logger.setResult(fillAlgorithm("hashAlgorithm", hashAlgorithm) &&
                            builder().fill("issuerNameHash", Octets(issuerNameHash)) &&
                            builder().fill("issuerKeyHash", Octets(issuerKeyHash)) &&
                            builder().fill("serialNumber", internal::IntegerOfOctets(serialNumber)));
}

bool CCertID::CopyOf(CCertID& other)
{
    return Parse(other.BuildTree().get());
}

bool CCertID::Identify(const CCrypto_X509_Certificate& issuer, const element& serial, algorithm::Id hash)
{
    CCryptoAutoLogger logger("CCryptoOCSP::CCertID::Identify");
    ClearFields();
    if (!IsCertIdHash(hash))
        return logger.fail(false, "Unsupported hash function");
    if (!issuer.isLoaded())
        return logger.fail(false, "There is no issuer");
    hashAlgorithm.setId(hash);
    // Readers that compare octets expect the NULL, which RFC 6960's examples have, too.
    hashAlgorithm.setNullParameters(true);
    issuerNameHash = CertIdDigest(hash, issuer.subject().GetDerEncodedElement());
    issuerKeyHash = CertIdDigest(hash, issuer.publicKeyBits());
    serialNumber = Octets(serial);
    return logger.setResult(true);
}

} // namespace CCryptoOCSP

namespace ccrypto {

algorithm::Id CertIdHash(const CCryptoOCSP::CCertID& id)
{
    const elementNode* const parameters = id.hashAlgorithm.parameters();
    const bool isPlain = parameters == nullptr || parameters->type() == ElementType::asn1Null;
    return isPlain && IsCertIdHash(id.hashAlgorithm.id()) ? id.hashAlgorithm.id() : algorithm::none;
}

bool CertIdMatcher::isOfIssuer(const CCryptoOCSP::CCertID& id)
{
    const algorithm::Id hash = CertIdHash(id);
    if (hash == algorithm::none)
        return false;
    auto known = hashes_.find(hash);
    if (known == hashes_.end()) {
        const Hashes made = {CertIdDigest(hash, issuer_.subject().GetDerEncodedElement()),
                             CertIdDigest(hash, issuer_.publicKeyBits())};
        known = hashes_.emplace(hash, made).first;
    }
    return SameCertIdOctets(id.issuerNameHash, known->second.name) && SameCertIdOctets(id.issuerKeyHash, known->second.key);
}

bool CertIdMatcher::matches(const CCryptoOCSP::CCertID& id, const element& serialNumber)
{
    return SameCertIdOctets(id.serialNumber, serialNumber) && isOfIssuer(id);
}

} // namespace ccrypto
