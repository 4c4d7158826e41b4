#pragma once

#include "core/text/string.h"
#include "pki/x509/extensions.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The texts of alternative names in the form in which they are compared. What cannot be read is compared with nothing: the readers
// refuse NUL, blanks and everything else beyond letters, digits, hyphens and underscores in host names, so that no two readers of
// one certificate see two names.

namespace ccrypto {

/// "Example.COM." is "example.com". \return none for text that is no DNS name: labels of 1 to 63 characters, at most 253 in all;
/// international names only in their ASCII form.
[[nodiscard]] std::optional<std::string> ReadHostName(std::string_view text);

/// A DNS name of a certificate, which may begin with a wildcard: "*" as a whole first label.
struct DnsPattern {
    bool isWildcard = false;
    std::string host; ///< as ReadHostName() gives it, without the wildcard
};
[[nodiscard]] std::optional<DnsPattern> ReadDnsPattern(std::string_view text);

/// The part before the last "@" without quotes (RFC 5321, 4.1.2), and the host.
struct Mailbox {
    std::string local;
    std::string host;

    bool operator==(const Mailbox& other) const = default;
};
[[nodiscard]] std::optional<Mailbox> ReadMailbox(std::string_view text);

/// The host of "scheme://user@host:port/…" (RFC 3986, 3.2.2). \return none for a URI without one, and for an address instead.
[[nodiscard]] std::optional<std::string> ReadUriHost(std::string_view uri);

/// The 4 or 16 octets of "192.0.2.1" or "2001:db8::1" (RFC 4291, 2.2). \return none for anything else.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> ReadIpAddress(std::string_view text);

/// Whether an alternative name keeps what RFC 5280, 4.2.1.6, asks of its form: not empty, DNS names in the preferred syntax (with
/// or without a wildcard), mailboxes, absolute URIs, addresses of 4 or 16 octets.
[[nodiscard]] bool IsConformingName(const GeneralName& name);

/// "dNSName example.com": for people, without characters that a terminal would obey, and not longer than a line or two.
[[nodiscard]] CCryptoString GeneralNameText(const GeneralName& name);

} // namespace ccrypto
