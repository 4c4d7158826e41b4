#include "pki/validation/path_validation.h"

#include "core/diagnostics/auto_logger.h"
#include "pki/validation/path_finder.h"
#include "pki/validation/status_finder.h"
#include "pki/validation/validation_work.h"

#include <utility>

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

PathVerdict ValidateCertificate(const CertificatePtr& subject, const CertificatePool& pool, const StatusSources& sources,
                                const ValidationOptions& options)
{
    CCryptoAutoLogger logger("ValidateCertificate");

    PathVerdict verdict;
    verdict.at = options.at;
    std::optional<KnownCertificate> read;
    const KnownCertificate* known = subject != nullptr ? pool.find(*subject) : nullptr;
    if (known == nullptr || !options.at.isValid()) {
        read = KnownCertificate::Read(subject);
        if (!read || !options.at.isValid()) {
            verdict.reason = Reason::malformed;
            verdict.detail = read ? "no time to validate at" : "no certificate";
            return logger.fail(std::move(verdict));
        }
        if (const KnownCertificate* sameKey = pool.withKeyOf(*subject))
            read->key = sameKey->key;
        known = &*read;
    }

    ValidationWork work;
    PathFinder finder(pool, options, work);
    StatusFinder statuses(pool, sources, options, work);
    const auto judge = [&](PathAttempt& attempt, const auto& keys) { statuses.judge(attempt, keys); };
    Report(finder.find(*known, nullptr, true, judge), verdict);
    verdict.work = {work.steps(), work.signatures()};
    return logger.succeed(std::move(verdict));
}

} // namespace ccrypto
