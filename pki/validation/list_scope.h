#pragma once

#include "pki/validation/certificate_pool.h"
#include "pki/validation/validation_work.h"
#include "pki/x509/crl.h"
#include "pki/x509/extensions.h"
#include "pki/x509/name.h"
#include "pki/x509/signature.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

// Which certificates a revocation list speaks of (RFC 5280, 6.3.3 (b) to (d)).

namespace ccrypto {

/// A list with what is read of it once.
struct KnownList {
    CrlPtr list;
    ComparableName issuer;
    ReadExtensions extensions;
    SignatureAlgorithm signedBy;

    /// \return null for a list of which nothing may be believed: not DER, malformed, critical extensions that are not processed,
    /// in the list or in any entry, an algorithm that is not supported.
    [[nodiscard]] static std::unique_ptr<KnownList> Read(CrlPtr list);

    [[nodiscard]] bool isDelta() const { return extensions.deltaCrlIndicator.has_value(); }
    [[nodiscard]] bool isIndirect() const
    {
        return extensions.issuingDistributionPoint && extensions.issuingDistributionPoint->isIndirect;
    }
};

/// One place where the status of a certificate is published.
struct StatusPoint {
    /// Its name, and that of the certificate's issuer, which relative names begin with.
    std::optional<DistributionPointName> name;
    ReasonFlags reasons = allReasons;
    /// The issuers of the lists: those that the point names, or the issuer of the certificate.
    std::vector<ComparableName> issuers;
    /// The names that a list may have its point under when this one has no name of its own.
    GeneralNames issuerNames;
    bool namesIssuer = false;
};

/// The distribution points of a certificate, and, last, the one that is implied: its issuer's name.
[[nodiscard]] std::vector<StatusPoint> StatusPointsOf(const KnownCertificate& certificate);

/// The reasons for which the list speaks of the certificate at this point; 0 when it does not. The issuer is one of the point's.
/// \return none when `work` is used up.
[[nodiscard]] std::optional<ReasonFlags> ReasonsInScope(const KnownList& list, const StatusPoint& point,
                                                        const KnownCertificate& certificate, ValidationWork& work);

/// Whether `delta` says what changed since `base`: one issuer, one scope, one key, and numbers that fit (6.3.3 (c)).
[[nodiscard]] bool IsDeltaOf(const KnownList& delta, const KnownList& base);

/// The one entry of the certificate; none when the list has none for it.
[[nodiscard]] std::optional<RevokedEntry> EntryOf(const KnownList& list, const KnownCertificate& certificate);

/// Whether `first` is the greater of two CRL numbers, big-endian.
[[nodiscard]] bool IsGreaterNumber(const element& first, const element& second);

} // namespace ccrypto
