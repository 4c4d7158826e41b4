#pragma once

#include "pki/validation/certificate_pool.h"
#include "pki/validation/path_validation.h"
#include "pki/validation/validation_work.h"
#include "pki/x509/crl.h"
#include "pki/x509/extensions.h"
#include "pki/x509/name.h"
#include "pki/x509/signature.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

// Which certificates a revocation list speaks of (RFC 5280, 6.3.3 (b) to (d)).

namespace ccrypto {

/// Names of distribution points, in the form in which they are compared.
class ScopeNames {
public:
    ScopeNames() = default;
    explicit ScopeNames(const GeneralNames& names);

    [[nodiscard]] std::size_t size() const { return directories_.size() + others_.size(); }
    [[nodiscard]] bool hasAnyOf(const ScopeNames& names) const;

private:
    std::set<ComparableName> directories_;
    /// With those that are not names of a directory, whatever their kind says.
    std::set<std::pair<GeneralName::Kind, std::string>> others_;
};

/// A list with what is read of it once.
struct KnownList {
    CrlPtr list;
    ComparableName issuer;
    ReadExtensions extensions;
    SignatureAlgorithm signedBy;
    /// Of the distribution point that the list is for; none where it names none.
    std::optional<ScopeNames> pointNames;

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
    /// Under which a list may have this point: its own, or else those of the issuer of the lists.
    ScopeNames names;
    ReasonFlags reasons = allReasons;
    /// The issuers of the lists: those that the point names, or the issuer of the certificate.
    std::vector<ComparableName> issuers;
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

enum class Freshness { early, fresh, stale };
/// Where the time asked for is between this update and next update, or the greatest age where there is no next update; the clock
/// skew extends both ends.
[[nodiscard]] Freshness FreshnessOf(const CCrypto_X509_CRL& list, const ValidationOptions& options);

} // namespace ccrypto
