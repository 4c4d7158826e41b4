#pragma once

#include "pki/x509/certificate.h"
#include "pki/x509/extensions.h"
#include "pki/x509/name.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace ccrypto {

/// A certificate with what is read of it once, however many paths it is tried in.
struct KnownCertificate {
    CertificatePtr certificate;
    ComparableName subject;
    ComparableName issuer;
    ReadExtensions extensions;
    bool isAnchor = false;

    [[nodiscard]] bool isSelfIssued() const { return subject == issuer; }
};

/// The certificates among which issuers are looked for: anchors and candidates between.
class CertificatePool {
public:
    static constexpr std::uint32_t maxCertificates = 10'000;

    /// The same octets are kept once; an anchor stays one. \return null, logged, beyond maxCertificates.
    const KnownCertificate* add(CertificatePtr certificate, bool isAnchor);
    /// Those whose subject is the issuer of `certificate`: with the key identifier that it names first, then those without one,
    /// then the others; anchors first among each.
    [[nodiscard]] std::vector<const KnownCertificate*> issuersOf(const KnownCertificate& certificate) const;
    [[nodiscard]] std::uint32_t size() const { return static_cast<std::uint32_t>(certificates_.size()); }

private:
    std::vector<std::unique_ptr<KnownCertificate>> certificates_;
    std::multimap<ComparableName, const KnownCertificate*> bySubject_;
};

} // namespace ccrypto
