#include "pki/x509/certificate_builder.h"

#include "asn1/der/der_cursor.h"
#include "asn1/parser/parser.h"
#include "asn1/template/template_cache.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/random/random.h"
#include "pki/x509/certificate.h"
#include "pki/x509/certificate_templates.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/extension_builder.h"
#include "pki/x509/field_reading.h"
#include "pki/x509/signature.h"
#include "pki/x509/template_filling.h"
#include "pki/x509/x509_time.h"

#include <array>
#include <optional>
#include <utility>

namespace ccrypto {

namespace {

constexpr std::uint32_t maxIssuedSerialNumber = 20;

// An entry's extensions are written in this order. The issuer of the certificate is written in lists of several issuers alone (RFC
// 5280, 5.3.3).
constexpr const char* revokedEntryTemplate =
    "SEQUENCE{INTEGER = SERIAL_NUMBER;REVOKE_DATE,SEQUENCE(OPTIONAL){"
    "SEQUENCE(OPTIONAL){OBJECT_IDENTIFIER=\"2.5.29.24\",OCTET_STRING [ PRIMITIVE ] { INVALIDITY_DATE }}"
    "SEQUENCE(OPTIONAL){OBJECT_IDENTIFIER=\"2.5.29.21\",OCTET_STRING [ PRIMITIVE ] { REASON_CODE }}"
    "CERTIFICATE_ISSUER(OPTIONAL)}}";
constexpr const char* reasonCodeTemplate = "ENUMERATED = REASON_CODE";
constexpr const char* invalidityDateTemplate = "GeneralizedType{INVALIDITY_DATE}";
constexpr const char* utcTimeTemplate = "UTCTime{TIME}";
constexpr const char* generalizedTimeTemplate = "GeneralizedType{TIME}";

/// The octets within the one SEQUENCE that `der` holds; none for anything else.
std::optional<element> WithinSequence(const element& der)
{
    const auto value = OnlyValue(der.bytes(), der_tag::sequence);
    return value ? std::optional(OctetsOfSpan(*value)) : std::nullopt;
}

/// Whether these are the octets of an INTEGER of 0 or above, of a length that issuers may write (RFC 5280, 4.1.2.2).
bool IsIssuedSerialNumber(const element& octets)
{
    return octets.length() <= maxIssuedSerialNumber && IsUnsignedInteger(octets.bytes());
}

element TimeDer(const CCryptoDateTime& time)
{
    const bool isUtcTime = std::string_view(X509TimeTypeWord(time)) == "UTCTime";
    return FillTemplate(isUtcTime ? utcTimeTemplate : generalizedTimeTemplate, {{"TIME", X509TimeText(time).data()}});
}

/// No bit of the last octet is unused.
element SignatureBits(const element& signature)
{
    element bits;
    bits.append(std::uint8_t{0});
    bits.append(signature.view());
    return bits;
}

/// The template of a list while it is filled and signed.
class ListTemplate {
public:
    explicit ListTemplate(CCryptoAutoLogger& logger) : logger_(logger)
    {
        if (const elementNode* const items = ParsedTemplate(revocationListTemplate))
            parser_.setRoot(items->clone(true));
    }

    bool fillOctets(std::string_view name, const element& octets) { return parser_.fill(name, octets); }
    bool fillTime(std::string_view tagName, std::string_view name, const CCryptoDateTime& time)
    {
        const CCryptoString text = X509TimeText(time);
        if (text.isEmpty())
            return logger_.fail(false, "A time is missing, or cannot be written");
        return parser_.fill_word(tagName, X509TimeTypeWord(time)) && parser_.fill(name, text.data());
    }
    /// \param der the SEQUENCE of a name that is not empty.
    bool fillIssuer(const element& der)
    {
        const std::optional<element> content = WithinSequence(der);
        if (!content || content->isEmpty())
            return logger_.fail(false, "There is no name of the issuer, or it is not a SEQUENCE");
        return parser_.fill("ISSUER", *content);
    }
    /// Without extensions the tagged list that is to hold them is left out: it may not be empty (RFC 5280, 5.1).
    bool fillExtensions(const CCrypto_X509_ValueList& extensions)
    {
        if (extensions.isEmpty())
            return parser_.remove_node(parser_.index_node("EXTENSIONS")->owner()->owner());
        const std::optional<element> content = WithinSequence(extensions.GetDerEncodedElement(false));
        return content && !content->isEmpty() ? parser_.fill("EXTENSIONS", *content)
                                              : logger_.fail(false, "The extensions cannot be written");
    }
    /// For version 1, whose number is not written. The version is the first item of what is signed.
    bool removeVersion() { return parser_.remove_node(parser_.root()->content()->content()); }

