#include "pki/cms/embedded_status.h"

#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/cms/tree_filling.h"

#include <functional>
#include <set>
#include <string>

namespace ccrypto {

namespace {

constexpr const char* ocspResponseTemplate =
    "SEQUENCE{ENUMERATED{responseStatus},CONTEXT_SPECIFIC[0]{SEQUENCE{OBJECT_IDENTIFIER=\"1.3.6.1.5.5.7.48.1.1\","
    "OCTET_STRING{response}}}}";
constexpr std::uint8_t listTag = 0x30;
constexpr std::uint8_t crlsTag = 0xA0;
constexpr std::uint8_t ocspTag = 0xA1;

element DerElement(std::span<const std::uint8_t> octets)
{
    return {octets.data(), static_cast<std::uint32_t>(octets.size())};
}

/// The OCSPResponse of a basic response.
element ResponseOf(const element& basicResponse)
{
    CCryptoParser parser = TemplateToFill(ocspResponseTemplate);
    const std::uint8_t successful = 0;
    return parser.fill("responseStatus", element(&successful, 1)) && parser.fill("response", basicResponse) ? parser.ToDer()
                                                                                                            : element();
}

class StatusCollector {
public:
    explicit StatusCollector(StatusSources& sources) : sources_(sources) {}

    void addCrl(std::span<const std::uint8_t> der);
    void addResponse(std::span<const std::uint8_t> der);
    /// Of one type.
    void addAttributes(const CCryptoPKCS7Attributes* attributes, const Oid& type, bool areBasic);

private:
    void addValue(const elementNode& value, bool areBasic);

    StatusSources& sources_;
    std::uint32_t crls_ = 0;
    std::uint32_t responses_ = 0;
    std::set<std::string, std::less<>> seen_;
};

void StatusCollector::addCrl(std::span<const std::uint8_t> der)
{
    if (crls_ == CCryptoPKCS7SignedDataObject::maxCertificates || !seen_.emplace(der.begin(), der.end()).second)
        return;
    ++crls_;
    auto list = std::make_shared<CCrypto_X509_CRL>();
    if (list->LoadCRL(DerElement(der)))
        sources_.crls.push_back(std::move(list));
}

void StatusCollector::addResponse(std::span<const std::uint8_t> der)
{
    if (responses_ == CCryptoPKCS7SignedDataObject::maxCertificates || !seen_.emplace(der.begin(), der.end()).second)
        return;
    ++responses_;
    auto response = std::make_shared<CCryptoOCSP::COCSPResponse>();
    if (response->LoadResponse(DerElement(der)))
        sources_.responses.push_back(std::move(response));
}

void StatusCollector::addAttributes(const CCryptoPKCS7Attributes* attributes, const Oid& type, bool areBasic)
{
    for (std::uint32_t index = 0; attributes != nullptr && index < attributes->size(); ++index)
        if (attributes->attribute(index).type() == type)
            for (const elementNode* value = attributes->attribute(index).values(); value != nullptr; value = value->next())
                addValue(*value, areBasic);
}

/// [0] with lists and [1] with responses, each a SEQUENCE OF, as both attributes have them.
void StatusCollector::addValue(const elementNode& value, bool areBasic)
{
    const element octets = CCryptoParser::ToDer(value.clone().get());
    DerCursor fields(OnlyValue(octets.bytes(), listTag).value_or(std::span<const std::uint8_t>()));
    while (!fields.atEnd()) {
        const DerItem field = fields.read();
        if (!field)
            return;
        if (field.identifier != crlsTag && field.identifier != ocspTag)
            continue;
        DerCursor items(OnlyValue(field.value, listTag).value_or(std::span<const std::uint8_t>()));
        while (const DerItem item = items.read(listTag)) {
            if (field.identifier == crlsTag)
                addCrl(item.octets);
            else if (areBasic)
                addResponse(ResponseOf(DerElement(item.octets)).bytes());
            else
                addResponse(item.octets);
        }
    }
}

} // namespace

void AddStatusOfMessage(const CCryptoPKCS7SignedDataObject& data, StatusSources& sources)
{
    StatusCollector collector(sources);
    for (const element& list : data.crls)
        collector.addCrl(list.bytes());
    for (const element& response : data.ocspResponses)
        collector.addResponse(response.bytes());
    for (const auto& signer : data.signerInfos) {
        collector.addAttributes(signer->signedAttributes.get(), cms::pdfRevocationInformation, false);
        collector.addAttributes(signer->unsignedAttributes.get(), cms::revocationValues, true);
        collector.addAttributes(signer->unsignedAttributes.get(), cms::revocationReferences, true);
    }
}

} // namespace ccrypto
