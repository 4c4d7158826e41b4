#include "pki/cms/signed_data_verification.h"

#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"
#include "pki/cms/embedded_status.h"
#include "pki/cms/signer_check.h"
#include "pki/validation/path_rules.h"
#include "pki/x509/der_tags.h"

#include <algorithm>
#include <map>
#include <ranges>
#include <set>
#include <string>

namespace ccrypto {

namespace {

/// Of one message: certificates that say that they are a signer's, and signatures of signers that are verified.
constexpr std::uint32_t maxCandidates = 100'000;
constexpr std::uint32_t maxSignatures = 2'000;

constexpr std::uint8_t versionTag = 0xA0;
constexpr std::uint8_t serialNumberTag = 0x02;

std::string KeyOfIndex(const element& issuer, const element& serialNumber)
{
    return std::string(serialNumber.view()) + '/' + std::string(issuer.view());
}

element CopyOfOctets(std::span<const std::uint8_t> octets)
{
    return {octets.data(), static_cast<std::uint32_t>(octets.size())};
}

/// The same of a certificate that does not load, as far as its fields can be found.
std::string KeyOfUnread(const element& der)
{
    DerCursor certificate(OnlyValue(der.bytes(), der_tag::sequence).value_or(std::span<const std::uint8_t>()));
    DerCursor fields(certificate.read(der_tag::sequence).value);
    if (fields.nextIs(versionTag))
        static_cast<void>(fields.read());
    const element serialNumber = CopyOfOctets(fields.read(serialNumberTag).value);
    static_cast<void>(fields.read(der_tag::sequence)); // the algorithm of its signature
    return KeyOfIndex(CopyOfOctets(fields.read(der_tag::sequence).octets), serialNumber);
}

/// All certificates of one verification, found by what signers say of them: those of the caller before those of the message, which
/// anyone can add to.
class KnownSigners {
    using Index = std::multimap<std::string, const KnownCertificate*>;

public:
    KnownSigners(const CCryptoPKCS7SignedDataObject& data, const SignedDataTrust& trust)
    {
        for (const CertificatePtr& anchor : trust.anchors)
            add(anchor, true);
        for (const CertificatePtr& candidate : trust.candidates)
            add(candidate, false);
        for (const element& der : data.certificates) {
            LoadFailure failure = LoadFailure::none;
            const CertificatePtr certificate = LoadCertificate(der.bytes(), &failure);
            if (certificate == nullptr)
                unread_.emplace(KeyOfUnread(der), failure);
            add(certificate, false);
        }
    }

    [[nodiscard]] const CertificatePool& pool() const { return pool_; }
    /// A part of an index. A std::ranges::subrange does not compile with clang 14 and this standard library.
    struct Found {
        Index::const_iterator first, last;

        [[nodiscard]] Index::const_iterator begin() const { return first; }
        [[nodiscard]] Index::const_iterator end() const { return last; }
    };

    /// By the identifier or by a text that is the same.
    [[nodiscard]] Found find(const CertificateIdentifier& identifier) const
    {
        const auto& index = identifier.isByKey() ? byKey_ : byIssuer_;
        const auto [first, last] = index.equal_range(identifier.isByKey() ? std::string(identifier.keyIdentifier.view())
                                                                          : KeyOfIndex(identifier.issuer, identifier.serialNumber));
        return {first, last};
    }
    /// Why there is none.
    [[nodiscard]] SignerFault whyNone(const CertificateIdentifier& identifier) const
    {
        const auto unread = unread_.find(KeyOfIndex(identifier.issuer, identifier.serialNumber));
        if (unread == unread_.end())
            return {Reason::noPath, "The signer's certificate is not there"};
        if (unread->second == LoadFailure::unsupportedKey)
            return {Reason::unsupportedAlgorithm, "The key of the signer's certificate does not load"};
        return {Reason::malformed, "The signer's certificate does not load"};
    }

private:
    void add(const CertificatePtr& certificate, bool isAnchor)
    {
        if (certificate == nullptr)
            return;
        const std::uint32_t before = pool_.size();
        const KnownCertificate* const known = pool_.add(certificate, isAnchor);
        if (known == nullptr || pool_.size() == before)
            return;
        byIssuer_.emplace(KeyOfIndex(certificate->issuer().GetDerEncodedElement(), Octets(certificate->serialNumber())), known);
        if (known->extensions.subjectKeyIdentifier)
            byKey_.emplace(std::string(known->extensions.subjectKeyIdentifier->view()), known);
    }

