#include "pki/cms/embedded_status.h"

#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/cms/tree_filling.h"

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

void AddCrl(element der, StatusSources& sources)
{
    if (sources.crls.size() >= CCryptoPKCS7SignedDataObject::maxCertificates)
        return;
    auto list = std::make_shared<CCrypto_X509_CRL>();
    if (list->LoadCRL(std::move(der)))
        sources.crls.push_back(std::move(list));
}

void AddResponse(const element& der, StatusSources& sources)
{
    if (sources.responses.size() >= CCryptoPKCS7SignedDataObject::maxCertificates)
        return;
    auto response = std::make_shared<CCryptoOCSP::COCSPResponse>();
    if (response->LoadResponse(der))
        sources.responses.push_back(std::move(response));
}

/// The OCSPResponse of a basic response.
element ResponseOf(const element& basicResponse)
{
    CCryptoParser parser = TemplateToFill(ocspResponseTemplate);
    const std::uint8_t successful = 0;
    return parser.fill("responseStatus", element(&successful, 1)) && parser.fill("response", basicResponse) ? parser.ToDer()
                                                                                                            : element();
}

/// [0] with lists and [1] with responses, each a SEQUENCE OF, as both attributes have them.
void AddValues(const elementNode* value, bool areBasic, StatusSources& sources)
{
    const element octets = value != nullptr ? CCryptoParser::ToDer(value) : element();
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
                AddCrl(DerElement(item.octets), sources);
            else
                AddResponse(areBasic ? ResponseOf(DerElement(item.octets)) : DerElement(item.octets), sources);
        }
    }
}

bool AddAttributes(const CCryptoPKCS7Attributes* attributes, const Oid& type, bool areBasic, StatusSources& sources)
{
    const CCryptoPKCS7Attribute* const attribute = attributes != nullptr ? attributes->find(type) : nullptr;
    if (attribute == nullptr)
        return false;
    AddValues(attribute->onlyValue(), areBasic, sources);
    return true;
}

} // namespace

void AddStatusOfMessage(const CCryptoPKCS7SignedDataObject& data, StatusSources& sources)
{
    for (const element& list : data.crls)
        AddCrl(list, sources);
    for (const element& response : data.ocspResponses)
        AddResponse(response, sources);
}

bool AddStatusOfSigner(const CCryptoPKCS7SignerInfo& signer, StatusSources& sources)
{
    const bool pdf = AddAttributes(signer.signedAttributes.get(), cms::pdfRevocationInformation, false, sources);
    const bool values = AddAttributes(signer.unsignedAttributes.get(), cms::revocationValues, true, sources);
    const bool references = AddAttributes(signer.unsignedAttributes.get(), cms::revocationReferences, true, sources);
    return pdf || values || references;
}

} // namespace ccrypto
