#include "pki/ocsp/basic_response.h"

#include "asn1/der/der_cursor.h"
#include "asn1/der/der_parser.h"
#include "asn1/types/bit_string.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"
#include "pki/x509/name.h"

using namespace ccrypto;

namespace {

constexpr const char* basicResponseTemplate = "SEQUENCE[CONSTRUCTED] {tbsResponseData,signatureAlgorithm,signature,"
                                              "CONTEXT_SPECIFIC(OPTIONAL)[0,CONSTRUCTED] { SEQUENCE[CONSTRUCTED]{ certs } }}";

constexpr std::uint8_t basicResponseSequence = 0x30;

element ResponderKeyHash(const CCrypto_X509_Certificate& certificate)
{
    const std::unique_ptr<ICryptoHash> hash = ICryptoHash::Create(algorithm::sha1);
    return hash != nullptr ? hash->digestOf(certificate.publicKeyBits().bytes()) : element();
}

/// The identifier of a responder is one of the algorithm table, which lacks SHA-384 with RSA and SHA-224 with ECDSA. Signatures
/// that are not named after their hash have identifiers of their own.
bool IsExpressedByTable(const CCryptoAlgorithmIdentifier& identifier)
{
    const std::optional<SignatureAlgorithm> algorithm = ReadSignatureAlgorithm(identifier);
    if (!algorithm)
        return false;
    const bool isNamedAfterHash =
        algorithm->kind == SignatureAlgorithm::Kind::rsaPkcs1 || algorithm->kind == SignatureAlgorithm::Kind::ecdsa;
    return identifier.isSupported() || !isNamedAfterHash;
}

const char* VerificationText(SignatureResult result)
{
    switch (result) {
    case SignatureResult::good:
        return "the signature is good";
    case SignatureResult::bad:
        return "the signature is not the responder's over this response";
    default:
        return "the algorithm is not supported, or not the key's";
    }
}

} // namespace

namespace CCryptoOCSP {

CBasicOCSPResponse::CBasicOCSPResponse() : CStructure(basicResponseTemplate) {}

CBasicOCSPResponse::CBasicOCSPResponse(const elementNode* node) : CBasicOCSPResponse()
{
    construct(node);
}

void CBasicOCSPResponse::ClearFields()
{
    tbsResponseData.Reset();
    signatureAlgorithm.setId(algorithm::none);
    signatureAlgorithm.setParameters(nullptr);
    signature = {};
    certs.clear();
    der_ = {};
    isDer_ = false;
}

bool CBasicOCSPResponse::LoadResponse(const element& der)
{
    CCryptoAutoLogger logger("CCryptoOCSP::CBasicOCSPResponse::LoadResponse");
    const element octets = Octets(der);
    bool isDer = false;
    if (!load(octets, isDer))
        return logger.setResult(false);
    der_ = octets;
    isDer_ = isDer;
    return logger.setResult(true);
}

bool CBasicOCSPResponse::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CBasicOCSPResponse::ParseNode");
    if (!tbsResponseData.Parse(find("tbsResponseData")) || !signatureAlgorithm.Parse(find("signatureAlgorithm")))
        return logger.setResult(false);
    bitString bits;
    if (!bits.Parse(find("signature")) || bits.unusedBits() != 0 || bits.bits().isEmpty())
        return logger.fail(false, "The signature is not a string of whole bytes");
    signature = Octets(bits.bits());
    return logger.setResult(readCertificates());
}

bool CBasicOCSPResponse::readCertificates()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CBasicOCSPResponse::readCertificates");
    if (!internal::IsWithinLimit(find("certs")))
        return logger.setResult(false);
    for (const elementNode* node = find("certs"); node != nullptr; node = node->next()) {
        if (node->type() != ElementType::sequence)
            return logger.fail(false, "What is among the certificates is not one");
        certs.push_back(CCryptoParser::ToDer(node->clone().get()));
    }
    return logger.setResult(true);
}

