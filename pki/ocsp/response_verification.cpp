#include "pki/ocsp/response_verification.h"

#include "core/diagnostics/auto_logger.h"
#include "pki/ocsp/ocsp_extensions.h"
#include "pki/x509/extensions.h"
#include "pki/x509/name.h"

#include <algorithm>
#include <string>
#include <utility>

namespace ccrypto {

namespace {

/// Those whose name or key is the responder's; each costs a signature or two.
constexpr std::uint32_t maxTriedResponders = 8;
/// Certificates of a response that are loaded to see whose they are. A response may have very many.
constexpr std::size_t maxSeenCertificates = 100;
constexpr std::uint32_t minOcspRsaBits = 2048; ///< bits

/// In milliseconds. What a caller gives may be as long as it likes: this is longer than any two times are apart.
std::int64_t OcspDuration(std::int64_t seconds)
{
    constexpr std::int64_t maxSeconds = 1'000'000'000'000;
    return std::clamp(seconds, -maxSeconds, maxSeconds) * 1000;
}

constexpr std::string_view ocspStatusWords[] = {"good", "revoked", "unknown", "stale", "bad"};
constexpr std::string_view ocspFailureWords[] = {
    "",
    "malformed",
    "not-successful",
    "not-der",
    "unsupported-algorithm",
    "weak-algorithm",
    "wrong-responder",
    "responder-not-valid",
    "bad-signature",
    "wrong-nonce",
    "missing-nonce",
    "wrong-certificate",
    "critical-extension",
};

CCryptoString OcspTimeText(const CCryptoDateTime& time)
{
    return time.toUtcDateTime().format("yyyy-MM-dd HH:mm:ssZ");
}

/// Broken hashes are too weak whatever is allowed.
bool IsTooWeakForOcsp(const SignatureAlgorithm& algorithm, const ICryptoKeyPair& key, bool allowWeak)
{
    const bool isWeak = algorithm.isWeak() || (key.algorithmId() == algorithm::rsaEncryption && key.keySize() < minOcspRsaBits);
    return algorithm.isBroken() || (isWeak && !allowWeak);
}

/// Judges one response.
class OcspJudge {
public:
    OcspJudge(const CCryptoOCSP::COCSPResponse& response, const element& serialNumber, const CCrypto_X509_Certificate& issuer,
              const OcspOptions& options)
        : response_(response), basic_(response.basicResponse()), serialNumber_(serialNumber), issuer_(issuer), options_(options)
    {
    }

    OcspVerdict judge();

private:
    bool isReadable();
    bool isSigned();
    bool isSignedBy(const CCrypto_X509_Certificate& responder);
    bool isSignedByNamed();
    bool isSignedByEntitled();
    bool tryEntitled(const CertificatePtr& certificate);
    bool isEntitled(const CCrypto_X509_Certificate& certificate);
    bool isIssuedByIssuer(const CCrypto_X509_Certificate& certificate);
    bool answersRequest();
    void findStatus();
    OcspVerdict judgeSingle(const CCryptoOCSP::CSingleResponse& single) const;
    static void setRevoked(OcspVerdict& verdict);
    bool isTimely(const CCryptoOCSP::CSingleResponse& single, OcspVerdict& verdict) const;

    bool fail(OcspFailure failure, CCryptoString detail);
    /// Keeps why a responder is not used: another one may be.
    bool skip(OcspFailure failure, const char* detail);

