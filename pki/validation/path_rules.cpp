#include "pki/validation/path_rules.h"

#include "pki/validation/identity.h"
#include "pki/validation/policy_graph.h"
#include "pki/validation/profile.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace ccrypto {

namespace {

constexpr std::uint32_t minStrongBits = 2048;

Finding CheckTime(const CCrypto_X509_Certificate& certificate, const CCryptoDateTime& at)
{
    if (at < certificate.validFrom())
        return {Reason::notYetValid, "valid from " + TimeText(certificate.validFrom())};
    if (!(at <= certificate.validTo()))
        return {Reason::expired, "valid until " + TimeText(certificate.validTo())};
    return {};
}

Finding CheckIssuer(const ReadExtensions& extensions, bool isAnchor)
{
    if (!extensions.basicConstraints && !isAnchor)
        return {Reason::notACa, "no basic constraints"};
    if (extensions.basicConstraints && !extensions.basicConstraints->isCa)
        return {Reason::notACa, "basic constraints without cA"};
    if (extensions.keyUsage && !extensions.keyUsage->has(KeyUsageBit::keyCertSign))
        return {Reason::keyUsage, "no keyCertSign"};
    return {};
}

bool AllowsPurpose(const KnownCertificate& certificate, const Oid& purpose)
{
    const auto& allowed = certificate.extensions.extendedKeyUsage;
    return !allowed || std::find(allowed->begin(), allowed->end(), purpose) != allowed->end() ||
           std::find(allowed->begin(), allowed->end(), oids::anyExtendedKeyUsage) != allowed->end();
}

/// The state of RFC 5280, 6.1.2, as it goes from certificate to certificate. Counts that decide "after so many certificates" hold
/// the number of those that may still come, which is more than there are for never.
class PathRules {
public:
    PathRules(const CertificatePath& path, const ValidationOptions& options, NameWork& work)
        : path_(path), options_(options), work_(work), maxIntermediates_(options.maxDepth.value_or(never)),
          explicitPolicy_(options.explicitPolicy ? 0 : never), inhibitAnyPolicy_(options.inhibitAnyPolicy ? 0 : never),
          inhibitMapping_(options.inhibitMapping ? 0 : never)
    {
    }

    Finding addAnchor();
    Finding addCertificate(std::uint32_t index);
    Finding finishPolicies(std::vector<Oid>& policies);

private:
    static constexpr std::uint32_t never = std::numeric_limits<std::uint32_t>::max();

    static void countDown(std::uint32_t& count)
    {
        if (count != 0 && count != never)
            count--;
    }
    static void limitTo(std::uint32_t& count, const std::optional<std::uint32_t>& limit)
    {
        if (limit)
            count = std::min(count, *limit);
    }

    Finding checkPolicies(const KnownCertificate& certificate, bool isLast);
    Finding takeMappings(const KnownCertificate& certificate);
    Finding takeConstraints(const KnownCertificate& certificate);
    Finding countIntermediate(const KnownCertificate& certificate);

