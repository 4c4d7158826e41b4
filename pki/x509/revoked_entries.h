#pragma once

#include "core/system/date_time.h"
#include "core/text/element.h"

#include <cstdint>
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

/// Whether a revocation holds at `at` whenever it was published: it had happened by then, and is no hold, which can be taken back.
[[nodiscard]] bool IsLastingRevocation(std::optional<RevocationReason> reason, const CCryptoDateTime& since,
                                       const CCryptoDateTime& at);

/// One entry of a revocation list, decoded when it was asked for.
struct RevokedEntry {
    element serialNumber; ///< big-endian, as the octets of the INTEGER are
    CCryptoDateTime revocationDate;
    std::optional<RevocationReason> reason;
    CCryptoDateTime invalidityDate; ///< invalid when it is not given
    /// GeneralNames (DER) of this entry or of the last one before it that has them; else empty. They belong to the list: one name
    /// may hold for every entry, and copies would be as many.
    std::span<const std::uint8_t> certificateIssuer;
    bool hasUnknownCritical = false; ///< a critical extension other than these: the list must not be used
};

/// The revokedCertificates of a list (RFC 5280, 5.1.2.6): octets that belong to somebody else, under an index by serial number.
///
/// Every entry is checked when the list is read, so that none is missing from the index because it is malformed, and decoded when
/// it is asked for. The index takes about five bytes for each entry of the usual 38. Serial numbers are spread over buckets by a
/// hash; a bucket that became long, because the list was made for it, is sorted, so that reading and a look-up take
/// O(n log n) and O(log n) steps whatever the list holds. Threads may share an object that nobody changes.
class RevokedEntries {
public:
    static constexpr std::uint32_t maxSerialNumber = 64; ///< bytes
    static constexpr std::uint32_t maxOfOneSerialNumber = 10'000;
    static constexpr std::uint32_t maxExtensions = 32; ///< of one entry

    /// \param octets the entries one after the other, without the SEQUENCE around them; must outlive the object.
    /// \return false, logged, the object empty: for entries that are not DER, that are malformed, and that are beyond a limit.
    [[nodiscard]] bool Read(std::span<const std::uint8_t> octets, std::uint32_t maxEntries);
    void clear() { *this = RevokedEntries(); }

    [[nodiscard]] std::uint32_t count() const { return static_cast<std::uint32_t>(places_.size()); }
    /// Whether any entry has a critical extension that is not known.
    [[nodiscard]] bool hasUnknownCritical() const { return hasUnknownCritical_; }
    /// In the order of the list; none, logged, past the end.
    [[nodiscard]] std::optional<RevokedEntry> entry(std::uint32_t index) const;
    /// Those of one serial number, in the order of the list.
    [[nodiscard]] std::vector<RevokedEntry> find(std::span<const std::uint8_t> serialNumber) const;

    /// Bytes that the index takes.
    [[nodiscard]] std::size_t indexSize() const;

private:
    /// Where an entry begins in the octets.
    using Place = std::uint32_t;
    /// A certificateIssuer, and the entry that has it.
    struct IssuerPlace {
        Place entry;
        std::span<const std::uint8_t> names;
    };

    bool check(std::uint32_t maxEntries);
    bool makeIndex();
    bool sortBucket(std::span<Place> bucket) const;
    std::size_t bucketOf(std::span<const std::uint8_t> serialNumber) const;
    std::span<const Place> candidates(std::span<const std::uint8_t> serialNumber) const;
    std::span<const std::uint8_t> serialNumberAt(Place place) const;
    RevokedEntry decode(Place place) const;

    std::span<const std::uint8_t> octets_;
    std::vector<Place> places_;        ///< of all entries, bucket after bucket
    std::vector<Place> bucketStarts_;  ///< in places_, and the end of the last
    std::vector<Place> steps_;         ///< of every 64th entry, in the order of the list
    std::vector<IssuerPlace> issuers_; ///< in the order of the list
    bool hasUnknownCritical_ = false;
};

} // namespace ccrypto
