#pragma once

#include "core/system/date_time.h"
#include "pki/x509/x509_base.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace ccrypto {

/// CRLReason (RFC 5280, 5.3.1); 7 is not used.
enum class RevocationReason : std::uint8_t {
    unspecified = 0,
    keyCompromise = 1,
    caCompromise = 2,
    affiliationChanged = 3,
    superseded = 4,
    cessationOfOperation = 5,
    certificateHold = 6,
    removeFromCrl = 8,
    privilegeWithdrawn = 9,
    aaCompromise = 10,
};
/// "keyCompromise", …; "unused (7)" and the like for numbers without a name.
[[nodiscard]] const char* RevocationReasonName(RevocationReason reason);

/// One entry of a revocation list, decoded when it was asked for.
struct RevokedEntry {
    element serialNumber; ///< big-endian, as the octets of the INTEGER are
    CCryptoDateTime revocationDate;
    std::optional<RevocationReason> reason;
    CCryptoDateTime invalidityDate;  ///< invalid when it is not given
    element certificateIssuer;       ///< GeneralNames (DER) of this entry or of the last one before it that has them; else empty
    bool hasUnknownCritical = false; ///< an extension that is critical and is none of these: the list must not be used
};

} // namespace ccrypto

/// A certificate revocation list (RFC 5280, 5) of version 1 or 2.
///
/// Entries stay octets; an index of them, sorted by serial number, is made when one is first looked for. The list takes little more
/// memory than its file.
class CCrypto_X509_CRL : public CCrypto_X509_Base {
public:
    static constexpr std::uint32_t maxEntries = 10'000'000;

    CCrypto_X509_CRL() = default;

    /// \return false, logged, the object empty.
    bool LoadCRL(element der);
    /// The DER: as it was read.
    [[nodiscard]] const element& GetCRL() const { return der(); }

    [[nodiscard]] const CCryptoDateTime& thisUpdate() const { return thisUpdate_; }
    /// Invalid when the list has none.
    [[nodiscard]] const CCryptoDateTime& nextUpdate() const { return nextUpdate_; }

    [[nodiscard]] std::uint32_t entryCount() const;
    /// In the order of the list; none, logged, for an entry that is malformed and past the end.
    [[nodiscard]] std::optional<ccrypto::RevokedEntry> entry(std::uint32_t index) const;
    /// The entries of one serial number, as its INTEGER's octets, in the order of the list. An indirect list may have several.
    [[nodiscard]] std::vector<ccrypto::RevokedEntry> find(std::span<const std::uint8_t> serialNumber) const;

private:
    CCryptoDateTime thisUpdate_;
    CCryptoDateTime nextUpdate_;
};

namespace ccrypto {

using CrlPtr = std::shared_ptr<const CCrypto_X509_CRL>;

} // namespace ccrypto