    const CertificatePath& path_;
    const ValidationOptions& options_;
    NameWork& work_;
    NameConstraintState names_;
    PolicyGraph graph_;
    std::uint32_t maxIntermediates_;
    std::uint32_t explicitPolicy_;
    std::uint32_t inhibitAnyPolicy_;
    std::uint32_t inhibitMapping_;
};

Finding PathRules::addAnchor()
{
    const KnownCertificate& anchor = *path_.back();
    const bool issues = path_.size() > 1;
    Finding finding = CheckCertificate(anchor, issues, true, options_);
    if (!finding.passed() || !issues)
        return finding;

    // As RFC 5937 has it, the policies of the anchor are those that its paths may have.
    if (anchor.extensions.policies)
        graph_.addCertificate(&*anchor.extensions.policies, true);
    if (anchor.extensions.basicConstraints)
        limitTo(maxIntermediates_, anchor.extensions.basicConstraints->pathLength);
    return takeConstraints(anchor);
}

Finding PathRules::addCertificate(std::uint32_t index)
{
    const KnownCertificate& certificate = *path_[index];
    const bool isLast = index == 0;
    Finding finding = CheckCertificate(certificate, !isLast, false, options_);
    if (finding.passed() && (isLast || !certificate.isSelfIssued()))
        finding = names_.check(certificate, work_);
    if (finding.passed())
        finding = checkPolicies(certificate, isLast);
    if (!finding.passed() || isLast)
        return finding;

    finding = takeMappings(certificate);
    if (finding.passed())
        finding = countIntermediate(certificate);
    if (finding.passed())
        finding = takeConstraints(certificate);
    return finding;
}

Finding PathRules::checkPolicies(const KnownCertificate& certificate, bool isLast)
{
    const auto& policies = certificate.extensions.policies;
    const bool anyPolicyCounts = inhibitAnyPolicy_ > 0 || (!isLast && certificate.isSelfIssued());
    graph_.addCertificate(policies ? &*policies : nullptr, anyPolicyCounts);
    if (graph_.isExceeded())
        return {Reason::limit, "too many certificate policies"};
    if (explicitPolicy_ == 0 && graph_.isEmpty())
        return {Reason::policy, "no policy is valid up to here"};
    return {};
}

/// RFC 5280, 6.1.4 (a) and (b).
Finding PathRules::takeMappings(const KnownCertificate& certificate)
{
    if (!certificate.extensions.policyMappings)
        return {};
    const auto isOfAny = [](const PolicyMapping& mapping) {
        return mapping.issuerDomain == oids::anyPolicy || mapping.subjectDomain == oids::anyPolicy;
    };
    const std::vector<PolicyMapping>& mappings = *certificate.extensions.policyMappings;
    if (std::any_of(mappings.begin(), mappings.end(), isOfAny))
        return {Reason::policy, "anyPolicy is mapped"};
    graph_.applyMappings(mappings, inhibitMapping_ > 0);
    return graph_.isExceeded() ? Finding{Reason::limit, "too many policy mappings"} : Finding();
}

/// RFC 5280, 6.1.4 (h), (l) and (m).
Finding PathRules::countIntermediate(const KnownCertificate& certificate)
{
    if (!certificate.isSelfIssued()) {
        if (maxIntermediates_ == 0)
            return {Reason::pathLength, "more intermediate certificates than are allowed"};
        countDown(maxIntermediates_);
        countDown(explicitPolicy_);
        countDown(inhibitMapping_);
        countDown(inhibitAnyPolicy_);
    }
    limitTo(maxIntermediates_, certificate.extensions.basicConstraints->pathLength);
    return {};
}

/// RFC 5280, 6.1.4 (g), (i) and (j).
Finding PathRules::takeConstraints(const KnownCertificate& certificate)
{
    if (const auto& constraints = certificate.extensions.policyConstraints) {
        limitTo(explicitPolicy_, constraints->requireExplicitPolicy);
        limitTo(inhibitMapping_, constraints->inhibitPolicyMapping);
    }
    limitTo(inhibitAnyPolicy_, certificate.extensions.inhibitAnyPolicy);
    return certificate.extensions.nameConstraints ? names_.add(*certificate.extensions.nameConstraints) : Finding();
}

/// RFC 5280, 6.1.5 (a), (b) and (g).
Finding PathRules::finishPolicies(std::vector<Oid>& policies)
{
    countDown(explicitPolicy_);
    if (const auto& constraints = path_.front()->extensions.policyConstraints;
        constraints && constraints->requireExplicitPolicy == 0U)
        explicitPolicy_ = 0;
    policies = graph_.policies(options_.policies);
    if (explicitPolicy_ == 0 && policies.empty())
        return {Reason::policy, "no policy of the path is accepted"};
    return {};
}

PathFinding CheckPurposes(const CertificatePath& path, const ValidationOptions& options)
{
    for (std::uint32_t index = static_cast<std::uint32_t>(path.size()); index-- > 0;)
        for (const Oid& purpose : options.extendedKeyUsages)
            if (!AllowsPurpose(*path[index], purpose))
                return {{Reason::extendedKeyUsage, purpose.dotted()}, index};
    return {};
}

PathFinding CheckProfiles(const CertificatePath& path)
{
    for (std::uint32_t index = static_cast<std::uint32_t>(path.size()); index-- > 0;) {
        const CertificateRole role = index == 0 ? CertificateRole::endEntity : CertificateRole::ca;
        const KnownCertificate* const issuer = index + 1 < path.size() ? path[index + 1] : nullptr;
        if (Finding finding = CheckProfile(*path[index], role, issuer); !finding.passed())
            return {std::move(finding), index};
    }
    return {};
}

} // namespace

