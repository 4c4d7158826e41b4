#include "pki/validation/list_verification.h"

#include "pki/validation/list_scope.h"
#include "pki/validation/path_rules.h"
#include "pki/validation/validation_work.h"

#include <optional>

namespace ccrypto {

namespace {

/// What makes a list unusable whoever signed it; see KnownList::Read().
Finding CheckListItself(const CCrypto_X509_CRL& list, const ValidationOptions& options)
{
    if (!list.isDer())
        return {Reason::notDer, "octets that DER writes otherwise"};
    if (!list.algorithmsAgree())
        return {Reason::malformed, "the signature algorithm inside differs from the one outside"};
    const ReadExtensions extensions = ReadAllExtensions(list.extensions(), ExtensionOwner::list);
    if (extensions.isMalformed)
        return {Reason::malformed, "an extension that occurs twice, or does not have its structure"};
    if (extensions.hasUnknownCritical)
        return {Reason::criticalExtension, "a critical extension that is not processed: " + CriticalExtensionText(extensions)};
    if (list.hasUnknownCriticalEntry())
        return {Reason::criticalExtension, "a critical extension of an entry that is not processed"};
    const std::optional<SignatureAlgorithm> algorithm = ReadSignatureAlgorithm(list.signatureAlgorithm());
    if (!algorithm)
        return {Reason::unsupportedAlgorithm, list.signatureAlgorithm().oid()};
    if (algorithm->isBroken() || (algorithm->isWeak() && !options.allowWeak))
        return {Reason::weakAlgorithm, "hash function of the signature"};
    return {};
}

Finding CheckListTime(const CCrypto_X509_CRL& list, const ValidationOptions& options)
{
    switch (FreshnessOf(list, options)) {
    case Freshness::early:
        return {Reason::notYetValid, "this update is " + TimeText(list.thisUpdate())};
    case Freshness::stale:
        return {Reason::statusStale, list.nextUpdate().isValid()
                                         ? "next update was " + TimeText(list.nextUpdate())
                                         : "this update was " + TimeText(list.thisUpdate()) + ", with no next update"};
    case Freshness::fresh:
        break;
    }
    return {};
}

/// Tries certificates as the signer of one list, and keeps what the one said that came furthest.
class SignerSearch {
public:
    SignerSearch(const KnownList& list, const CertificatePool& pool, bool needsPath, const ValidationOptions& options)
        : list_(list), pool_(pool), needsPath_(needsPath), allowWeak_(options.allowWeak)
    {
        signerOptions_.at = options.at;
        signerOptions_.strict = options.strict;
        signerOptions_.allowWeak = options.allowWeak;
        verdict_.reason = Reason::noPath;
        verdict_.detail = "there is no certificate of the list's issuer";
    }

    /// \return true when it is the signer, or when there is nothing left to try others with.
    bool tryCertificate(const KnownCertificate& certificate)
    {
        if (certificate.subject != list_.issuer)
            return false;
        if (certificate.extensions.keyUsage && !certificate.extensions.keyUsage->has(KeyUsageBit::crlSign))
            return isOver(Stage::usage, {Reason::keyUsage, "cRLSign is missing"}, certificate);
        ValidationOptions keyOptions;
        keyOptions.allowWeak = allowWeak_;
        if (Finding finding = CheckKey(*certificate.key, keyOptions); !finding.passed())
            return isOver(Stage::usage, std::move(finding), certificate);
        switch (work_.check(*list_.list, list_.signedBy, *certificate.key).value_or(SignatureResult::bad)) {
        case SignatureResult::good:
            break;
        case SignatureResult::bad:
            return isOver(Stage::signature, {Reason::badSignature, "the key of the list's issuer did not sign it"}, certificate);
        case SignatureResult::unsupportedAlgorithm:
            return isOver(Stage::usage, {Reason::unsupportedAlgorithm, "of another kind of key"}, certificate);
        }
        return needsPath_ ? tryPath(certificate) : isOver(Stage::valid, {}, certificate);
    }

    [[nodiscard]] ListVerdict verdict() const { return verdict_; }

private:
    enum class Stage { none, usage, signature, path, valid };

    bool tryPath(const KnownCertificate& certificate)
    {
        PathVerdict found = ValidateCertificate(certificate.certificate, pool_, {}, signerOptions_);
        for (std::uint32_t step = 0; step < found.work.steps && !work_.isExceeded(); ++step)
            (void)work_.takeStep();
        if (!work_.isExceeded())
            (void)work_.takeSignatures(found.work.signatures);
        const bool isValid = found.verdict == Verdict::valid;
        const bool isBetter = stage_ < (isValid ? Stage::valid : Stage::path);
        const bool isDone = isOver(isValid ? Stage::valid : Stage::path, {found.reason, found.detail}, certificate);
        if (isBetter)
            verdict_.path = std::move(found.path);
        return isDone;
    }

    bool isOver(Stage stage, Finding finding, const KnownCertificate& certificate)
    {
        if (stage > stage_) {
            stage_ = stage;
            verdict_.verdict = stage == Stage::valid ? Verdict::valid : Verdict::invalid;
            verdict_.reason = finding.reason;
            verdict_.detail = std::move(finding.detail);
            verdict_.signer = stage > Stage::signature ? certificate.certificate : nullptr;
        }
        if (stage_ != Stage::valid && work_.isExceeded()) {
            verdict_.reason = Reason::limit;
            verdict_.detail = "too many certificates have the name of the list's issuer";
        }
        return stage_ == Stage::valid || work_.isExceeded();
    }

    const KnownList& list_;
    const CertificatePool& pool_;
    const bool needsPath_;
    const bool allowWeak_;
    ValidationOptions signerOptions_;
    ValidationWork work_;
    Stage stage_ = Stage::none;
    ListVerdict verdict_;
};

ListVerdict ListVerdictOf(Finding finding)
{
    ListVerdict verdict;
    verdict.reason = finding.reason;
    verdict.detail = std::move(finding.detail);
    return verdict;
}

} // namespace

ListVerdict VerifyList(const CrlPtr& list, const CertificatePtr& issuer, const CertificatePool& pool, bool needsPath,
                       const ValidationOptions& options)
{
    if (list == nullptr || !list->isLoaded())
        return ListVerdictOf({Reason::malformed, "it is not a revocation list"});
    if (Finding finding = CheckListItself(*list, options); !finding.passed())
        return ListVerdictOf(std::move(finding));
    const std::unique_ptr<KnownList> known = KnownList::Read(list);
    if (known == nullptr)
        return ListVerdictOf({Reason::malformed, "the issuer is not a name"});

    SignerSearch search(*known, pool, needsPath, options);
    // The certificate is read once, and lives as long as the search, which remembers its signatures.
    const std::optional<KnownCertificate> only = issuer != nullptr ? KnownCertificate::Read(issuer) : std::nullopt;
    if (only)
        (void)search.tryCertificate(*only);
    if (issuer == nullptr)
        for (const KnownCertificate* const candidate : pool.signersOf(known->issuer, known->extensions.authorityKeyIdentifier))
            if (search.tryCertificate(*candidate))
                break;
    ListVerdict verdict = search.verdict();
    if (verdict.verdict != Verdict::valid)
        return verdict;
    if (Finding finding = CheckListTime(*list, options); !finding.passed()) {
        verdict.verdict = finding.reason == Reason::statusStale ? Verdict::undecided : Verdict::invalid;
        verdict.reason = finding.reason;
        verdict.detail = std::move(finding.detail);
    }
    return verdict;
}

} // namespace ccrypto
