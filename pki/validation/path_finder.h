#pragma once

#include "pki/validation/certificate_pool.h"
#include "pki/validation/path_rules.h"
#include "pki/validation/validation_work.h"
#include "pki/validation/verdict.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace ccrypto {

/// One path that was tried, and how far it came: of two that fail the one at the later stage has more to say, then the one whose
/// fault is closer to the subject.
struct PathAttempt {
    enum class Stage {
        incomplete, ///< no anchor was reached
        signatures,
        rules,
        status, ///< a certificate between is revoked
        undecided,
        revoked, ///< the subject itself is revoked, so no path is valid
        valid,
    };

    Stage stage = Stage::incomplete;
    PathFinding fault;
    CertificatePath path;
    /// As long as the path where its status was looked for; else empty.
    std::vector<StatusInformation> status;
    std::vector<Oid> policies;

    [[nodiscard]] bool isFurtherThan(const PathAttempt& other) const;
};

/// Finds paths to anchors in a pool (RFC 4158 has the ways in which this can go wrong).
///
/// Depth first over chains of names, without recursion. Signatures are verified when a chain has reached an anchor, from the anchor
/// down, so whoever is not certified by an anchor cannot make the finder work on signatures; and a certificate from which no anchor
/// can be reached is not tried again. A certificate is in a path once, and so is a name with a key among the issuers: the subject
/// may have those of an issuer, whose key renewed it.
class PathFinder {
public:
    /// What is to be done with a path whose signatures are good and that keeps the rules; its stage is valid, and may be changed.
    using Judge = std::function<void(PathAttempt& attempt, const std::vector<std::shared_ptr<ICryptoKeyPair>>& keys)>;

    PathFinder(const CertificatePool& pool, const ValidationOptions& options, ValidationWork& work);

    /// The first valid path, or what is said when there is none. \param anchor the only one where paths may end; null for any.
    /// \param explain whether certificates that cannot be valid are tried as well when nothing better fails.
    [[nodiscard]] PathAttempt find(const KnownCertificate& subject, const KnownCertificate* anchor, bool explain,
                                   const Judge& judge);

private:
    struct Frame {
        const KnownCertificate* certificate = nullptr;
        std::vector<const KnownCertificate*> issuers;
        std::size_t next = 0;
        /// Something above it failed for a reason that another path need not have.
        bool mayDoBetter = false;
    };

    void findReachable();
    [[nodiscard]] bool search(bool withFaults);
    [[nodiscard]] bool mayFollow(const KnownCertificate& issuer, bool withFaults);
    void push(const KnownCertificate& certificate);
    void leave();
    /// \return true when the search is over.
    [[nodiscard]] bool tryPath();
    [[nodiscard]] PathFinding verifySignatures(const CertificatePath& path, std::vector<std::shared_ptr<ICryptoKeyPair>>& keys);
    [[nodiscard]] bool mayEndPath(const KnownCertificate& certificate) const;
    [[nodiscard]] CertificatePath path() const;
    [[nodiscard]] bool hasFault(const KnownCertificate& issuer);
    void offer(PathAttempt attempt);

    const CertificatePool& pool_;
    const ValidationOptions& options_;
    ValidationWork& work_;

    const KnownCertificate* onlyAnchor_ = nullptr;
    const Judge* judge_ = nullptr;
    Finding subjectFault_;
    /// Names of which a certificate leads to an anchor, as far as names say.
    std::set<ComparableName> reachable_;
    bool reachableIsKnown_ = false;
    std::map<const KnownCertificate*, bool> faults_;
    std::set<const KnownCertificate*> dead_;
    std::vector<Frame> frames_;
    bool tooDeep_ = false;
    PathAttempt best_;
};

} // namespace ccrypto
