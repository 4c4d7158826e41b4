#pragma once

#include "pki/keys/key_pair.h"
#include "pki/x509/certificate.h"
#include "pki/x509/extensions.h"
#include "pki/x509/name.h"
#include "pki/x509/signature.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace ccrypto {

/// A certificate with what is read of it once, however many paths it is tried in.
struct KnownCertificate {
    CertificatePtr certificate;
    ComparableName subject;
    ComparableName issuer;
    ReadExtensions extensions;
    /// How it is signed; none for an algorithm that is not supported.
    std::optional<SignatureAlgorithm> signedBy;
    /// The same object for certificates of a pool with the same subjectPublicKeyInfo.
    std::shared_ptr<ICryptoKeyPair> key;
    bool isAnchor = false;

    /// \return none, logged, for a null certificate and for names that cannot be compared.
    [[nodiscard]] static std::optional<KnownCertificate> Read(CertificatePtr certificate);

    [[nodiscard]] bool isSelfIssued() const { return subject == issuer; }
    /// Whether both belong to the same authority or person: one name with one key.
    [[nodiscard]] bool hasIdentityOf(const KnownCertificate& other) const { return key == other.key && subject == other.subject; }
};

/// The certificates among which issuers are looked for: anchors and candidates between.
class CertificatePool {
public:
    static constexpr std::uint32_t maxCertificates = 10'000;

    /// The same octets are kept once; an anchor stays one. \return null, logged, beyond maxCertificates and where
    /// KnownCertificate::Read() gives none.
    const KnownCertificate* add(CertificatePtr certificate, bool isAnchor);

    /// The one with the same octets; null when there is none.
    [[nodiscard]] const KnownCertificate* find(const CCrypto_X509_Certificate& certificate) const;
    /// A certificate with this subjectPublicKeyInfo; null when there is none.
    [[nodiscard]] const KnownCertificate* withKeyOf(const CCrypto_X509_Certificate& certificate) const;
    /// Those whose subject is the issuer of `certificate`: with the key identifier that it names first, then those without one,
    /// then the others; anchors first among each.
    [[nodiscard]] std::vector<const KnownCertificate*> issuersOf(const KnownCertificate& certificate) const;
    /// The same for whatever else names who signed it: a list.
    [[nodiscard]] std::vector<const KnownCertificate*> signersOf(const ComparableName& issuer,
                                                                 const std::optional<AuthorityKeyIdentifier>& key) const;
    /// In the order in which they were added.
    [[nodiscard]] const std::vector<std::unique_ptr<KnownCertificate>>& certificates() const { return certificates_; }
    [[nodiscard]] std::uint32_t size() const { return static_cast<std::uint32_t>(certificates_.size()); }

private:
    std::vector<std::unique_ptr<KnownCertificate>> certificates_;
    // The keys of these two are octets of the certificates.
    std::map<std::string_view, KnownCertificate*> byOctets_;
    std::map<std::string_view, const KnownCertificate*> byKey_;
    std::map<ComparableName, std::vector<const KnownCertificate*>> bySubject_;
};

} // namespace ccrypto