    const CCryptoOCSP::COCSPResponse& response_;
    const CCryptoOCSP::CBasicOCSPResponse& basic_;
    const element& serialNumber_;
    const CCrypto_X509_Certificate& issuer_;
    const OcspOptions& options_;
    std::optional<SignatureAlgorithm> algorithm_;
    std::uint32_t tried_ = 0;
    OcspVerdict verdict_;
};

bool OcspJudge::fail(OcspFailure failure, CCryptoString detail)
{
    verdict_.status = OcspStatus::bad;
    verdict_.failure = failure;
    verdict_.detail = std::move(detail);
    return false;
}

bool OcspJudge::skip(OcspFailure failure, const char* detail)
{
    // The first responder that was something more than a stranger says why.
    const bool isFirst = verdict_.failure == OcspFailure::none || verdict_.failure == OcspFailure::wrongResponder;
    return isFirst && fail(failure, detail);
}

OcspVerdict OcspJudge::judge()
{
    CCryptoAutoLogger logger("VerifyOcspResponse");
    if (isReadable() && isSigned() && answersRequest())
        findStatus();
    if (verdict_.status == OcspStatus::bad)
        logger.fail(false, "%s: %s", std::string(OcspFailureWord(verdict_.failure)).c_str(), verdict_.detail.c_str());
    else
        logger.setResult(true);
    return std::move(verdict_);
}

bool OcspJudge::isReadable()
{
    using CCryptoOCSP::ResponseStatus;
    if (!options_.at.isValid() || !issuer_.isLoaded() || issuer_.publicKey() == nullptr)
        return fail(OcspFailure::malformed, "there is no time or no issuer");
    if (response_.der().isEmpty())
        return fail(OcspFailure::malformed, "there is no response");
    if (!response_.isDer())
        return fail(OcspFailure::notDer, "the response is not DER");
    if (response_.responseStatus != ResponseStatus::successful)
        return fail(OcspFailure::notSuccessful, ResponseStatusName(response_.responseStatus));
    if (basic_.isEmpty())
        return fail(OcspFailure::malformed, "there is no basic response");
    if (HasDoubledOcspExtension(basic_.tbsResponseData.extensions))
        return fail(OcspFailure::malformed, "the response has an extension twice");
    if (HasUnknownCriticalOcspExtension(basic_.tbsResponseData.extensions))
        return fail(OcspFailure::criticalExtension, "the response has a critical extension that is not known");
    verdict_.producedAt = basic_.tbsResponseData.producedAt;
    return true;
}

bool OcspJudge::isSigned()
{
    algorithm_ = ReadSignatureAlgorithm(basic_.signatureAlgorithm);
    if (!algorithm_)
        return fail(OcspFailure::unsupportedAlgorithm, "the signature of the response");
    fail(OcspFailure::wrongResponder, "no certificate is the responder's");
    if (basic_.isResponder(issuer_) && isSignedBy(issuer_))
        return true;
    return isSignedByNamed() || isSignedByEntitled();
}

bool OcspJudge::isSignedBy(const CCrypto_X509_Certificate& responder)
{
    if (responder.publicKey() == nullptr)
        return skip(OcspFailure::unsupportedAlgorithm, "the responder's key");
    if (IsTooWeakForOcsp(*algorithm_, *responder.publicKey(), options_.allowWeak))
        return skip(OcspFailure::weakAlgorithm, "the signature of the response");
    ++verdict_.signatures;
    switch (VerifySignature(*responder.publicKey(), *algorithm_, basic_.signedOctets(), basic_.signature.bytes())) {
    case SignatureResult::good:
        verdict_.failure = OcspFailure::none;
        verdict_.detail = {};
        return true;
    case SignatureResult::bad:
        return skip(OcspFailure::badSignature, "the signature of the response");
    default:
        return skip(OcspFailure::unsupportedAlgorithm, "the signature of the response");
    }
}

bool OcspJudge::isSignedByNamed()
{
    for (const CertificatePtr& named : options_.namedResponders) {
        if (named == nullptr || !basic_.isResponder(*named))
            continue;
        if (!named->isValidAt(options_.at)) {
            skip(OcspFailure::responderNotValid, "the responder's certificate is not valid at the time");
            continue;
        }
        if (isSignedBy(*named)) {
            verdict_.responder = named;
            return true;
        }
    }
    return false;
}

bool OcspJudge::isSignedByEntitled()
{
    for (const element& octets : std::span(basic_.certs).first(std::min(basic_.certs.size(), maxSeenCertificates))) {
        if (tryEntitled(LoadCertificate(octets.bytes())))
            return true;
        if (tried_ == maxTriedResponders)
            return false;
    }
    return std::ranges::any_of(options_.candidates, [this](const CertificatePtr& certificate) { return tryEntitled(certificate); });
}

bool OcspJudge::tryEntitled(const CertificatePtr& certificate)
{
    if (certificate == nullptr || tried_ == maxTriedResponders || !basic_.isResponder(*certificate))
        return false;
    ++tried_;
    if (!isEntitled(*certificate) || !isSignedBy(*certificate))
        return false;
    verdict_.responder = certificate;
    return true;
}

/// Whether the issuer's key issued the certificate to a responder (RFC 6960, 4.2.2.2).
bool OcspJudge::isEntitled(const CCrypto_X509_Certificate& certificate)
{
    const auto issuerName = ComparableName::Read(certificate.issuer().GetDerEncodedElement().bytes());
    const auto name = ComparableName::Read(issuer_.subject().GetDerEncodedElement().bytes());
    if (!issuerName || !name || issuerName != name)
        return skip(OcspFailure::wrongResponder, "the responder's certificate is of another issuer");
    if (!certificate.isDer())
        return skip(OcspFailure::notDer, "the responder's certificate is not DER");

    const ReadExtensions extensions = ReadAllExtensions(certificate.extensions(), ExtensionOwner::certificate);
    if (extensions.isMalformed)
        return skip(OcspFailure::malformed, "an extension of the responder's certificate");
    if (extensions.hasUnknownCritical)
        return skip(OcspFailure::criticalExtension, "the responder's certificate has one that is not known");
    const auto& purposes = extensions.extendedKeyUsage;
    if (!purposes || std::ranges::find(*purposes, oids::ocspSigning) == purposes->end())
        return skip(OcspFailure::wrongResponder, "the responder's certificate is not for OCSPSigning");
    const auto& usage = extensions.keyUsage;
    if (usage && !usage->has(KeyUsageBit::digitalSignature) && !usage->has(KeyUsageBit::nonRepudiation))
        return skip(OcspFailure::wrongResponder, "the responder's key is not for signatures");
    if (!certificate.isValidAt(options_.at))
        return skip(OcspFailure::responderNotValid, "the responder's certificate is not valid at the time");
    return isIssuedByIssuer(certificate);
}

bool OcspJudge::isIssuedByIssuer(const CCrypto_X509_Certificate& certificate)
{
    const std::optional<SignatureAlgorithm> algorithm = ReadSignatureAlgorithm(certificate.signatureAlgorithm());
    if (!algorithm)
        return skip(OcspFailure::unsupportedAlgorithm, "the signature of the responder's certificate");
    if (IsTooWeakForOcsp(*algorithm, *issuer_.publicKey(), options_.allowWeak))
        return skip(OcspFailure::weakAlgorithm, "the signature of the responder's certificate");
    ++verdict_.signatures;
    return certificate.verifySignature(*issuer_.publicKey()) == SignatureResult::good ||
           skip(OcspFailure::wrongResponder, "the responder's certificate is not signed by the issuer's key");
}

bool OcspJudge::answersRequest()
{
    const OcspNonce nonce = ReadOcspNonce(basic_.tbsResponseData.extensions);
    switch (nonce.state) {
    case OcspNonce::State::malformed:
        return fail(OcspFailure::wrongNonce, "the nonce is malformed");
    case OcspNonce::State::absent:
        return !options_.requireNonce || fail(OcspFailure::missingNonce, "the response has no nonce");
    default:
        break;
    }
    if (options_.nonce.isEmpty())
        return !options_.requireNonce || fail(OcspFailure::missingNonce, "no nonce is known that the response could have");
    return options_.nonce.view() == nonce.octets.view() || fail(OcspFailure::wrongNonce, "the nonce is another than was sent");
}

/// Of several responses about the certificate the worst counts; one of another time only where there is none of this time, or where
/// it revokes for good.
void OcspJudge::findStatus()
{
    constexpr OcspStatus mildestFirst[] = {OcspStatus::stale, OcspStatus::good, OcspStatus::unknown, OcspStatus::bad,
                                           OcspStatus::revoked};
    const auto severity = [&](const OcspVerdict& verdict) {
        return std::pair(std::ranges::find(mildestFirst, verdict.status), verdict.revocationTime.isValid());
    };

    CertIdMatcher matcher(issuer_);
    std::optional<OcspVerdict> worst;
    std::optional<OcspVerdict> oldRevocation;
    for (const auto& single : basic_.tbsResponseData.responses) {
        if (!matcher.matches(single->certID, serialNumber_))
            continue;
        OcspVerdict found = judgeSingle(*single);
        if (found.status == OcspStatus::stale && IsLastingRevocation(found.revocationReason, found.revocationTime, options_.at))
            oldRevocation = found;
        if (!worst || severity(found) > severity(*worst))
            worst = std::move(found);
    }
    if (oldRevocation && (worst->status == OcspStatus::good || worst->status == OcspStatus::unknown)) {
        verdict_ = std::move(*oldRevocation);
        setRevoked(verdict_);
    } else if (worst)
        verdict_ = std::move(*worst);
    else
        fail(OcspFailure::wrongCertificate, "no response is about the certificate");
}

OcspVerdict OcspJudge::judgeSingle(const CCryptoOCSP::CSingleResponse& single) const
{
    using CCryptoOCSP::CCertStatus;
    OcspVerdict verdict = verdict_;
    verdict.thisUpdate = single.thisUpdate;
    verdict.nextUpdate = single.nextUpdate;
    if (HasDoubledOcspExtension(single.singleExtensions)) {
        verdict.failure = OcspFailure::malformed;
        verdict.detail = "the response has an extension twice";
        return verdict;
    }
    if (HasUnknownCriticalOcspExtension(single.singleExtensions)) {
        verdict.failure = OcspFailure::criticalExtension;
        verdict.detail = "the response has a critical extension that is not known";
        return verdict;
    }
    const bool isRevoked = single.certStatus.kind == CCertStatus::Kind::revoked;
    const bool isOfThisTime = isTimely(single, verdict);
    if (isRevoked && verdict.failure == OcspFailure::none) {
        verdict.revocationTime = single.certStatus.revocationTime;
        verdict.revocationReason = single.certStatus.revocationReason;
    }
    if (!isOfThisTime)
        return verdict;
    switch (single.certStatus.kind) {
    case CCertStatus::Kind::good:
        verdict.status = OcspStatus::good;
        break;
    case CCertStatus::Kind::revoked:
        setRevoked(verdict);
        break;
    default:
        verdict.status = OcspStatus::unknown;
        verdict.detail = "the responder does not know the certificate";
        break;
    }
    return verdict;
}

void OcspJudge::setRevoked(OcspVerdict& verdict)
{
    verdict.status = OcspStatus::revoked;
    verdict.detail =
        verdict.revocationReason ? CCryptoString(RevocationReasonName(*verdict.revocationReason)) + " " : CCryptoString();
    verdict.detail += CCryptoString("since ") + OcspTimeText(verdict.revocationTime);
}

bool OcspJudge::isTimely(const CCryptoOCSP::CSingleResponse& single, OcspVerdict& verdict) const
{
    const auto failed = [&verdict](OcspStatus status, CCryptoString detail) {
        verdict.status = status;
        verdict.failure = status == OcspStatus::bad ? OcspFailure::malformed : OcspFailure::none;
        verdict.detail = std::move(detail);
        return false;
    };
    const std::optional<std::int64_t> at = options_.at.toMilliseconds();
    const std::optional<std::int64_t> produced = verdict.producedAt.toMilliseconds();
    const std::optional<std::int64_t> from = single.thisUpdate.toMilliseconds();
    const std::optional<std::int64_t> until = single.nextUpdate.toMilliseconds();
    if (!at || !produced || !from || (single.nextUpdate.isValid() && !until))
        return failed(OcspStatus::bad, "a time of the response cannot be converted");
    if (until && *until < *from)
        return failed(OcspStatus::bad, "nextUpdate is before thisUpdate");

    const std::int64_t skew = OcspDuration(options_.clockSkewSeconds);
    if (*from - skew > *at)
        return failed(OcspStatus::stale, CCryptoString("thisUpdate is ") + OcspTimeText(single.thisUpdate));
    if (*produced - skew > *at)
        return failed(OcspStatus::stale, CCryptoString("producedAt is ") + OcspTimeText(verdict.producedAt));
    if (until && *until + skew < *at)
        return failed(OcspStatus::stale, CCryptoString("nextUpdate was ") + OcspTimeText(single.nextUpdate));
    if (!until && *at - *from > OcspDuration(options_.maxAgeSeconds))
        return failed(OcspStatus::stale, CCryptoString("no nextUpdate; thisUpdate was ") + OcspTimeText(single.thisUpdate));
    return true;
}

} // namespace

std::string_view OcspStatusWord(OcspStatus status)
{
    return ocspStatusWords[static_cast<std::size_t>(status)];
}

std::string_view OcspFailureWord(OcspFailure failure)
{
    return ocspFailureWords[static_cast<std::size_t>(failure)];
}

OcspVerdict VerifyOcspResponse(const CCryptoOCSP::COCSPResponse& response, const CCrypto_X509_Certificate& subject,
                               const CCrypto_X509_Certificate& issuer, const OcspOptions& options)
{
    return VerifyOcspResponse(response, subject.serialNumber(), issuer, options);
}

OcspVerdict VerifyOcspResponse(const CCryptoOCSP::COCSPResponse& response, const element& serialNumber,
                               const CCrypto_X509_Certificate& issuer, const OcspOptions& options)
{
    return OcspJudge(response, serialNumber, issuer, options).judge();
}

bool IsAboutOthers(const CCryptoOCSP::COCSPResponse& response, const CCrypto_X509_Certificate& subject,
                   const CCrypto_X509_Certificate& issuer)
{
    CertIdMatcher matcher(issuer);
    const auto& responses = response.basicResponse().tbsResponseData.responses;
    const auto isAboutIt = [&](const auto& single) { return matcher.matches(single->certID, subject.serialNumber()); };
    return !responses.empty() && std::ranges::none_of(responses, isAboutIt);
}

} // namespace ccrypto
