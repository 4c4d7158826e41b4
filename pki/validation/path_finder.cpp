#include "pki/validation/path_finder.h"

#include <algorithm>
#include <utility>

namespace ccrypto {

bool PathAttempt::isFurtherThan(const PathAttempt& other) const
{
    if (stage != other.stage)
        return stage > other.stage;
    return fault.certificate < other.fault.certificate;
}

PathFinder::PathFinder(const CertificatePool& pool, const ValidationOptions& options, ValidationWork& work)
    : pool_(pool), options_(options), work_(work)
{
}

PathAttempt PathFinder::find(const KnownCertificate& subject, const KnownCertificate* anchor, bool explain, const Judge& judge)
{
    onlyAnchor_ = anchor;
    judge_ = &judge;
    best_ = {};
    subjectFault_ = CheckSubject(subject, mayEndPath(subject), options_);
    findReachable();

    for (const bool withFaults : {false, true}) {
        dead_.clear();
        frames_.clear();
        tooDeep_ = false;
        push(subject);
        const bool isOver = search(withFaults);
        if (isOver || best_.stage >= PathAttempt::Stage::rules || !explain)
            break;
    }
    return std::move(best_);
}

/// From the anchors down to whatever they or those below them may have issued.
void PathFinder::findReachable()
{
    if (reachableIsKnown_)
        return;
    reachableIsKnown_ = true;

    std::multimap<ComparableName, const KnownCertificate*> byIssuer;
    std::vector<const ComparableName*> waiting;
    for (const auto& known : pool_.certificates()) {
        if (!known->isSelfIssued())
            byIssuer.emplace(known->issuer, known.get());
        if (known->isAnchor && reachable_.insert(known->subject).second)
            waiting.push_back(&known->subject);
    }
    while (!waiting.empty()) {
        const auto [first, last] = byIssuer.equal_range(*waiting.back());
        waiting.pop_back();
        for (auto issued = first; issued != last; ++issued)
            if (reachable_.insert(issued->second->subject).second)
                waiting.push_back(&issued->second->subject);
    }
}

/// \return true when nothing remains to be said: a valid path, or a limit.
bool PathFinder::search(bool withFaults)
{
    // What was only tried to explain a failure is not missed.
    const auto exceeded = [&] {
        if (!withFaults || best_.stage == PathAttempt::Stage::incomplete) {
            best_.stage = PathAttempt::Stage::signatures;
            best_.fault = {{Reason::limit, "too many certificates or signatures"}, 0};
        }
        return true;
    };

    if (!work_.takeStep())
        return exceeded();
    if (mayEndPath(*frames_.back().certificate))
        return tryPath() || !work_.isExceeded() || exceeded();

    while (!frames_.empty()) {
        Frame& frame = frames_.back();
        if (frame.next == frame.issuers.size()) {
            leave();
            continue;
        }
        const KnownCertificate& issuer = *frame.issuers[frame.next++];
        if (!mayFollow(issuer, withFaults))
            continue;
        if (!work_.takeStep())
            return exceeded();
        push(issuer);
        if (!mayEndPath(issuer))
            continue;
        if (tryPath())
            return true;
        if (work_.isExceeded())
            return exceeded();
    }
    if (tooDeep_ && best_.stage == PathAttempt::Stage::incomplete)
        best_.fault.finding = {Reason::limit, "more than 64 certificates"};
    return false;
}

bool PathFinder::mayFollow(const KnownCertificate& issuer, bool withFaults)
{
    Frame& frame = frames_.back();
    if (dead_.contains(&issuer) || (issuer.isAnchor && onlyAnchor_ != nullptr && onlyAnchor_ != &issuer))
        return false;
    if (!withFaults && !issuer.isAnchor && !reachable_.contains(issuer.issuer))
        return false;
    if (const auto known = work_.checked(*frame.certificate->certificate, *issuer.key); known && *known != SignatureResult::good)
        return false;

    const bool isCycle = frames_.front().certificate == &issuer ||
                         std::any_of(frames_.begin() + 1, frames_.end(),
                                     [&](const Frame& below) { return below.certificate->hasIdentityOf(issuer); });
    if (isCycle) {
        frame.mayDoBetter = true;
        return false;
    }
    if (frames_.size() == ValidationWork::maxPathLength) {
        frame.mayDoBetter = true;
        tooDeep_ = true;
        return false;
    }
    return withFaults || !hasFault(issuer);
}

bool PathFinder::hasFault(const KnownCertificate& issuer)
{
    const auto [position, isNew] = faults_.try_emplace(&issuer, false);
    if (isNew) {
        position->second = !CheckOctets(issuer, issuer.isAnchor, options_).passed() ||
                           !CheckCertificate(issuer, true, issuer.isAnchor, options_).passed();
    }
    return position->second;
}

void PathFinder::push(const KnownCertificate& certificate)
{
    Frame frame;
    frame.certificate = &certificate;
    if (!mayEndPath(certificate))
        frame.issuers = pool_.issuersOf(certificate);
    frames_.push_back(std::move(frame));
}

/// The last certificate of the chain led nowhere.
void PathFinder::leave()
{
    const Frame& frame = frames_.back();
    if (best_.stage == PathAttempt::Stage::incomplete && frames_.size() > best_.path.size()) {
        best_.path = path();
        best_.fault = {{Reason::noPath, "no issuer: " + NameText(frame.certificate->certificate->issuer())},
                       static_cast<std::uint32_t>(frames_.size()) - 1};
    }

    const bool mayDoBetter = frame.mayDoBetter;
    if (!mayDoBetter)
        dead_.insert(frame.certificate);
    frames_.pop_back();
    if (mayDoBetter && !frames_.empty())
        frames_.back().mayDoBetter = true;
}

bool PathFinder::tryPath()
{
    PathAttempt attempt;
    attempt.path = path();
    std::vector<std::shared_ptr<ICryptoKeyPair>> keys;
    attempt.stage = PathAttempt::Stage::signatures;
    attempt.fault = verifySignatures(attempt.path, keys);
    if (attempt.fault.passed()) {
        attempt.stage = PathAttempt::Stage::rules;
        attempt.fault = subjectFault_.passed() ? CheckPath(attempt.path, options_, work_.names(), attempt.policies)
                                               : PathFinding{subjectFault_, 0};
        if (attempt.fault.passed()) {
            attempt.stage = PathAttempt::Stage::valid;
            (*judge_)(attempt, keys);
        }
        frames_.pop_back();
        for (Frame& frame : frames_)
            frame.mayDoBetter = true;
    } else {
        // No other way up from there mends the certificate, or its signature by this issuer.
        const std::size_t isOfIssuer = attempt.fault.finding.reason == Reason::badSignature ? 1 : 0;
        frames_.resize(attempt.fault.certificate + isOfIssuer);
    }
    const bool isOver =
        !subjectFault_.passed() || attempt.stage == PathAttempt::Stage::valid || attempt.stage == PathAttempt::Stage::revoked;
    const bool wasTried = attempt.stage >= PathAttempt::Stage::rules;
    offer(std::move(attempt));
    return isOver && wasTried && !work_.isExceeded();
}

bool PathFinder::mayEndPath(const KnownCertificate& certificate) const
{
    return certificate.isAnchor && (onlyAnchor_ == nullptr || onlyAnchor_ == &certificate);
}

CertificatePath PathFinder::path() const
{
    CertificatePath certificates;
    for (const Frame& frame : frames_)
        certificates.push_back(frame.certificate);
    return certificates;
}

PathFinding PathFinder::verifySignatures(const CertificatePath& path, std::vector<std::shared_ptr<ICryptoKeyPair>>& keys)
{
    keys.resize(path.size());
    for (std::uint32_t index = static_cast<std::uint32_t>(path.size()); index-- > 0;) {
        const KnownCertificate& certificate = *path[index];
        const bool isAnchor = index + 1 == path.size();
        Finding finding = CheckOctets(certificate, isAnchor, options_);
        if (!finding.passed())
            return {std::move(finding), index};

        if (!isAnchor) {
            const auto result = work_.check(*certificate.certificate, *certificate.signedBy, *keys[index + 1]);
            if (!result)
                return {{Reason::limit, "too many signatures"}, index};
            if (*result != SignatureResult::good)
                return {{Reason::badSignature, "not the signature of " + NameText(path[index + 1]->certificate->subject())}, index};
        }
        keys[index] = isAnchor ? certificate.key : work_.completed(certificate.key, keys[index + 1]);
        if (keys[index] == nullptr)
            return {{Reason::unsupportedAlgorithm, "no parameters to inherit for the key"}, index};
        finding = CheckKey(*keys[index], options_);
        if (!finding.passed())
            return {std::move(finding), index};
    }
    return {};
}

void PathFinder::offer(PathAttempt attempt)
{
    if (best_.path.empty() || attempt.isFurtherThan(best_))
        best_ = std::move(attempt);
}

} // namespace ccrypto
