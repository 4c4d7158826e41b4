#pragma once

#include "core/system/date_time.h"
#include "pki/x509/crl.h"
#include "pki/x509/x509_value.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

// The contents of extensions (RFC 5280, 4.2 and 5.2) as values. Every reader gives none for octets that are not DER of exactly that
// structure, for a list without an item where the structure asks for one, and for lists of more than 10,000 items. Read all the
// same are default values that are written, and named bits with trailing zeros.

namespace ccrypto {

struct BasicConstraints {
    bool isCa = false;
    std::optional<std::uint32_t> pathLength; ///< any number above 32 bits is the largest
};

/// The bits of keyUsage (RFC 5280, 4.2.1.3), bit 0 first.
enum class KeyUsageBit : std::uint16_t {
    digitalSignature = 1 << 0,
    nonRepudiation = 1 << 1,
    keyEncipherment = 1 << 2,
    dataEncipherment = 1 << 3,
    keyAgreement = 1 << 4,
    keyCertSign = 1 << 5,
    crlSign = 1 << 6,
    encipherOnly = 1 << 7,
    decipherOnly = 1 << 8,
};
struct KeyUsage {
    std::uint16_t bits = 0;
    [[nodiscard]] bool has(KeyUsageBit bit) const { return (bits & static_cast<std::uint16_t>(bit)) != 0; }
};

struct KeyUsageName {
    KeyUsageBit bit;
    std::string_view name;
};
/// The names that are printed, and after them a newer one, of X.509, that is read as well.
inline constexpr KeyUsageName keyUsageNames[] = {
    {KeyUsageBit::digitalSignature, "digitalSignature"},
    {KeyUsageBit::nonRepudiation, "nonRepudiation"},
    {KeyUsageBit::keyEncipherment, "keyEncipherment"},
    {KeyUsageBit::dataEncipherment, "dataEncipherment"},
    {KeyUsageBit::keyAgreement, "keyAgreement"},
    {KeyUsageBit::keyCertSign, "keyCertSign"},
    {KeyUsageBit::crlSign, "cRLSign"},
    {KeyUsageBit::encipherOnly, "encipherOnly"},
    {KeyUsageBit::decipherOnly, "decipherOnly"},
    {KeyUsageBit::nonRepudiation, "contentCommitment"},
};

/// One GeneralName (RFC 5280, 4.2.1.6).
struct GeneralName {
    enum class Kind { otherName, email, dns, x400Address, directory, ediPartyName, uri, ipAddress, registeredId };
    Kind kind = Kind::otherName;
    /// The characters (ASCII) of email, dns and uri; the octets of ipAddress and registeredId; the SEQUENCE of a directory name; of
    /// the others the contents of the tag: of otherName an OBJECT IDENTIFIER and the value under [0].
    element value;
};
using GeneralNames = std::vector<GeneralName>;

struct AuthorityKeyIdentifier {
    element keyIdentifier; ///< empty when it is absent
    GeneralNames issuer;
    element serialNumber;
};

/// Of a name constraint: minimum is 0 and maximum absent (RFC 5280, 4.2.1.10), or the reader gives none.
struct NameConstraints {
    GeneralNames permitted;
    GeneralNames excluded;
};

struct PolicyInformation {
    Oid policy;
    std::vector<element> qualifiers; ///< PolicyQualifierInfo, DER
};
struct PolicyMapping {
    Oid issuerDomain;
    Oid subjectDomain;
};
struct PolicyConstraints {
    std::optional<std::uint32_t> requireExplicitPolicy;
    std::optional<std::uint32_t> inhibitPolicyMapping;
};

/// DistributionPointName: one of the two.
struct DistributionPointName {
    GeneralNames fullName;
    element relativeName; ///< the SET, DER, of a name relative to the issuer's; empty for a full name
};
/// Bits of ReasonFlags (RFC 5280, 4.2.1.13): bit n of the number is bit n of the string.
using ReasonFlags = std::uint16_t;
constexpr ReasonFlags allReasons = 0x1FE;

struct DistributionPoint {
    std::optional<DistributionPointName> name;
    std::optional<ReasonFlags> reasons;
    GeneralNames crlIssuer;
};
struct IssuingDistributionPoint {
    std::optional<DistributionPointName> name;
    bool onlyUserCertificates = false;
    bool onlyCaCertificates = false;
    std::optional<ReasonFlags> onlySomeReasons;
    bool isIndirect = false;
    bool onlyAttributeCertificates = false;
};
struct AccessDescription {
    Oid method;
    GeneralName location;
};

/// \param content the octets inside the OCTET STRING.
[[nodiscard]] std::optional<BasicConstraints> ReadBasicConstraints(std::span<const std::uint8_t> content);
[[nodiscard]] std::optional<KeyUsage> ReadKeyUsage(std::span<const std::uint8_t> content);
[[nodiscard]] std::optional<std::vector<Oid>> ReadExtendedKeyUsage(std::span<const std::uint8_t> content);
/// The identifier's octets.
[[nodiscard]] std::optional<element> ReadSubjectKeyIdentifier(std::span<const std::uint8_t> content);
[[nodiscard]] std::optional<AuthorityKeyIdentifier> ReadAuthorityKeyIdentifier(std::span<const std::uint8_t> content);
[[nodiscard]] std::optional<GeneralNames> ReadGeneralNames(std::span<const std::uint8_t> content);
[[nodiscard]] std::optional<NameConstraints> ReadNameConstraints(std::span<const std::uint8_t> content);
[[nodiscard]] std::optional<std::vector<PolicyInformation>> ReadCertificatePolicies(std::span<const std::uint8_t> content);
[[nodiscard]] std::optional<std::vector<PolicyMapping>> ReadPolicyMappings(std::span<const std::uint8_t> content);
[[nodiscard]] std::optional<PolicyConstraints> ReadPolicyConstraints(std::span<const std::uint8_t> content);
/// Of inhibitAnyPolicy, a number of certificates.
[[nodiscard]] std::optional<std::uint32_t> ReadSkipCertificates(std::span<const std::uint8_t> content);
/// Of cRLDistributionPoints and freshestCRL.
[[nodiscard]] std::optional<std::vector<DistributionPoint>> ReadDistributionPoints(std::span<const std::uint8_t> content);
[[nodiscard]] std::optional<IssuingDistributionPoint> ReadIssuingDistributionPoint(std::span<const std::uint8_t> content);
[[nodiscard]] std::optional<std::vector<AccessDescription>> ReadAuthorityInformationAccess(std::span<const std::uint8_t> content);
/// Of cRLNumber and deltaCRLIndicator: the octets of the INTEGER.
[[nodiscard]] std::optional<element> ReadCrlNumber(std::span<const std::uint8_t> content);

/// What the extensions of one certificate or list say, read once.
struct ReadExtensions {
    std::optional<BasicConstraints> basicConstraints;
    std::optional<KeyUsage> keyUsage;
    std::optional<std::vector<Oid>> extendedKeyUsage;
    std::optional<element> subjectKeyIdentifier;
    std::optional<AuthorityKeyIdentifier> authorityKeyIdentifier;
    std::optional<GeneralNames> subjectAlternativeName;
    std::optional<NameConstraints> nameConstraints;
    std::optional<std::vector<PolicyInformation>> policies;
    std::optional<std::vector<PolicyMapping>> policyMappings;
    std::optional<PolicyConstraints> policyConstraints;
    std::optional<std::uint32_t> inhibitAnyPolicy;
    std::optional<std::vector<DistributionPoint>> distributionPoints;
    std::optional<std::vector<DistributionPoint>> freshestCrl;
    std::optional<std::vector<AccessDescription>> authorityInformation;
    std::optional<IssuingDistributionPoint> issuingDistributionPoint; ///< of a list
    std::optional<element> crlNumber;                                 ///< of a list
    std::optional<element> deltaCrlIndicator;                         ///< of a list
    bool hasOcspNoCheck = false;                                      ///< RFC 6960, 4.2.2.2.1