bool CBasicOCSPResponse::SetTemplateValues()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CBasicOCSPResponse::SetTemplateValues");
    if (signature.isEmpty())
        return logger.fail(false, "The response is not signed");
    if (certs.size() > maxMembers)
        return logger.fail(false, "More than %u certificates", maxMembers);
    element certificates;
    for (const element& certificate : certs)
        certificates.append(certificate.view());
    const ElementNodePtr list = certs.empty() ? nullptr : CCryptoDERParser().Decode(certificates.bytes());
    if (!certs.empty() && list == nullptr)
        return logger.fail(false, "A certificate is malformed");
    const ElementNodePtr tbs = tbsResponseData.BuildTree();
    const ElementNodePtr bits = bitString(signature, 0).BuildTree();
    return logger.setResult(tbs != nullptr && bits != nullptr && builder().fill_tree("tbsResponseData", tbs.get()) &&
                            fillAlgorithm("signatureAlgorithm", signatureAlgorithm) &&
                            builder().fill_tree("signature", bits.get()) && builder().fill_tree("certs", list.get()));
}

std::span<const std::uint8_t> CBasicOCSPResponse::signedOctets() const
{
    const auto fields = isDer_ ? OnlyValue(der_.bytes(), basicResponseSequence) : std::nullopt;
    return fields ? DerCursor(*fields).read(basicResponseSequence).octets : std::span<const std::uint8_t>();
}

bool CBasicOCSPResponse::SignResponse(const CCrypto_X509_Certificate& responder, ICryptoKeyPair& key, algorithm::Id hash)
{
    CCryptoAutoLogger logger("CCryptoOCSP::CBasicOCSPResponse::SignResponse");
    der_ = {};
    isDer_ = false;
    signature = {};
    if (!responder.isLoaded() || responder.publicKey() == nullptr || !IsSameKey(*responder.publicKey(), key))
        return logger.fail(false, "Invalid responder certificate");
    const bool isNamed = !tbsResponseData.responderName.isEmpty() || !tbsResponseData.responderKeyHash.isEmpty();
    if (isNamed && !isResponder(responder))
        return logger.fail(false, "Invalid responder certificate");

    const element identifier = SignatureAlgorithmFor(key, hash);
    if (identifier.isEmpty() || !signatureAlgorithm.ParseDer(identifier) || !IsExpressedByTable(signatureAlgorithm))
        return logger.fail(false, "Unsupported hash function");
    if (!isNamed)
        tbsResponseData.responderKeyHash = ResponderKeyHash(responder);
    if (!tbsResponseData.producedAt.isValid())
        tbsResponseData.producedAt = CCryptoDateTime::Now();
    const element tbs = tbsResponseData.BuildDer();
    if (tbs.isEmpty())
        return logger.fail(false, "There is no response to sign");
    signature = SignOctets(key, hash, tbs.bytes());
    if (signature.isEmpty())
        return logger.fail(false, "Signature operation failed");
    der_ = BuildDer();
    isDer_ = !der_.isEmpty();
    return logger.setResult(isDer_);
}

bool CBasicOCSPResponse::VerifySignature(const CCrypto_X509_Certificate& responder) const
{
    CCryptoAutoLogger logger("CCryptoOCSP::CBasicOCSPResponse::VerifySignature");
    const char* details = "there is no certificate";
    if (signedOctets().empty()) {
        details = "the octets are not DER";
    } else if (responder.isLoaded() && responder.publicKey() != nullptr) {
        const std::optional<SignatureAlgorithm> algorithm = ReadSignatureAlgorithm(signatureAlgorithm);
        const SignatureResult result =
            algorithm ? ccrypto::VerifySignature(*responder.publicKey(), *algorithm, signedOctets(), signature.bytes())
                      : SignatureResult::unsupportedAlgorithm;
        if (result == SignatureResult::good)
            return logger.setResult(true);
        details = VerificationText(result);
    }
    logger.WriteLog("Failed to verify: %s", details);
    logger.WriteLog("Responder certificate: %s", NameText(responder.subject()).c_str());
    return logger.setResult(false);
}

std::vector<CertificatePtr> CBasicOCSPResponse::certificates() const
{
    std::vector<CertificatePtr> loaded;
    for (const element& certificate : certs)
        if (CertificatePtr one = LoadCertificate(certificate.bytes()); one != nullptr)
            loaded.push_back(std::move(one));
    return loaded;
}

bool CBasicOCSPResponse::isResponder(const CCrypto_X509_Certificate& certificate) const
{
    if (!tbsResponseData.responderKeyHash.isEmpty())
        return tbsResponseData.responderKeyHash.view() == ResponderKeyHash(certificate).view();
    const auto name = ComparableName::Read(tbsResponseData.responderName.bytes());
    return name && name == ComparableName::Read(certificate.subject().GetDerEncodedElement().bytes());
}

} // namespace CCryptoOCSP
