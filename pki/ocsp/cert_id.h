#pragma once

#include "core/base/algorithm.h"
#include "pki/ocsp/structure.h"

#include <cstdint>
#include <map>

class CCrypto_X509_Certificate;

namespace CCryptoOCSP {

/// CertID: the certificate that is asked about, by hashes of its issuer's name and key and by its serial number.
class CCertID : public CStructure {
public:
    static constexpr std::uint32_t maxSerialNumber = 64; ///< bytes

    CCertID();
    explicit CCertID(const elementNode* node);

    bool ParseNode() override;
    bool SetTemplateValues() override;

    /// Becomes a copy. \return false, logged, the object empty, when `other` does not make a CertID.
    [[nodiscard]] bool CopyOf(CCertID& other);
    /// The identifier of the certificate with this serial number, as its INTEGER's octets, that `issuer` issued.
    /// \param hash SHA-1, which every responder knows, or SHA-2. \return false, logged, the object empty, for any other.
    [[nodiscard]] bool Identify(const CCrypto_X509_Certificate& issuer, const element& serialNumber,
                                ccrypto::algorithm::Id hash = ccrypto::algorithm::sha1);

    CCryptoAlgorithmIdentifier hashAlgorithm;
    element issuerNameHash;
    element issuerKeyHash; ///< over the bits of the key, without tag, length and number of unused bits
    element serialNumber;  ///< the octets of the INTEGER

protected:
    void ClearFields() override;
};

} // namespace CCryptoOCSP

namespace ccrypto {

/// The hash of a CertID; none for an algorithm that is not a hash of CertIDs (SHA-1 and SHA-2) and for one with parameters other
/// than NULL.
[[nodiscard]] algorithm::Id CertIdHash(const CCryptoOCSP::CCertID& id);

/// Holds CertIDs against one issuer. What they are compared with is hashed once for each hash function.
class CertIdMatcher {
public:
    /// \param issuer must outlive the matcher.
    explicit CertIdMatcher(const CCrypto_X509_Certificate& issuer) : issuer_(issuer) {}

    /// Whether the issuer is the one that the CertID names. Parameters of the hash, NULL or none, do not count.
    [[nodiscard]] bool isOfIssuer(const CCryptoOCSP::CCertID& id);
    /// The same, and the serial number, as its INTEGER's octets, is the one.
    [[nodiscard]] bool matches(const CCryptoOCSP::CCertID& id, const element& serialNumber);

private:
    struct Hashes {
        element name;
        element key;
    };

    const CCrypto_X509_Certificate& issuer_;
    std::map<algorithm::Id, Hashes> hashes_;
};

} // namespace ccrypto