    bool isMalformed = false; ///< an extension occurs twice, or one of those above does not have its structure
    /// A critical extension that validation does not process: one that is none of those above, of a list in a certificate or the
    /// other way round, or one that only helps to find something (key identifiers of a certificate, authorityInformation,
    /// freshestCrl).
    bool hasUnknownCritical = false;
    Oid unknownCritical; ///< the first of those
};

/// For a reason: its number, and its name where one is known.
[[nodiscard]] CCryptoString CriticalExtensionText(const ReadExtensions& extensions);

enum class ExtensionOwner { certificate, list };
[[nodiscard]] ReadExtensions ReadAllExtensions(const CCrypto_X509_ValueList& extensions, ExtensionOwner owner);

/// The OIDs of extensions and purposes, as constants of their octets.
namespace oids {
extern const Oid basicConstraints, keyUsage, extendedKeyUsage, subjectKeyIdentifier, authorityKeyIdentifier, subjectAlternativeName,
    issuerAlternativeName, nameConstraints, certificatePolicies, anyPolicy, policyMappings, policyConstraints, inhibitAnyPolicy,
    crlDistributionPoints, freshestCrl, authorityInformationAccess, subjectInformationAccess, crlNumber, deltaCrlIndicator,
    issuingDistributionPoint, reasonCode, invalidityDate, certificateIssuer, ocspNoCheck, ocspNonce, anyExtendedKeyUsage,
    serverAuth, clientAuth, codeSigning, emailProtection, timeStamping, ocspSigning, smartCardLogon, emailAddress, commonName;
} // namespace oids

} // namespace ccrypto
