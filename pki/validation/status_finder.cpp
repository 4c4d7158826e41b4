#include "pki/validation/status_finder.h"

#include "pki/ocsp/response_verification.h"

#include <algorithm>
#include <utility>

namespace ccrypto {

namespace {

std::uint32_t RankOf(CertificateStatus status)
{
    switch (status) {
    case CertificateStatus::revoked:
        return 3;
    case CertificateStatus::good:
        return 2;
    case CertificateStatus::stale:
        return 1;
    default:
        return 0;
    }
}

CCryptoString ListText(const KnownList& list)
{
    if (!list.extensions.crlNumber)
        return "CRL";
    element number = *list.extensions.crlNumber;
    number.setType(ElementType::integer);
    return "CRL " + number.toString();
}

CCryptoString RevocationText(std::optional<RevocationReason> reason, const CCryptoDateTime& since)
{
    return CCryptoString(RevocationReasonName(reason.value_or(RevocationReason::unspecified))) + " since " + TimeText(since);
}

bool MaySignLists(const KnownCertificate& certificate)
{
    return !certificate.extensions.keyUsage || certificate.extensions.keyUsage->has(KeyUsageBit::crlSign);
}

} // namespace

StatusFinder::StatusFinder(const CertificatePool& pool, const StatusSources& sources, const ValidationOptions& options,
                           ValidationWork& work)
    : pool_(pool), sources_(sources), options_(options), work_(work),
      hasSources_(!sources.crls.empty() || !sources.responses.empty())
{
    signerOptions_.at = options.at;
    signerOptions_.strict = options.strict;
    signerOptions_.allowWeak = options.allowWeak;

    for (const CrlPtr& list : sources.crls)
        if (std::unique_ptr<KnownList> known = KnownList::Read(list))
            lists_[known->issuer].push_back(std::move(known));
    for (auto& [issuer, lists] : lists_)
        std::stable_sort(lists.begin(), lists.end(), [](const auto& first, const auto& second) {
            return first->list->thisUpdate() > second->list->thisUpdate();
        });
    if (!sources.responses.empty()) {
        for (const auto& known : pool.certificates()) {
            const auto& purposes = known->extensions.extendedKeyUsage;
            if (purposes && std::find(purposes->begin(), purposes->end(), oids::ocspSigning) != purposes->end())
                responders_.push_back(known->certificate);
        }
    }
}

void StatusFinder::judge(PathAttempt& attempt, const Keys& keys)
{
    const CertificatePath& path = attempt.path;
    attempt.status.resize(path.size());
    attempt.status.back().status = CertificateStatus::anchor;
    for (std::uint32_t index = static_cast<std::uint32_t>(path.size()) - 1; index-- > 0;) {
        const bool isRequired = options_.status == ValidationOptions::Status::chain ||
                                (options_.status == ValidationOptions::Status::leaf && index == 0 && nesting_ == 0);
        if (!isRequired && !hasSources_)
            continue;
        const bool isSettled = attempt.stage == PathAttempt::Stage::valid;
        StatusInformation& information = attempt.status[index] = statusOf({path, keys, index}, isSettled);
        if (information.status == CertificateStatus::revoked) {
            attempt.stage = index == 0 ? PathAttempt::Stage::revoked : PathAttempt::Stage::status;
            attempt.fault = {{Reason::revoked, information.detail}, index};
            return;
        }
        if (isRequired && information.status != CertificateStatus::good && attempt.stage == PathAttempt::Stage::valid) {
            attempt.stage = PathAttempt::Stage::undecided;
            const bool isStale = information.status == CertificateStatus::stale;
            attempt.fault = {{isStale ? Reason::statusStale : Reason::statusUnknown, information.detail}, index};
        }
    }
}

StatusInformation StatusFinder::statusOf(const Issued& issued, bool isSettled)
{
    const std::pair<const void*, const void*> key{&issued.certificate(), issued.path.back()};
    if (const auto found = known_.find(key); isSettled && found != known_.end())
        return found->second;

    StatusInformation information = statusByLists(issued);
    if (information.status != CertificateStatus::revoked) {
        StatusInformation answered = statusByResponses(issued, Responders::all);
        const bool isBetter = RankOf(answered.status) > RankOf(information.status);
        if (isBetter || (information.detail.isEmpty() && !answered.detail.isEmpty()))
            information = std::move(answered);
    }
    if (information.detail.isEmpty())
        information.detail = "no list or response says what the status is";
    if (isSettled)
        known_[key] = information;
    return information;
}

StatusInformation StatusFinder::statusByResponses(const Issued& issued, Responders responders)
{
    OcspOptions options;
    options.at = options_.at;
    options.clockSkewSeconds = options_.clockSkewSeconds;
    options.maxAgeSeconds = options_.maxAgeSeconds;
    options.allowWeak = options_.allowWeak;
    options.candidates = responders_;

    StatusInformation best;
    best.status = CertificateStatus::unknown;
    for (const auto& response : sources_.responses) {
        if (response == nullptr || IsAboutOthers(*response, *issued.certificate().certificate, *issued.issuer().certificate))
            continue;
        const OcspVerdict answer =
            VerifyOcspResponse(*response, *issued.certificate().certificate, *issued.issuer().certificate, options);
        if (!work_.takeSignatures(answer.signatures))
            break;
        const bool isSelf = answer.responder != nullptr && answer.responder->der() == issued.certificate().certificate->der();
        if (responders == Responders::issuerAndSelf && answer.responder != nullptr && !isSelf)
            continue;
        StatusInformation information;
        information.source = StatusInformation::Source::ocsp;
        information.thisUpdate = answer.thisUpdate;
        information.nextUpdate = answer.nextUpdate;
        switch (answer.status) {
        case OcspStatus::good:
            information.status = CertificateStatus::good;
            break;
        case OcspStatus::revoked:
            information.status = CertificateStatus::revoked;
            break;
        case OcspStatus::stale:
            information.status = CertificateStatus::stale;
            break;
        case OcspStatus::unknown:
        case OcspStatus::bad:
            information.status = CertificateStatus::unknown;
            break;
        }
        information.detail = answer.status == OcspStatus::good ? CCryptoString("OCSP") : answer.detail;
        if (answer.status == OcspStatus::stale &&
            IsLastingRevocation(answer.revocationReason, answer.revocationTime, options_.at)) {
            information.status = CertificateStatus::revoked;
            information.detail = RevocationText(answer.revocationReason, answer.revocationTime);
        }
        if (responders == Responders::all) {
            if (CCryptoString reason = whyNotBelieved(answer.responder, issued); !reason.isEmpty()) {
                information.status = CertificateStatus::unknown;
                information.detail = std::move(reason);
            }
        }
        const bool saysMore = best.detail.isEmpty();
        if (RankOf(information.status) > RankOf(best.status) || saysMore)
            best = std::move(information);
    }
    return best;
}

CCryptoString StatusFinder::whyNotBelieved(const CertificatePtr& responder, const Issued& issued)
{
    std::optional<KnownCertificate> read = responder != nullptr ? KnownCertificate::Read(responder) : std::nullopt;
    if (!read)
        return {};
    const KnownCertificate& known = askedResponders_.emplace_back(*std::move(read));
    // A path like that of the certificate in question, with the responder in its place.
    CertificatePath path(issued.path.begin() + issued.index, issued.path.end());
    Keys keys(issued.keys.begin() + issued.index, issued.keys.end());
    path.front() = &known;
    keys.front() = known.key;
    StatusInformation status = statusByLists({path, keys});
    if (status.status != CertificateStatus::revoked)
        status = statusByResponses({path, keys}, Responders::issuerAndSelf);
    return status.status == CertificateStatus::revoked ? "the responder's certificate is revoked: " + status.detail
                                                       : CCryptoString();
}

StatusInformation StatusFinder::statusByLists(const Issued& issued)
{
    StatusInformation information;
    information.status = CertificateStatus::unknown;
    Heard heard;
    for (const StatusPoint& point : pointsOf(issued.certificate())) {
        for (const ComparableName& issuer : point.issuers) {
            const auto lists = lists_.find(issuer);
            if (lists == lists_.end())
                continue;
            for (const auto& list : lists->second) {
                if (list->isDelta())
                    continue;
                const std::optional<ReasonFlags> reasons = ReasonsInScope(*list, point, issued.certificate(), work_);
                if (!reasons || work_.isExceeded())
                    return information;
                if (*reasons != 0 && hear(*list, *reasons, issued, heard, information))
                    return information;
            }
        }
    }

    const KnownList* speaker = heard.good == allReasons ? heard.goodList : heard.staleList;
    if (heard.good == allReasons) {
        information.status = CertificateStatus::good;
        information.detail = ListText(*heard.goodList);
        if (heard.goodDelta != nullptr) {
            information.detail = ListText(*heard.goodDelta) + " of " + information.detail;
            speaker = heard.goodDelta;
        }
    } else if (heard.staleList != nullptr) {
        information.status = CertificateStatus::stale;
        information.detail = ListText(*heard.staleList) + " is too old";
    } else if (heard.good != 0) {
        information.detail = ListText(*heard.goodList) + " is for some reasons only";
    }
    if (speaker != nullptr) {
        information.source = StatusInformation::Source::crl;
        information.thisUpdate = speaker->list->thisUpdate();
        information.nextUpdate = speaker->list->nextUpdate();
    }
    return information;
}

bool StatusFinder::hear(const KnownList& list, ReasonFlags reasons, const Issued& issued, Heard& heard,
                        StatusInformation& information)
{
    // Signatures are the expensive part: a list is verified when it could change what is known.
    const bool addsReasons = (reasons & ~heard.good) != 0;
    if (!addsReasons && !isListed(list, issued.certificate()))
        return false;

    const ListSigner signer = signerOf(list, issued);
    if (signer.key == nullptr) {
        if (information.detail.isEmpty())
            information.detail = ListText(list) + " is not signed by an issuer of lists for the certificate";
        return false;
    }
    const auto [delta, entry, freshness] = combine(list, signer.key, issued.certificate());
    const bool isFresh = freshness == Freshness::fresh;
    if (entry && entry->reason != RevocationReason::removeFromCrl) {
        const KnownList& speaker = delta != nullptr ? *delta : list;
        // What a newer list said counts more; of lists of one moment, the one that revokes does.
        const bool isOverruled =
            !addsReasons && !heard.isOwnWord && speaker.list->thisUpdate() < heard.speaker()->list->thisUpdate();
        if (isFresh ? !isOverruled : staysRevoked(entry)) {
            information.status = CertificateStatus::revoked;
            information.source = StatusInformation::Source::crl;
            information.detail = RevocationText(entry->reason, entry->revocationDate);
            information.thisUpdate = speaker.list->thisUpdate();
            information.nextUpdate = speaker.list->nextUpdate();
            return true;
        }
    }
    if (isFresh && addsReasons) {
        heard.good = static_cast<ReasonFlags>(heard.good | reasons);
        heard.goodList = &list;
        heard.goodDelta = delta;
        heard.isOwnWord |= signer.isSubject;
    } else if (freshness == Freshness::stale && heard.staleList == nullptr) {
        heard.staleList = &list;
    }
    return false;
}

bool StatusFinder::isListed(const KnownList& list, const KnownCertificate& certificate) const
{
    return EntryOf(list, certificate) || std::ranges::any_of(lists_.at(list.issuer), [&](const auto& delta) {
               return IsDeltaOf(*delta, list) && EntryOf(*delta, certificate);
           });
}

bool StatusFinder::staysRevoked(const std::optional<RevokedEntry>& entry) const
{
    return entry && entry->reason != RevocationReason::removeFromCrl &&
           IsLastingRevocation(entry->reason, entry->revocationDate, options_.at);
}

StatusFinder::Combined StatusFinder::combine(const KnownList& base, const std::shared_ptr<ICryptoKeyPair>& signer,
                                             const KnownCertificate& certificate)
{
    Combined combined{nullptr, EntryOf(base, certificate), FreshnessOf(*base.list, options_)};
    if (combined.freshness == Freshness::early)
        return combined;
    for (const auto& delta : lists_.at(base.issuer)) {
        const bool isNewer =
            combined.delta == nullptr ||
            (delta->extensions.crlNumber && IsGreaterNumber(*delta->extensions.crlNumber, *combined.delta->extensions.crlNumber));
        if (!isNewer || !IsDeltaOf(*delta, base))
            continue;
        // One of another time takes nothing back.
        const bool isFresh = FreshnessOf(*delta->list, options_) == Freshness::fresh;
        std::optional<RevokedEntry> changed = EntryOf(*delta, certificate);
        if ((!isFresh && !staysRevoked(changed)) || !isSignedBy(*delta, signer))
            continue;
        combined.delta = delta.get();
        if (changed)
            combined.entry = std::move(changed);
        if (isFresh)
            combined.freshness = Freshness::fresh;
    }
    return combined;
}

const std::vector<StatusPoint>& StatusFinder::pointsOf(const KnownCertificate& certificate)
{
    const auto [position, isNew] = points_.try_emplace(&certificate);
    if (isNew)
        position->second = StatusPointsOf(certificate);
    return position->second;
}

bool StatusFinder::isSignedBy(const KnownList& list, const std::shared_ptr<ICryptoKeyPair>& key)
{
    if (list.signedBy.isWeak() && !options_.allowWeak)
        return false;
    return work_.check(*list.list, list.signedBy, *key) == SignatureResult::good;
}

StatusFinder::ListSigner StatusFinder::signerOf(const KnownList& list, const Issued& issued)
{
    // Certificates of the path above the one in question are valid as far as this path is.
    for (std::size_t index = issued.index + std::size_t{1}; index < issued.path.size(); index++) {
        const KnownCertificate& signer = *issued.path[index];
        if (signer.subject == list.issuer && MaySignLists(signer) && isSignedBy(list, issued.keys[index]))
            return {issued.keys[index]};
    }
    for (const KnownCertificate* signer : pool_.signersOf(list.issuer, list.extensions.authorityKeyIdentifier)) {
        if (work_.isExceeded())
            break;
        if (!MaySignLists(*signer))
            continue;
        // The certificate of a signer of lists may be on such a list itself: its path is valid as far as this one is.
        if (signer == &issued.certificate() && isSignedBy(list, issued.keys[issued.index]))
            return {issued.keys[issued.index], true};
        if (std::find(issued.path.begin(), issued.path.end(), signer) != issued.path.end())
            continue;
        // What is not the signer is not worth a path.
        const bool inherits = signer->key->signer() == nullptr;
        if (!inherits && !isSignedBy(list, signer->key))
            continue;
        const std::shared_ptr<ICryptoKeyPair> key = validatedKey(*signer, *issued.path.back());
        if (key != nullptr && isSignedBy(list, key))
            return {key};
    }
    return {};
}

std::shared_ptr<ICryptoKeyPair> StatusFinder::validatedKey(const KnownCertificate& signer, const KnownCertificate& anchor)
{
    if (const auto found = signers_.find({&signer, &anchor}); found != signers_.end())
        return found->second;
    if (nesting_ == maxNesting)
        return nullptr;
    // While it is looked for, it is nobody: signers cannot vouch for each other's status.
    std::shared_ptr<ICryptoKeyPair>& known = signers_[{&signer, &anchor}];
    nesting_++;
    PathFinder finder(pool_, signerOptions_, work_);
    std::shared_ptr<ICryptoKeyPair> key;
    const PathAttempt attempt = finder.find(signer, &anchor, false, [&](PathAttempt& path, const Keys& keys) {
        judge(path, keys);
        key = keys.front();
    });
    nesting_--;
    if (attempt.stage == PathAttempt::Stage::valid)
        known = std::move(key);
    return known;
}

} // namespace ccrypto
