#pragma once

#include "pki/validation/certificate_pool.h"
#include "pki/validation/list_scope.h"
#include "pki/validation/path_finder.h"
#include "pki/validation/path_validation.h"
#include "pki/validation/validation_work.h"
#include "pki/validation/verdict.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace ccrypto {

/// Finds out from lists (RFC 5280, 6.3) and OCSP responses whether the certificates of a path are revoked.
///
/// What any of them says that is verified counts in this order: revoked, good, stale, unknown. Of lists that hold the newest
/// speaks, of those of one moment one that revokes; one that the certificate itself signed never overrules another. A list or
/// response of another time than the one asked for can say that a certificate was revoked, unless it was put on hold, but never
/// that it is good. A responder whose own certificate is revoked by a list says nothing.
class StatusFinder {
public:
    StatusFinder(const CertificatePool& pool, const StatusSources& sources, const ValidationOptions& options, ValidationWork& work);

    /// Looks for the status of every certificate of the path, from the anchor down, and changes the stage of the attempt where
    /// what it finds or misses decides. \param keys of the certificates.
    void judge(PathAttempt& attempt, const std::vector<std::shared_ptr<ICryptoKeyPair>>& keys);

private:
    using Keys = std::vector<std::shared_ptr<ICryptoKeyPair>>;
    struct Issued {
        const CertificatePath& path;
        const Keys& keys;
        std::uint32_t index = 0;

        [[nodiscard]] const KnownCertificate& certificate() const { return *path[index]; }
        [[nodiscard]] const KnownCertificate& issuer() const { return *path[index + 1]; }
    };
    /// A list together with the newest delta that fits it.
    struct Combined {
        const KnownList* delta = nullptr;
        /// Of the certificate, in the newer of the two that has one.
        std::optional<RevokedEntry> entry;
        Freshness freshness = Freshness::stale;
    };
    /// Who signed a list.
    struct ListSigner {
        std::shared_ptr<ICryptoKeyPair> key; ///< null where nobody who may is found
        bool isSubject = false;              ///< the certificate that the list is asked about
    };
    /// What the lists have said so far.
    struct Heard {
        ReasonFlags good = 0;
        const KnownList* goodList = nullptr;
        const KnownList* goodDelta = nullptr;
        const KnownList* staleList = nullptr;
        /// The certificate signed one of the good lists itself: whoever has a revoked key may say so.
        bool isOwnWord = false;

        /// What said last that the certificate is good; null while nothing did.
        [[nodiscard]] const KnownList* speaker() const { return goodDelta != nullptr ? goodDelta : goodList; }
    };

    enum class Responders {
        all,
        issuerAndSelf, ///< the issuer, and the owner of the certificate in question: they are believed without asking about them
    };

    /// \param isSettled whether nothing above the certificate is in doubt. Only then is the answer remembered for other paths: a
    /// list that is signed by what is in doubt in one path proves nothing in another.
    [[nodiscard]] StatusInformation statusOf(const Issued& issued, bool isSettled);
    [[nodiscard]] StatusInformation statusByResponses(const Issued& issued, Responders responders);
    /// Why what the responder says does not count: a list, its issuer's response or its own revokes its certificate. Else empty.
    [[nodiscard]] CCryptoString whyNotBelieved(const CertificatePtr& responder, const Issued& issued);
    [[nodiscard]] StatusInformation statusByLists(const Issued& issued);
    /// \return true when the certificate is revoked.
    [[nodiscard]] bool hear(const KnownList& list, ReasonFlags reasons, const Issued& issued, Heard& heard,
                            StatusInformation& information);
    /// Whether the list or a delta of it has an entry of the certificate.
    [[nodiscard]] bool isListed(const KnownList& list, const KnownCertificate& certificate) const;
    /// Whether what a list of another time says holds at the time asked for.
    [[nodiscard]] bool staysRevoked(const std::optional<RevokedEntry>& entry) const;

    [[nodiscard]] ListSigner signerOf(const KnownList& list, const Issued& issued);
    [[nodiscard]] bool isSignedBy(const KnownList& list, const std::shared_ptr<ICryptoKeyPair>& key);
    /// The key of a certificate that signs lists, when a path to the anchor is valid; else null.
    [[nodiscard]] std::shared_ptr<ICryptoKeyPair> validatedKey(const KnownCertificate& signer, const KnownCertificate& anchor);
    [[nodiscard]] Combined combine(const KnownList& base, const std::shared_ptr<ICryptoKeyPair>& signer,
                                   const KnownCertificate& certificate);
    [[nodiscard]] const std::vector<StatusPoint>& pointsOf(const KnownCertificate& certificate);

    /// Signers of lists whose own status is on a list that another one signs, and so on.
    static constexpr std::uint32_t maxNesting = 4;

    const CertificatePool& pool_;
    const StatusSources& sources_;
    const ValidationOptions& options_;
    ValidationOptions signerOptions_;
    ValidationWork& work_;
    bool hasSources_ = false;
    std::uint32_t nesting_ = 0;

    /// The newest first.
    std::map<ComparableName, std::vector<std::unique_ptr<KnownList>>> lists_;
    /// Of a certificate below an anchor.
    std::map<std::pair<const void*, const void*>, StatusInformation> known_;
    std::map<std::pair<const void*, const void*>, std::shared_ptr<ICryptoKeyPair>> signers_;
    std::map<const void*, std::vector<StatusPoint>> points_;
    std::vector<CertificatePtr> responders_;
    /// Kept, since what is remembered of certificates is found by their addresses. Each has cost a signature.
    std::deque<KnownCertificate> askedResponders_;
};

} // namespace ccrypto
