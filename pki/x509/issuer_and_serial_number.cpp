#include "pki/x509/issuer_and_serial_number.h"

#include "asn1/template/template_cache.h"
#include "pki/x509/certificate.h"
#include "pki/x509/field_reading.h"
#include "pki/x509/name.h"

using namespace ccrypto;

namespace {

constexpr const char* issuerAndSerialTemplate = "SEQUENCE { SEQUENCE[CONSTRUCTED] { issuer }, INTEGER = serialNumber }";
constexpr const char* builtIssuerAndSerialTemplate = "SEQUENCE{SEQUENCE[CONSTRUCTED]{issuer},INTEGER{serialNumber}}";

} // namespace

CCryptoIssuerAndSerialNumber::CCryptoIssuerAndSerialNumber() : CCryptoASN1Object(issuerAndSerialTemplate) {}

CCryptoIssuerAndSerialNumber::CCryptoIssuerAndSerialNumber(const elementNode* node) : CCryptoIssuerAndSerialNumber()
{
    construct(node);
}

CCryptoIssuerAndSerialNumber::CCryptoIssuerAndSerialNumber(const CCrypto_X509_Certificate& certificate)
    : CCryptoIssuerAndSerialNumber()
{
    const ElementNodePtr items = certificate.issuer().BuildItems(true);
    if (issuer_.Parse(items.get(), true))
        serialNumber_ = certificate.serialNumber();
}

void CCryptoIssuerAndSerialNumber::ClearFields()
{
    issuer_.clear();
    serialNumber_ = {};
}

bool CCryptoIssuerAndSerialNumber::BuildNode()
{
    const elementNode* const items = ParsedTemplate(builtIssuerAndSerialTemplate);
    builder().setRoot(items != nullptr ? items->clone(true) : nullptr);
    const ElementNodePtr issuer = issuer_.BuildItems(true);
    return !serialNumber_.isEmpty() && (issuer != nullptr || issuer_.isEmpty()) && builder().fill_tree("issuer", issuer.get()) &&
           builder().fill("serialNumber", serialNumber_);
}

bool CCryptoIssuerAndSerialNumber::ParseNode()
{
    const element* const serialNumber = MinimalInteger(find("serialNumber"));
    if (serialNumber == nullptr || serialNumber->length() > CCrypto_X509_Base::maxSerialNumber)
        return false;
    serialNumber_ = Octets(*serialNumber);
    return issuer_.Parse(find("issuer"), true);
}

bool CCryptoIssuerAndSerialNumber::means(const CCrypto_X509_Certificate& certificate) const
{
    if (serialNumber_.isEmpty() || !(serialNumber_ == certificate.serialNumber()))
        return false;
    const auto issuer = ComparableName::Read(issuer_.GetDerEncodedElement().bytes());
    return issuer && issuer == ComparableName::Read(certificate.issuer().GetDerEncodedElement().bytes());
}
