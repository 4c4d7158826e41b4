#pragma once

#include "asn1/types/oid.h"
#include "pki/x509/extensions.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What the standards call identifiers, numbers and bits: as text, and read from text.

namespace ccrypto {

/// "basicConstraints", "serverAuth", "sha256WithRSAEncryption": the short name of an object identifier; its dotted text where it
/// has none.
[[nodiscard]] std::string ShortNameOf(const Oid& oid);
/// The same of dotted text.
[[nodiscard]] std::string ShortNameOf(std::string_view dotted);

/// A purpose by its name (RFC 5280, 4.2.1.12) or dotted. Case does not matter. \return none for anything else.
[[nodiscard]] Oid PurposeOf(std::string_view text);
/// "2.999.1": the dotted text that the standards give to the octets (X.690, 8.19), with numbers of up to 128 bits. Hexadecimal
/// digits for octets without one.
[[nodiscard]] std::string OidText(const Oid& oid);
/// Dotted text alone, as above.
[[nodiscard]] Oid OidOf(std::string_view text);

/// The names of the bits that are set (RFC 5280, 4.2.1.3).
[[nodiscard]] std::vector<std::string> KeyUsageNames(KeyUsage usage);
/// \return none for a name that is none of them. Case does not matter.
[[nodiscard]] std::optional<KeyUsageBit> KeyUsageBitOf(std::string_view name);
/// "unknown key usage NAME", and the names that there are.
[[nodiscard]] std::string UnknownKeyUsageText(std::string_view name);

/// "1001": a serial number as hexadecimal digits, without the octet that only says that it is positive; "-" before a negative one.
[[nodiscard]] std::string SerialText(std::span<const std::uint8_t> integer);
/// Reads the digits back to the octets of an INTEGER, "0x" and colons between bytes allowed. \return false for anything else, and
/// for more than 64 bytes.
[[nodiscard]] bool ParseSerial(std::string_view text, element& integer);
/// A number in decimal where it has at most 64 bits, else as above after "0x".
[[nodiscard]] std::string NumberText(std::span<const std::uint8_t> integer);

/// "DNS:example.com", "email:a@b", "IP:192.0.2.1", "URI:…", "UPN:…", "dirName:CN=…", "RID:1.2.3", or "otherName:1.2.3:#…".
/// \param isSubtree of a name constraint, whose addresses have masks.
[[nodiscard]] std::string AlternativeNameText(const GeneralName& name, bool isSubtree = false);

} // namespace ccrypto
