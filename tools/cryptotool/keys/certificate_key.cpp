#include "tools/cryptotool/keys/certificate_key.h"

#include "asn1/der/pem.h"
#include "asn1/parser/parser.h"
#include "asn1/template/template_match.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ccrypto {

namespace {

constexpr const char* certificateTemplate =
    "SEQUENCE{SEQUENCE{CONTEXT_SPECIFIC[0](OPTIONAL){version},INTEGER=serialNumber,SEQUENCE{signature},SEQUENCE{issuer},"
    "SEQUENCE{validity},subject,subjectPublicKeyInfo},SEQUENCE{signatureAlgorithm},BIT_STRING{signatureValue}}";

/// Of a certificate in a file; more is never decoded.
constexpr std::size_t maxCertificate = 1 << 20;

bool IsCertificateLabel(std::string_view label)
{
    return label == "CERTIFICATE" || label == "X509 CERTIFICATE" || label == "TRUSTED CERTIFICATE";
}

/// The first certificate of PEM without a key. \return empty when there is none.
element CertificateOfPem(std::string_view text)
{
    std::vector<DataBlock> blocks;
    if (!ReadPem(text, blocks) || std::ranges::any_of(blocks, IsKeyLabel, &DataBlock::label))
        return {};
    const auto found = std::ranges::find_if(blocks, IsCertificateLabel, &DataBlock::label);
    return found != blocks.end() ? std::move(found->bytes) : element();
}

} // namespace

bool IsKeyLabel(std::string_view label)
{
    return label.ends_with("PRIVATE KEY") || label.ends_with("PUBLIC KEY");
}

element PublicKeyOfCertificate(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() > maxCertificate)
        return {};
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const element der =
        HasPemBlock(text) ? CertificateOfPem(text) : element(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    CCryptoParser pattern;
    CCryptoParser certificate;
    CCryptoTemplateMatch match;
    if (der.isEmpty() || !pattern.Load_ASCII_Memory(certificateTemplate) || !certificate.Load_DER_Memory(der) ||
        !match.Match(pattern.root(), certificate.root()))
        return {};
    return CCryptoParser(match.find("subjectPublicKeyInfo")->node->clone(false)).ToDer();
}

} // namespace ccrypto
