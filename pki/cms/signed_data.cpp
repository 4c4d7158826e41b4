#include "pki/cms/signed_data.h"

#include "asn1/tree/item_list.h"
#include "asn1/tree/node_parts.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/cms/tree_filling.h"

#include <algorithm>
#include <span>

using namespace ccrypto;

namespace {

constexpr const char* signedDataTemplate =
    "SEQUENCE {INTEGER = version,SET[CONSTRUCTED]{ digestAlgorithms },contentInfo,CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL) { "
    "certificates },CONTEXT_SPECIFIC[1,CONSTRUCTED](OPTIONAL) { crls },SET[CONSTRUCTED] { signerInfos } }";
constexpr const char* signedDataToSignTemplate =
    "SEQUENCE{INTEGER =  1,SET[CONSTRUCTED]{ digestAlgorithm },SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.7.1\","
    "toBeSignedContentInfo},CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL) { ExtendedCertificatesAndCertificates },"
    "CONTEXT_SPECIFIC[1,CONSTRUCTED](OPTIONAL) { CertificateRevocationLists },SET { signerInfos }}";
constexpr const char* embeddedContentTemplate = "CONTEXT_SPECIFIC[0](OPTIONAL){ OCTET_STRING { content }},";
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

/// The items of a SET OF, in the order of DER (X.690, 11.6).
element JoinSorted(const std::vector<element>& items)
{
    std::vector<std::span<const std::uint8_t>> sorted;
    for (const element& item : items)
        sorted.push_back(item.bytes());
    std::ranges::sort(sorted,
                      [](const auto& left, const auto& right) { return std::ranges::lexicographical_compare(left, right); });
    element joined;
    for (const auto& item : sorted)
        joined.append(item.data(), static_cast<std::uint32_t>(item.size()));
    return joined;
}

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
    if (contentType != OidOfContentType(ContentType::data))
        return logger.fail(false, "Only content of the type data is written");
    builder() = TemplateToFill(signedDataToSignTemplate);

    ItemList algorithms;
    for (const auto& algorithm : digestAlgorithms)
        if (ElementNodePtr tree = algorithm->BuildTree())
            algorithms.add(std::move(tree));
    ItemList signers;
    for (const auto& signer : signerInfos)
        if (ElementNodePtr tree = signer->BuildTree())
            signers.add(std::move(tree));
    if (algorithms.first == nullptr || signers.first == nullptr || CountItems(signers.first.get()) != signerInfos.size())
        return logger.setResult(false);
    if (!FillTree(builder(), "digestAlgorithm", std::move(algorithms.first)) ||
        !FillTree(builder(), "signerInfos", std::move(signers.first)))
        return logger.setResult(false);

    // Octets are put into the set unchanged: a certificate is signed as it is.
    element octets = JoinSorted(certificates);
    if (!octets.isEmpty() && !builder().fill("ExtendedCertificatesAndCertificates", octets))
        return logger.setResult(false);
    octets = JoinSorted(crls);
    if (!octets.isEmpty() && !builder().fill("CertificateRevocationLists", octets))
        return logger.setResult(false);

    if (!hasContent)
        return logger.setResult(true);
    CCryptoParser embedded = TemplateToFill(embeddedContentTemplate);
    if (!embedded.fill("content", content))
        return logger.setResult(false);
    // An item that may be left out is, when it has nothing inside; empty content is there.
    embedded.root()->set(LinkKind::modifiers, nullptr);
    return logger.setResult(FillTree(builder(), "toBeSignedContentInfo", embedded.takeRoot()));
}
