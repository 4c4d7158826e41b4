#include "pki/validation/path_validation.h"

#include "core/diagnostics/auto_logger.h"
#include "pki/validation/path_finder.h"
#include "pki/validation/status_finder.h"
#include "pki/validation/validation_work.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace ccrypto {

namespace {

Verdict VerdictOf(PathAttempt::Stage stage)
{
    switch (stage) {
    case PathAttempt::Stage::valid:
        return Verdict::valid;
    case PathAttempt::Stage::undecided:
        return Verdict::undecided;
    default:
        return Verdict::invalid;
    }
}

void Report(PathAttempt attempt, PathVerdict& verdict)
{
    verdict.verdict = VerdictOf(attempt.stage);
    verdict.reason = attempt.fault.finding.reason;
    verdict.certificate = attempt.fault.certificate;
    verdict.detail = std::move(attempt.fault.finding.detail);
    if (verdict.verdict == Verdict::valid)
        verdict.policies = std::move(attempt.policies);

    attempt.status.resize(attempt.path.size());
    for (std::size_t index = 0; index < attempt.path.size(); index++)
        verdict.path.push_back({attempt.path[index]->certificate, std::move(attempt.status[index])});
    if (attempt.stage != PathAttempt::Stage::incomplete && !verdict.path.empty() && attempt.path.back()->isAnchor)
        verdict.path.back().status.status = CertificateStatus::anchor;
}

} // namespace

struct CertificateValidator::Parts {
    Parts(const CertificatePool& certificates, const StatusSources& sources, const ValidationOptions& wanted)
        : pool(certificates), options(wanted), finder(certificates, wanted, work), statuses(certificates, sources, wanted, work)
    {
    }

    const CertificatePool& pool;
    const ValidationOptions& options;
    ValidationWork work;
    PathFinder finder;
    StatusFinder statuses;
    /// Subjects that are not of the pool: what was found out about them is remembered by address.
    std::vector<std::unique_ptr<KnownCertificate>> others;
};

CertificateValidator::CertificateValidator(const CertificatePool& pool, const StatusSources& sources,
                                           const ValidationOptions& options)
    : parts_(std::make_unique<Parts>(pool, sources, options))
{
}

CertificateValidator::~CertificateValidator() = default;

PathVerdict CertificateValidator::validate(const CertificatePtr& subject)
{
    CCryptoAutoLogger logger("CertificateValidator::validate");
    Parts& parts = *parts_;
    PathVerdict verdict;
    verdict.at = parts.options.at;
    const KnownCertificate* known = subject != nullptr ? parts.pool.find(*subject) : nullptr;
    if (known == nullptr || !parts.options.at.isValid()) {
        std::optional<KnownCertificate> read = KnownCertificate::Read(subject);
        if (!read || !parts.options.at.isValid()) {
            verdict.reason = Reason::malformed;
            verdict.detail = read ? "no time to validate at" : "no certificate";
            return logger.fail(std::move(verdict));
        }
        if (const KnownCertificate* sameKey = parts.pool.withKeyOf(*subject))
            read->key = sameKey->key;
        known = parts.others.emplace_back(std::make_unique<KnownCertificate>(std::move(*read))).get();
    }

    const std::uint32_t steps = parts.work.steps();
    const std::uint32_t signatures = parts.work.signatures();
    const auto judge = [&](PathAttempt& attempt, const auto& keys) { parts.statuses.judge(attempt, keys); };
    Report(parts.finder.find(*known, nullptr, true, judge), verdict);
    verdict.work = {parts.work.steps() - steps, parts.work.signatures() - signatures};
    return logger.succeed(std::move(verdict));
}

PathVerdict ValidateCertificate(const CertificatePtr& subject, const CertificatePool& pool, const StatusSources& sources,
                                const ValidationOptions& options)
{
    return CertificateValidator(pool, sources, options).validate(subject);
}

} // namespace ccrypto