CCryptoString TimeText(const CCryptoDateTime& time)
{
    return time.format("yyyy-MM-dd HH:mm:ss") + CCryptoString("Z");
}

Finding CheckOctets(const KnownCertificate& certificate, bool isAnchor, const ValidationOptions& options)
{
    if (!certificate.certificate->isDer())
        return {Reason::notDer, "octets that DER writes otherwise"};
    if (isAnchor)
        return {};
    if (!certificate.certificate->algorithmsAgree())
        return {Reason::malformed, "the signature algorithm inside differs from the one outside"};
    if (!certificate.signedBy)
        return {Reason::unsupportedAlgorithm, certificate.certificate->signatureAlgorithm().oid()};
    if (certificate.signedBy->isBroken() || (certificate.signedBy->isWeak() && !options.allowWeak))
        return {Reason::weakAlgorithm, "hash function of the signature"};
    return {};
}

Finding CheckKey(const ICryptoKeyPair& key, const ValidationOptions& options)
{
    const bool hasModulus = key.algorithmId() == algorithm::rsaEncryption || key.algorithmId() == algorithm::dsa;
    if (!hasModulus || key.keySize() >= minStrongBits || options.allowWeak)
        return {};
    return {Reason::weakAlgorithm, CCryptoString(key.name()) + " key of " + std::to_string(key.keySize()).c_str() + " bits"};
}

Finding CheckCertificate(const KnownCertificate& certificate, bool issues, bool isAnchor, const ValidationOptions& options)
{
    if (certificate.extensions.isMalformed)
        return {Reason::malformed, "an extension that occurs twice, or does not have its structure"};
    Finding finding = CheckTime(*certificate.certificate, options.at);
    if (finding.passed() && certificate.extensions.hasUnknownCritical)
        finding = {Reason::criticalExtension,
                   "a critical extension that is not processed: " + CriticalExtensionText(certificate.extensions)};
    if (finding.passed() && issues)
        finding = CheckIssuer(certificate.extensions, isAnchor);
    return finding;
}

Finding CheckSubject(const KnownCertificate& subject, bool isAnchor, const ValidationOptions& options)
{
    Finding finding = CheckCertificate(subject, false, isAnchor, options);
    if (!finding.passed())
        return finding;
    if (subject.extensions.keyUsage)
        for (const KeyUsageName& usage : keyUsageNames)
            if ((options.keyUsage & static_cast<std::uint16_t>(usage.bit)) != 0 && !subject.extensions.keyUsage->has(usage.bit))
                return {Reason::keyUsage, CCryptoString(usage.name) + " is missing"};
    if (PathFinding purposes = CheckPurposes({&subject}, options); !purposes.passed())
        return std::move(purposes.finding);
    if (!options.host.empty())
        finding = CheckHost(subject.extensions, options.host);
    if (finding.passed() && !options.ipAddress.empty())
        finding = CheckIpAddress(subject.extensions, options.ipAddress);
    if (finding.passed() && !options.email.empty())
        finding = CheckEmail(subject.extensions, options.email);
    return finding;
}

PathFinding CheckPath(const CertificatePath& path, const ValidationOptions& options, NameWork& work, std::vector<Oid>& policies)
{
    PathRules rules(path, options, work);
    std::uint32_t index = static_cast<std::uint32_t>(path.size()) - 1;
    for (Finding finding = rules.addAnchor();; finding = rules.addCertificate(--index)) {
        if (!finding.passed())
            return {std::move(finding), index};
        if (index == 0)
            break;
    }
    if (Finding finding = rules.finishPolicies(policies); !finding.passed())
        return {std::move(finding), 0};
    if (PathFinding purposes = CheckPurposes(path, options); !purposes.passed())
        return purposes;
    return options.strict ? CheckProfiles(path) : PathFinding();
}

} // namespace ccrypto
