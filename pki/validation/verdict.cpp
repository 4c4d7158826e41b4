#include "pki/validation/verdict.h"

#include <array>
#include <cstddef>

namespace ccrypto {

std::string_view ReasonWord(Reason reason)
{
    static constexpr auto words = std::to_array<std::string_view>({
        "",
        "malformed",
        "not-der",
        "unsupported-algorithm",
        "weak-algorithm",
        "bad-signature",
        "expired",
        "not-yet-valid",
        "no-path",
        "not-a-ca",
        "path-length",
        "key-usage",
        "extended-key-usage",
        "critical-extension",
        "name-constraints",
        "policy",
        "name",
        "profile",
        "revoked",
        "status-unknown",
        "status-stale",
        "limit",
    });
    static_assert(words.size() == static_cast<std::size_t>(Reason::limit) + 1);
    return words[static_cast<std::size_t>(reason)];
}

std::string_view StatusWord(CertificateStatus status)
{
    static constexpr auto words = std::to_array<std::string_view>({"not-checked", "good", "revoked", "unknown", "stale", "anchor"});
    static_assert(words.size() == static_cast<std::size_t>(CertificateStatus::anchor) + 1);
    return words[static_cast<std::size_t>(status)];
}

} // namespace ccrypto
