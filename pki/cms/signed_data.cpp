#include "pki/cms/signed_data.h"

#include "core/diagnostics/auto_logger.h"
#include "pki/cms/signed_message_writing.h"

using namespace ccrypto;

namespace {

constexpr const char* signedDataTemplate =
    "SEQUENCE {INTEGER = version,SET[CONSTRUCTED]{ digestAlgorithms },contentInfo,CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL) { "
    "certificates },CONTEXT_SPECIFIC[1,CONSTRUCTED](OPTIONAL) { crls },SET[CONSTRUCTED] { signerInfos } }";
/// OtherRevocationInfoFormat (RFC 5652, 10.2.1), whose tag is implicit.
constexpr const char* otherStatusTemplate = "CONTEXT_SPECIFIC[1]{OBJECT_IDENTIFIER=format,status}";

const Oid ocspResponseFormat = Oid::FromDotted("1.3.6.1.5.5.7.16.2");

bool IsVersionOfSignedData(std::uint32_t version)
{
    return version == 1 || (version >= 3 && version <= 5);
}

class OtherStatus : public CCryptoASN1Object {
public:
    OtherStatus() : CCryptoASN1Object(otherStatusTemplate) {}
    bool BuildNode() override { return false; }
    bool ParseNode() override { return true; }

    [[nodiscard]] bool isOcspResponse() const { return Oid::OfNode(data()->content()) == ocspResponseFormat; }
};

element DerOf(const elementNode& item)
{
    return CCryptoParser::ToDer(item.clone().get());
}

} // namespace

CCryptoPKCS7SignedDataObject::CCryptoPKCS7SignedDataObject() : CCryptoASN1Object(signedDataTemplate)
{
    const CCryptoAutoLogger logger("CCryptoPKCS7SignedDataObject::CCryptoPKCS7SignedDataObject", LoggerMode::resultOptional);
}

CCryptoPKCS7SignedDataObject::CCryptoPKCS7SignedDataObject(const elementNode* node) : CCryptoPKCS7SignedDataObject()
{
    construct(node);
}

void CCryptoPKCS7SignedDataObject::ClearFields()
{
    version = 1;
    digestAlgorithms.clear();
    contentType = {};
    hasContent = false;
    content = {};
    certificates.clear();
    crls.clear();
    ocspResponses.clear();
    signerInfos.clear();
}

bool CCryptoPKCS7SignedDataObject::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7SignedDataObject::ParseNode");
    version = findNumber("version");
    if (findBytes("version").length() != 1 || !IsVersionOfSignedData(version))
        return logger.fail(false, "Invalid version");
    for (const char* const list : {"digestAlgorithms", "certificates", "crls", "signerInfos"})
        if (CountItems(find(list)) > maxCertificates)
            return logger.fail(false, "There are more than %u %s", maxCertificates, list);
    return logger.setResult(readAlgorithms() && readContent() && readCertificates() && readStatus() && readSigners());
}

bool CCryptoPKCS7SignedDataObject::readAlgorithms()
{
    for (const elementNode* node = find("digestAlgorithms"); node != nullptr; node = node->next()) {
        digestAlgorithms.push_back(std::make_unique<CCryptoAlgorithmIdentifier>());
        if (!digestAlgorithms.back()->Parse(node))
            return false;
    }
    return true;
}

bool CCryptoPKCS7SignedDataObject::readContent()
{
    CCryptoAutoLogger logger("CCryptoPKCS7SignedDataObject::readContent");
    CCryptoPKCS7ContentInfoObject info;
    if (!info.Parse(find("contentInfo")))
        return logger.setResult(false);
    contentType = info.contentOid();
    if (const elementNode* const octets = info.content(); octets != nullptr) {
        if (octets->type() != ElementType::octetString)
            return logger.fail(false, "The content is not an OCTET STRING");
        hasContent = true;
        if (octets->value() != nullptr)
            content = Octets(octets->value()->token());
    }
    return logger.setResult(true);
}

bool CCryptoPKCS7SignedDataObject::readCertificates()
{
    for (const elementNode* node = find("certificates"); node != nullptr; node = node->next())
        if (node->type() == ElementType::sequence)
            certificates.push_back(DerOf(*node));
    return true;
}

bool CCryptoPKCS7SignedDataObject::readStatus()
{
    for (const elementNode* node = find("crls"); node != nullptr; node = node->next()) {
        if (node->type() == ElementType::sequence) {
            crls.push_back(DerOf(*node));
            continue;
        }
        OtherStatus other;
        if (other.Parse(node) && other.isOcspResponse())
            ocspResponses.push_back(DerOf(*other.find("status")));
    }
    return true;
}

bool CCryptoPKCS7SignedDataObject::readSigners()
{
    for (const elementNode* node = find("signerInfos"); node != nullptr; node = node->next()) {
        signerInfos.push_back(std::make_unique<CCryptoPKCS7SignerInfo>());
        if (!signerInfos.back()->Parse(node))
            return false;
    }
    return true;
}

bool CCryptoPKCS7SignedDataObject::BuildNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7SignedDataObject::BuildNode");
    const element der = write(SignedDataForm::bare);
    return logger.setResult(!der.isEmpty() && builder().Load_DER_Memory(der));
}

element CCryptoPKCS7SignedDataObject::GetMessage() const
{
    return write(SignedDataForm::message);
}

element CCryptoPKCS7SignedDataObject::write(SignedDataForm form) const
{
    CCryptoAutoLogger logger("CCryptoPKCS7SignedDataObject::write");
    if (contentType != OidOfContentType(ContentType::data))
        return logger.fail(element(), "Only content of the type data is written");
    element algorithms;
    element signers;
    bool isWritten = !digestAlgorithms.empty() && !signerInfos.empty();
    const auto add = [&](CCryptoASN1Object& object, element& list) {
        const element der = object.BuildDer();
        isWritten = isWritten && !der.isEmpty();
        list.append(der.data(), der.length());
    };
    for (const auto& algorithm : digestAlgorithms)
        add(*algorithm, algorithms);
    for (const auto& signer : signerInfos)
        add(*signer, signers);
    if (!isWritten)
        return logger.fail(element());
    SignedDataOctets octets;
    octets.digestAlgorithms = algorithms.bytes();
    octets.signerInfos = signers.bytes();
    if (hasContent)
        octets.content = content.bytes();
    for (const element& certificate : certificates)
        octets.certificates.push_back(certificate.bytes());
    for (const element& list : crls)
        octets.crls.push_back(list.bytes());
    logger.setResult(true);
    return WriteSignedData(octets, form);
}
