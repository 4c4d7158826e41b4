#pragma once

#include "asn1/template/template_match.h"
#include "core/diagnostics/auto_logger.h"
#include "core/system/date_time.h"
#include "pki/keys/key_pair.h"
#include "pki/x509/x509_base.h"

#include <cstdint>
#include <memory>
#include <vector>

/// An X.509 certificate (RFC 5280, 4.1) of version 1 or 3. Version 2 is rejected on purpose.
class CCrypto_X509_Certificate : public CCrypto_X509_Base {
public:
    CCrypto_X509_Certificate() = default;

    /// \param der one certificate. \return false, logged, the object empty and failure() set: "value is empty", "Loading failed!",
    /// "Invalid version: %i", "Public key not found", "Key loading failed", …
    bool LoadCertificate(const element& der);
    /// The DER: as it was read, else built of the fields, with a warning in the log when there is no serial number. Empty, logged,
    /// when another field is missing.
    [[nodiscard]] element GetCertificate() const;

    /// Big-endian, as the octets of the INTEGER are.
    [[nodiscard]] const element& serialNumber() const { return serialNumber_; }
    [[nodiscard]] const CCryptoDateTime& validFrom() const { return validFrom_; }
    [[nodiscard]] const CCryptoDateTime& validTo() const { return validTo_; }
    [[nodiscard]] const CCrypto_X509_ValueList& subject() const { return subject_; }
    /// SubjectPublicKeyInfo, DER.
    [[nodiscard]] const element& publicKeyInfo() const { return publicKeyInfo_; }
    /// The octets of the subjectPublicKey BIT STRING, over which key identifiers and OCSP's key hashes are made.
    [[nodiscard]] const element& publicKeyBits() const { return publicKeyBits_; }
    /// Never null once loaded. Verifying with it changes nothing, so it may be shared.
    [[nodiscard]] const std::shared_ptr<ICryptoKeyPair>& publicKey() const { return publicKey_; }

    /// Whether "now", moved by `toleranceSeconds`, lies between start and end, both included. \return false, logged: "Not valid
    /// yet: %s > %s" or "Expired: %s < %s".
    [[nodiscard]] bool isValidAt(const CCryptoDateTime& now, std::int64_t toleranceSeconds = 0) const;

    // Fields of a certificate that is to be written. Each change makes der() empty: GetCertificate() is then built of the fields.
    // It is of version 3, unless version 1 was read or set and there are no extensions.

    /// \return false for another than 1 or 3.
    [[nodiscard]] bool setVersion(std::uint32_t version);
    /// \param magnitude big-endian; empty for none, which is written as 0 with a warning in the log.
    void setSerialNumber(const element& magnitude);
    void setValidity(const CCryptoDateTime& from, const CCryptoDateTime& to);
    void setIssuer(CCrypto_X509_ValueList issuer);
    void setSubject(CCrypto_X509_ValueList subject);
    void setExtensions(CCrypto_X509_ValueList extensions);
    /// \return false, logged, for null and for a key that has no SubjectPublicKeyInfo.
    [[nodiscard]] bool setPublicKey(std::shared_ptr<ICryptoKeyPair> key);
    /// The same of a key that is not loaded: publicKey() is then null. \param info SubjectPublicKeyInfo, DER.
    [[nodiscard]] bool setPublicKeyInfo(const element& info);
    /// Both of them. \param identifier AlgorithmIdentifier, DER. \return false, logged, for anything else.
    [[nodiscard]] bool setSignatureAlgorithm(const element& identifier);
    void setSignature(const element& signature);
    /// What is to be signed: as it was read, else built of the fields. Empty, logged, when a field is missing.
    [[nodiscard]] element GetSignedPart() const;

private:
    void changeFields();
    bool fillFields(CCryptoParser& parser) const;
    bool readFields(CCryptoAutoLogger& logger);
    bool readNames(CCryptoAutoLogger& logger, const CCryptoTemplateMatch& match);
    bool readKey(CCryptoAutoLogger& logger, const elementNode* node);
    void clear();

    element serialNumber_;
    CCryptoDateTime validFrom_;
    CCryptoDateTime validTo_;
    CCrypto_X509_ValueList subject_;
    element publicKeyInfo_;
    element publicKeyBits_;
    std::shared_ptr<ICryptoKeyPair> publicKey_;
};

namespace ccrypto {

/// Certificates are shared by pools, paths and messages, and do not change.
using CertificatePtr = std::shared_ptr<const CCrypto_X509_Certificate>;

/// \return null, logged, with `failure` set, when it does not load.
[[nodiscard]] CertificatePtr LoadCertificate(std::span<const std::uint8_t> der, LoadFailure* failure = nullptr);

} // namespace ccrypto