    CertificatePool pool_;
    Index byIssuer_;
    Index byKey_;
    std::map<std::string, LoadFailure> unread_; ///< of the message
};

CCryptoString TextOfKey(const ICryptoKeyPair& key)
{
    std::string text = key.name();
    if (key.algorithmId() == algorithm::rsaEncryption)
        text += ' ' + std::to_string(key.keySize());
    return CCryptoString(std::string_view(text));
}

/// How far a signer came; of several certificates the one that came furthest speaks.
enum class Progress { certificate, reference, signature, path, undecided, valid };

class Verification {
public:
    Verification(const CCryptoPKCS7SignedDataObject& data, SignedContent* content, const SignedDataTrust& trust,
                 const SignedDataOptions& options)
        : data_(data), content_(content), options_(options), known_(data, trust), status_(StatusOf(data, trust)),
          validator_(known_.pool(), status_, options.validation),
          isOtherContent_(data.hasContent && content != nullptr && !content->isMadeOf(data.content.bytes()))
    {
        for (const auto& algorithm : data.digestAlgorithms)
            hashes_.insert(ReadMessageHash(*algorithm));
    }

    [[nodiscard]] SignerVerdict verify(const CCryptoPKCS7SignerInfo& signer);

private:
    struct Attempt {
        Progress progress = Progress::certificate;
        SignerVerdict verdict;
    };

    /// What the caller knows of status before what the message brings: that a certificate is revoked counts always.
    [[nodiscard]] static StatusSources StatusOf(const CCryptoPKCS7SignedDataObject& data, const SignedDataTrust& trust)
    {
        StatusSources sources = trust.status;
        AddStatusOfMessage(data, sources);
        return sources;
    }
    [[nodiscard]] SignerFault check(const CCryptoPKCS7SignerInfo& signer, SignerStatement& statement) const;
    [[nodiscard]] Attempt tryCertificate(const CCryptoPKCS7SignerInfo& signer, const SignerStatement& statement,
                                         SignerVerdict verdict, const KnownCertificate& known);
    [[nodiscard]] SignerFault checkAlgorithms(const SignerStatement& statement, const ICryptoKeyPair& key) const;
    [[nodiscard]] PathVerdict validate(const CertificatePtr& certificate);

