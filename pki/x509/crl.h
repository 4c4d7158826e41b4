#pragma once

#include "core/system/date_time.h"
#include "pki/x509/revoked_entries.h"
#include "pki/x509/x509_base.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

/// A certificate revocation list (RFC 5280, 5) of version 1 or 2.
///
/// Entries stay octets under an index by serial number, so that the list takes little more memory than its file. All are checked at
/// the load: a list with a malformed entry does not load, since nobody knows which certificate that entry revokes. A list that is
/// loaded may be shared by threads.
class CCrypto_X509_CRL : public CCrypto_X509_Base {
public:
    static constexpr std::uint32_t maxEntries = 10'000'000;
    /// Longest list, in bytes, that is read although it is not DER: unlike DER, it is read through a tree, which takes many times
    /// the memory.
    static constexpr std::uint32_t maxNotDer = 4 << 20;

    CCrypto_X509_CRL() = default;

    /// \return false, logged, the object empty.
    bool LoadCRL(element der);
    /// The DER: as it was read.
    [[nodiscard]] const element& GetCRL() const { return der(); }

    [[nodiscard]] const CCryptoDateTime& thisUpdate() const { return thisUpdate_; }
    /// Invalid when the list has none.
    [[nodiscard]] const CCryptoDateTime& nextUpdate() const { return nextUpdate_; }

    [[nodiscard]] std::uint32_t entryCount() const { return entries_.count(); }
    /// Whether an entry, whichever it is, has a critical extension that is not known: the list must then not be used for any
    /// certificate (RFC 5280, 5.3).
    [[nodiscard]] bool hasUnknownCriticalEntry() const { return entries_.hasUnknownCritical(); }
    /// In the order of the list, decoded now: a loop over all of them needs no memory. None, logged, past the end.
    [[nodiscard]] std::optional<ccrypto::RevokedEntry> entry(std::uint32_t index) const { return entries_.entry(index); }
    /// The entries of one serial number, as its INTEGER's octets, in the order of the list. An indirect list may have several.
    [[nodiscard]] std::vector<ccrypto::RevokedEntry> find(std::span<const std::uint8_t> serialNumber) const
    {
        return entries_.find(serialNumber);
    }

private:
    void clear();
    bool readDer(std::span<const std::uint8_t> octets);
    bool readFields(const CCryptoTemplateMatch& match);
    bool readOtherThanDer();

    CCryptoDateTime thisUpdate_;
    CCryptoDateTime nextUpdate_;
    element rewritten_; ///< a list that is not DER as DER would have it, for the entries
    ccrypto::RevokedEntries entries_;
};

namespace ccrypto {

using CrlPtr = std::shared_ptr<const CCrypto_X509_CRL>;

} // namespace ccrypto