    /// Signs the first field. \return the DER of the whole; empty, logged, when the key does not sign.
    element sign(ICryptoKeyPair& key, algorithm::Id hash)
    {
        const element algorithm = SignatureAlgorithmFor(key, hash);
        if (algorithm.isEmpty() || !parser_.fill("SIGNATURE_ALGORITHM", Octets(algorithm)) ||
            !parser_.fill("SIGNATURE_ALGORITHM_2", Octets(algorithm)))
            return {};
        const element octets = CCryptoParser::ToDer(parser_.root()->content()->clone().get());
        const element signature = octets.isEmpty() ? element() : SignOctets(key, hash, octets.bytes());
        if (signature.isEmpty())
            return logger_.fail(element(), "Signature operation failed");
        return parser_.fill("SIGNATURE", SignatureBits(signature)) ? parser_.ToDer() : element();
    }

private:
    CCryptoAutoLogger& logger_;
    CCryptoParser parser_;
};

bool HasEntryExtensions(const RevokedEntry& entry)
{
    const bool hasReason = entry.reason && *entry.reason != RevocationReason::unspecified;
    return hasReason || entry.invalidityDate.isValid() || !entry.certificateIssuer.empty();
}

/// The certificateIssuer extension, critical (RFC 5280, 5.3.3); empty when there is none.
element CertificateIssuerOf(const RevokedEntry& entry)
{
    if (entry.certificateIssuer.empty())
        return {};
    const ExtensionPtr extension = BuildExtension(oids::certificateIssuer, OctetsOfSpan(entry.certificateIssuer), true);
    return extension != nullptr ? extension->BuildDer() : element();
}

/// \return empty for an entry that cannot be written.
element EntryDer(const RevokedEntry& entry)
{
    if (!IsIssuedSerialNumber(entry.serialNumber) || X509TimeText(entry.revocationDate).isEmpty())
        return {};
    element reason;
    if (entry.reason && *entry.reason != RevocationReason::unspecified)
        reason = FillTemplate(reasonCodeTemplate, {{"REASON_CODE", element(static_cast<std::uint32_t>(*entry.reason))}});
    element invalidityDate;
    if (entry.invalidityDate.isValid())
        invalidityDate =
            FillTemplate(invalidityDateTemplate, {{"INVALIDITY_DATE", entry.invalidityDate.toGeneralizedTime().data()}});
    return FillTemplate(revokedEntryTemplate, {{"SERIAL_NUMBER", Octets(entry.serialNumber)},
                                               {"REVOKE_DATE", TimeDer(entry.revocationDate)},
                                               {"INVALIDITY_DATE", invalidityDate},
                                               {"REASON_CODE", reason},
                                               {"CERTIFICATE_ISSUER", CertificateIssuerOf(entry)}});
}

bool FillEntries(CCryptoAutoLogger& logger, ListTemplate& list, const RevocationListFields& fields)
{
    element entries;
    for (const RevokedEntry& entry : fields.entries) {
        if (fields.version == 1 && HasEntryExtensions(entry))
            return logger.fail(false, "A list of version 1 has no extensions");
        const element der = EntryDer(entry);
        if (der.isEmpty())
            return logger.fail(false, "An entry has no serial number or no date, or one that cannot be written");
        entries.append(der.data(), der.length());
    }
    return entries.isEmpty() || list.fillOctets("REVOKED", entries);
}

bool SetExtensions(const CCrypto_X509_ValueList& extensions, CCrypto_X509_Certificate& certificate)
{
    CCrypto_X509_ValueList copy;
    const ElementNodePtr items = extensions.BuildItems(false);
    if ((items == nullptr && !extensions.isEmpty()) || !copy.Parse(items.get(), false))
        return false;
    certificate.setExtensions(std::move(copy));
    return true;
}

/// \return false, logged, for fields that make no certificate.
bool SetFields(CCryptoAutoLogger& logger, const CertificateFields& fields, CCrypto_X509_Certificate& certificate)
{
    if (!certificate.setVersion(fields.version))
        return logger.fail(false, "Invalid version: %i", static_cast<int>(fields.version));
    if (fields.version == 1 && !fields.extensions.isEmpty())
        return logger.fail(false, "A certificate of version 1 has no extensions");
    if (!fields.serialNumber.isEmpty() && !IsIssuedSerialNumber(fields.serialNumber))
        return logger.fail(false, "The serial number is negative, or not an INTEGER of at most 20 bytes");
    if (!fields.validFrom.isValid() || !fields.validTo.isValid())
        return logger.fail(false, "A time is missing, or cannot be written");
    if (fields.validTo < fields.validFrom)
        return logger.fail(false, "The certificate ends before it starts");
    CCrypto_X509_ValueList issuer, subject;
    if (!issuer.ParseName(fields.issuer.bytes()) || issuer.isEmpty() || !subject.ParseName(fields.subject.bytes()))
        return logger.fail(false, "There is no name of the issuer, or a name is not one");
    if (!certificate.setPublicKeyInfo(fields.publicKeyInfo))
        return logger.fail(false, "Public key not found");
    if (!SetExtensions(fields.extensions, certificate))
        return logger.fail(false, "The extensions cannot be written");
    certificate.setSerialNumber(fields.serialNumber);
    certificate.setValidity(fields.validFrom, fields.validTo);
    certificate.setIssuer(std::move(issuer));
    certificate.setSubject(std::move(subject));
    return true;
}

} // namespace

element NewSerialNumber()
{
    CCryptoAutoLogger logger("NewSerialNumber");
    std::array<std::uint8_t, 16> octets = {};
    if (!ICryptoRandom::Instance().generate(octets))
        return logger.fail(element(), "There are no random bytes");
    octets[0] = static_cast<std::uint8_t>((octets[0] & 0x3F) | 0x40);
    logger.setResult(true);
    return OctetsOfSpan(octets);
}

element IssueCertificate(const CertificateFields& fields, ICryptoKeyPair& issuerKey, algorithm::Id hash)
{
    CCryptoAutoLogger logger("IssueCertificate");
    CCrypto_X509_Certificate certificate;
    if (!SetFields(logger, fields, certificate) || !certificate.setSignatureAlgorithm(SignatureAlgorithmFor(issuerKey, hash)))
        return {};
    const element signedPart = certificate.GetSignedPart();
    const element signature = signedPart.isEmpty() ? element() : SignOctets(issuerKey, hash, signedPart.bytes());
    if (signature.isEmpty())
        return logger.fail(element(), "Signature operation failed");
    certificate.setSignature(signature);
    element der = certificate.GetCertificate();
    logger.setResult(!der.isEmpty());
    return der;
}

element IssueRevocationList(const RevocationListFields& fields, ICryptoKeyPair& issuerKey, algorithm::Id hash)
{
    CCryptoAutoLogger logger("IssueRevocationList");
    if (fields.version != 1 && fields.version != 2)
        return logger.fail(element(), "Invalid version: %i", static_cast<int>(fields.version));
    if (fields.version == 1 && !fields.extensions.isEmpty())
        return logger.fail(element(), "A list of version 1 has no extensions");
    const bool hasEnd = fields.nextUpdate.isValid();
    if (hasEnd && fields.nextUpdate < fields.thisUpdate)
        return logger.fail(element(), "The list ends before it starts");

    ListTemplate list(logger);
    const bool isFilled = list.fillOctets("VERSION", element(fields.version - 1)) && list.fillIssuer(fields.issuer) &&
                          list.fillTime("VALID_FROM_TAG", "VALID_FROM", fields.thisUpdate) &&
                          (!hasEnd || list.fillTime("VALID_TO_TAG", "VALID_TO", fields.nextUpdate)) &&
                          FillEntries(logger, list, fields) && list.fillExtensions(fields.extensions) &&
                          (fields.version == 2 || list.removeVersion());
    element der = isFilled ? list.sign(issuerKey, hash) : element();
    logger.setResult(!der.isEmpty());
    return der;
}

} // namespace ccrypto