    const CCryptoPKCS7SignedDataObject& data_;
    SignedContent* content_;
    const SignedDataOptions& options_;
    KnownSigners known_;
    StatusSources status_;
    CertificateValidator validator_;
    bool isOtherContent_;
    std::set<algorithm::Id> hashes_; ///< that the message says are those of its signers
    std::uint32_t candidates_ = 0;
    std::uint32_t signatures_ = 0;
    std::map<const CCrypto_X509_Certificate*, PathVerdict> paths_;
};

SignerVerdict Refused(SignerVerdict verdict, const SignerFault& fault)
{
    verdict.verdict = Verdict::invalid;
    verdict.reason = fault.reason;
    verdict.detail = fault.detail;
    return verdict;
}

SignerFault CheckReferences(const SignerStatement& statement, const CCrypto_X509_Certificate& certificate)
{
    for (const CertificateReferences& references : statement.signingCertificates)
        if (!references.front().means(certificate))
            return {Reason::badSignature, "The signed attribute names another certificate"};
    return {};
}

/// Where certificates are named beside the signer's, those of the path are among them (RFC 5035, 5.4); the anchor is the caller's.
SignerFault CheckNamedPath(const SignerStatement& statement, const PathVerdict& path)
{
    for (const CertificateReferences& references : statement.signingCertificates) {
        for (std::size_t index = 1; references.size() > 1 && index + 1 < path.path.size(); ++index) {
            const CCrypto_X509_Certificate& issuer = *path.path[index].certificate;
            if (std::ranges::none_of(references, [&](const CertificateReference& reference) { return reference.means(issuer); }))
                return {Reason::badSignature, "The signed attribute does not name a certificate of the path"};
        }
    }
    return {};
}

SignerFault Verification::check(const CCryptoPKCS7SignerInfo& signer, SignerStatement& statement) const
{
    if (isOtherContent_)
        return {Reason::badSignature, "The embedded content is another one than the content given"};
    if (const SignerFault fault = statement.read(signer, data_.contentType, content_); !fault.isNone())
        return fault;
    if (!hashes_.contains(statement.hash))
        return {Reason::malformed, "The signer's digest algorithm is not among those of the message"};
    if (!options_.requiresSigningCertificate)
        return {};
    if (statement.signingCertificates.empty())
        return {Reason::malformed, "No signed attribute names the signer's certificate"};
    const auto isWeak = [](const CertificateReferences& references) { return references.front().hash == algorithm::sha1; };
    if (!options_.validation.allowWeak && std::ranges::all_of(statement.signingCertificates, isWeak))
        return {Reason::weakAlgorithm, "SHA-1 names the signer's certificate"};
    return {};
}

SignerVerdict Verification::verify(const CCryptoPKCS7SignerInfo& signer)
{
    SignerVerdict verdict;
    SignerStatement statement;
    const SignerFault fault = check(signer, statement);
    if (const std::unique_ptr<ICryptoHash> hash = statement.hash != algorithm::none ? ICryptoHash::Create(statement.hash) : nullptr)
        verdict.digestName = hash->name();
    verdict.signingTime = statement.signingTime;
    verdict.namesCertificate = !statement.signingCertificates.empty();
    if (!fault.isNone())
        return Refused(std::move(verdict), fault);

    Attempt furthest = {Progress::certificate, Refused(verdict, known_.whyNone(signer.signer))};
    for (const auto& [text, known] : known_.find(signer.signer)) {
        if (++candidates_ > maxCandidates || signatures_ >= maxSignatures)
            return Refused(std::move(verdict), {Reason::limit, "too many certificates or signatures of signers"});
        if (!signer.signer.means(*known->certificate))
            continue;
        Attempt attempt = tryCertificate(signer, statement, verdict, *known);
        if (attempt.progress > furthest.progress)
            furthest = std::move(attempt);
        if (furthest.progress == Progress::valid)
            break;
    }
    return std::move(furthest.verdict);
}

SignerFault Verification::checkAlgorithms(const SignerStatement& statement, const ICryptoKeyPair& key) const
{
    if (statement.algorithm.isBroken())
        return {Reason::weakAlgorithm, "MD5"};
    if (options_.validation.allowWeak)
        return {};
    if (statement.algorithm.isWeak() || statement.hash == algorithm::sha1)
        return {Reason::weakAlgorithm, "SHA-1"};
    Finding finding = CheckKey(key, options_.validation);
    return {finding.reason, std::move(finding.detail)};
}

Verification::Attempt Verification::tryCertificate(const CCryptoPKCS7SignerInfo& signer, const SignerStatement& statement,
                                                   SignerVerdict verdict, const KnownCertificate& known)
{
    const CertificatePtr& certificate = known.certificate;
    ICryptoKeyPair& key = *certificate->publicKey();
    verdict.certificate = certificate;
    verdict.keyText = TextOfKey(key);
    if (const SignerFault fault = CheckReferences(statement, *certificate); !fault.isNone())
        return {Progress::reference, Refused(std::move(verdict), fault)};
    if (const SignerFault fault = checkAlgorithms(statement, key); !fault.isNone())
        return {Progress::signature, Refused(std::move(verdict), fault)};
    ++signatures_;
    if (const SignerFault fault = VerifySigner(signer, statement, key, *content_, verdict.order); !fault.isNone())
        return {Progress::signature, Refused(std::move(verdict), fault)};
    if (!MaySignMessages(known.extensions))
        return {Progress::path, Refused(std::move(verdict), {Reason::keyUsage, "The key usage allows no signatures"})};

    verdict.path = validate(certificate);
    verdict.verdict = verdict.path.verdict;
    verdict.reason = verdict.path.reason;
    verdict.detail = verdict.path.detail;
    if (verdict.verdict == Verdict::invalid)
        return {Progress::path, std::move(verdict)};
    if (const SignerFault fault = CheckNamedPath(statement, verdict.path); !fault.isNone())
        return {Progress::path, Refused(std::move(verdict), fault)};
    const bool isValid = verdict.verdict == Verdict::valid;
    return {isValid ? Progress::valid : Progress::undecided, std::move(verdict)};
}

PathVerdict Verification::validate(const CertificatePtr& certificate)
{
    const auto [entry, isNew] = paths_.try_emplace(certificate.get());
    if (isNew)
        entry->second = validator_.validate(certificate);
    return entry->second;
}

} // namespace

SignedDataVerdict VerifySignedData(const CCryptoPKCS7SignedDataObject& data, SignedContent* content, const SignedDataTrust& trust,
                                   const SignedDataOptions& options)
{
    CCryptoAutoLogger logger("VerifySignedData");
    SignedContent embedded(data.content.bytes());
    if (content == nullptr && data.hasContent)
        content = &embedded;
    SignedDataVerdict result;
    result.reason = Reason::malformed;
    result.detail = "There is no signer";
    Verification verification(data, content, trust, options);
    for (const auto& signer : data.signerInfos)
        result.signers.push_back(verification.verify(*signer));

    const auto first = [&](Verdict verdict) {
        return std::ranges::find_if(result.signers, [=](const SignerVerdict& signer) { return signer.verdict == verdict; });
    };
    auto speaker = first(Verdict::invalid);
    if (speaker == result.signers.end())
        speaker = first(Verdict::undecided);
    if (speaker == result.signers.end())
        speaker = result.signers.begin();
    if (speaker != result.signers.end()) {
        result.verdict = speaker->verdict;
        result.reason = speaker->reason;
        result.detail = speaker->detail;
    }
    logger.setResult(result.verdict == Verdict::valid);
    return result;
}

} // namespace ccrypto
