#pragma once

#include "core/system/date_time.h"
#include "core/text/string.h"
#include "pki/keys/key_pair.h"
#include "pki/x509/extensions.h"
#include "pki/x509/x509_value.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

// Extensions (RFC 5280, 4.2, 5.2 and 5.3) of values: DER as it must be written, so defaults are left out, named bits have no zeros
// at their end, and the value is an OCTET STRING with the encoding inside. Texts are characters and never become structure.
//
// Each builder gives null, logged with the reason, for what cannot be written: lists without an item, texts that their type does
// not hold, addresses of another length.

namespace ccrypto {

using ExtensionPtr = std::unique_ptr<CCrypto_X509_Value>;

/// \param content the octets inside the OCTET STRING: the DER of the extension's type.
[[nodiscard]] ExtensionPtr BuildExtension(const Oid& oid, const element& content, bool critical = false);

[[nodiscard]] ExtensionPtr BuildBasicConstraints(const BasicConstraints& constraints, bool critical = true);
[[nodiscard]] ExtensionPtr BuildKeyUsage(KeyUsage usage, bool critical = true);

/// SHA-1 of the public key's bits (RFC 5280, 4.2.1.2, method 1).
[[nodiscard]] element KeyIdentifierOf(const ICryptoKeyPair& key);
[[nodiscard]] ExtensionPtr BuildSubjectKeyIdentifier(const element& keyIdentifier);
[[nodiscard]] ExtensionPtr BuildAuthorityKeyIdentifier(const element& keyIdentifier);

/// A purpose by its name ("serverAuth", "clientAuth", "codeSigning", "emailProtection", "smartCardLogon", "individualCodeSigning",
/// "commercialCodeSigning", "encryptingFileSystem", "timeStamping", "OCSPSigning", "ipsecEndSystem", "ipsecTunnel", "ipsecUser",
/// "ipsecIKE", "documentSigning", "anyExtendedKeyUsage") in upper or lower case, or by its dotted OID. \return none for any other
/// text.
[[nodiscard]] Oid PurposeNamed(std::string_view nameOrOid);
/// The name; empty for a purpose without one.
[[nodiscard]] std::string_view PurposeName(const Oid& purpose);
/// Those of the list above up to "encryptingFileSystem", and one without a name: what a signing client's certificates may be used
/// for.
[[nodiscard]] std::vector<Oid> ListedPurposes();
[[nodiscard]] ExtensionPtr BuildExtendedKeyUsage(const std::vector<Oid>& purposes, bool critical = false);

/// The otherName of a user principal name: user@domain in any characters. \return none, logged, for text that is not
/// UTF-8 and for control characters.
[[nodiscard]] std::optional<GeneralName> UserPrincipalName(const CCryptoString& name);
/// E-mail, DNS names and URIs are ASCII without control characters, the latter two without blanks; an address has 4 or 16 bytes.
[[nodiscard]] ExtensionPtr BuildSubjectAlternativeName(const GeneralNames& names, bool critical = false);

/// What a policy refers its reader to.
struct PolicyStatement {
    Oid policy;
    CCryptoString practiceStatementUrl; ///< CPS pointer; may be empty
    CCryptoString userNotice;           ///< explicitText, at most 200 characters, no control characters; may be empty
};
[[nodiscard]] ExtensionPtr BuildCertificatePolicies(const std::vector<PolicyStatement>& policies, bool critical = false);

[[nodiscard]] ExtensionPtr BuildAuthorityInformationAccess(const std::vector<CCryptoString>& ocspUrls,
                                                           const std::vector<CCryptoString>& issuerUrls = {});
/// A distribution point for each URL.
[[nodiscard]] ExtensionPtr BuildCrlDistributionPoints(const std::vector<CCryptoString>& urls);

// Of lists.

/// \param number big-endian, at most 20 bytes (RFC 5280, 5.2.3).
[[nodiscard]] ExtensionPtr BuildCrlNumber(const element& number);
/// \param base the number of the list that this one is a delta of.
[[nodiscard]] ExtensionPtr BuildDeltaCrlIndicator(const element& base);
/// When the next list comes, which may be before the end of this one.
[[nodiscard]] ExtensionPtr BuildNextPublish(const CCryptoDateTime& time);
/// Of a list that is partitioned by kind of certificate, or indirect; at most one of the three onlyContains flags is set. Its name,
/// when there is one, is a full name.
[[nodiscard]] ExtensionPtr BuildIssuingDistributionPoint(const IssuingDistributionPoint& point);

} // namespace ccrypto
