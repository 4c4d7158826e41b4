#include "pki/validation/certificate_pool.h"

#include "core/diagnostics/auto_logger.h"

#include <algorithm>
#include <utility>

namespace ccrypto {

namespace {

/// How well a certificate fits what an authority key identifier says of the signer; the best is 0.
std::uint32_t RankOfSigner(const KnownCertificate& signer, const std::optional<AuthorityKeyIdentifier>& named)
{
    enum : std::uint32_t { matches, saysNothing, differs };

    std::uint32_t rank = saysNothing;
    if (named && !named->keyIdentifier.isEmpty() && signer.extensions.subjectKeyIdentifier)
        rank = signer.extensions.subjectKeyIdentifier->view() == named->keyIdentifier.view() ? matches : differs;
    else if (named && !named->serialNumber.isEmpty())
        rank = signer.certificate->serialNumber().view() == named->serialNumber.view() ? matches : differs;
    return 2 * rank + (signer.isAnchor ? 0 : 1);
}

} // namespace

std::optional<KnownCertificate> KnownCertificate::Read(CertificatePtr certificate)
{
    CCryptoAutoLogger logger("KnownCertificate::Read");

    if (certificate == nullptr || !certificate->isLoaded())
        return logger.fail(std::optional<KnownCertificate>(), "No certificate");
    std::optional<ComparableName> subject = ComparableName::Read(certificate->subject().GetDerEncodedElement().bytes());
    std::optional<ComparableName> issuer = ComparableName::Read(certificate->issuer().GetDerEncodedElement().bytes());
    if (!subject || !issuer)
        return logger.fail(std::optional<KnownCertificate>(), "Invalid name");

    KnownCertificate known;
    known.subject = std::move(*subject);
    known.issuer = std::move(*issuer);
    known.extensions = ReadAllExtensions(certificate->extensions(), ExtensionOwner::certificate);
    known.signedBy = ReadSignatureAlgorithm(certificate->signatureAlgorithm());
    known.key = certificate->publicKey();
    known.certificate = std::move(certificate);
    return logger.succeed(std::optional(std::move(known)));
}

const KnownCertificate* CertificatePool::add(CertificatePtr certificate, bool isAnchor)
{
    CCryptoAutoLogger logger("CertificatePool::add");

    if (certificate != nullptr) {
        if (const auto found = byOctets_.find(certificate->der().view()); found != byOctets_.end()) {
            found->second->isAnchor |= isAnchor;
            return logger.succeed(found->second);
        }
    }
    if (size() == maxCertificates)
        return logger.fail(nullptr, "Too many certificates");
    std::optional<KnownCertificate> read = KnownCertificate::Read(std::move(certificate));
    if (!read)
        return logger.fail(nullptr);

    certificates_.push_back(std::make_unique<KnownCertificate>(std::move(*read)));
    KnownCertificate& known = *certificates_.back();
    known.isAnchor = isAnchor;
    byOctets_.emplace(known.certificate->der().view(), &known);
    known.key = byKey_.try_emplace(known.certificate->publicKeyInfo().view(), &known).first->second->key;
    bySubject_[known.subject].push_back(&known);
    return logger.succeed(&known);
}

const KnownCertificate* CertificatePool::find(const CCrypto_X509_Certificate& certificate) const
{
    const auto found = byOctets_.find(certificate.der().view());
    return found == byOctets_.end() ? nullptr : found->second;
}

const KnownCertificate* CertificatePool::withKeyOf(const CCrypto_X509_Certificate& certificate) const
{
    const auto found = byKey_.find(certificate.publicKeyInfo().view());
    return found == byKey_.end() ? nullptr : found->second;
}

std::vector<const KnownCertificate*> CertificatePool::issuersOf(const KnownCertificate& certificate) const
{
    return signersOf(certificate.issuer, certificate.extensions.authorityKeyIdentifier);
}

std::vector<const KnownCertificate*> CertificatePool::signersOf(const ComparableName& issuer,
                                                                const std::optional<AuthorityKeyIdentifier>& key) const
{
    const auto found = bySubject_.find(issuer);
    if (found == bySubject_.end())
        return {};
    std::vector<const KnownCertificate*> signers = found->second;
    if (signers.size() > 1) {
        std::stable_sort(signers.begin(), signers.end(), [&](const KnownCertificate* first, const KnownCertificate* second) {
            return RankOfSigner(*first, key) < RankOfSigner(*second, key);
        });
    }
    return signers;
}

} // namespace ccrypto
