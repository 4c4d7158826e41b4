#pragma once

#include "asn1/parser/parser.h"
#include "asn1/types/algorithm_identifier.h"
#include "pki/x509/signature.h"
#include "pki/x509/x509_value.h"

#include <cstdint>
#include <span>

class CCryptoAutoLogger;

namespace ccrypto {

/// Why a certificate or list did not load.
enum class LoadFailure {
    none,
    malformed,      ///< not DER or BER, not the structure, or beyond a limit
    unsupportedKey, ///< the structure is right; the public key is of an algorithm, curve or size that is not supported, or no key
};

} // namespace ccrypto

/// What certificates and certificate revocation lists share: the octets, the issuer, the extensions, the signature.
class CCrypto_X509_Base {
public:
    static constexpr std::uint32_t maxSerialNumber = 64; ///< bytes

    CCrypto_X509_Base(const CCrypto_X509_Base&) = delete;
    CCrypto_X509_Base& operator=(const CCrypto_X509_Base&) = delete;

    [[nodiscard]] bool isLoaded() const { return !der_.isEmpty(); }
    [[nodiscard]] ccrypto::LoadFailure failure() const { return failure_; }

    /// The whole object, as it was read.
    [[nodiscard]] const element& der() const { return der_; }
    /// Whether these octets are DER. Of others nothing may be verified: what a signature covers is not what was understood.
    [[nodiscard]] bool isDer() const { return isDer_; }
    /// What the signature covers, within der().
    [[nodiscard]] std::span<const std::uint8_t> signedOctets() const { return signedOctets_; }

    [[nodiscard]] std::uint32_t version() const { return version_; }
    [[nodiscard]] const CCrypto_X509_ValueList& issuer() const { return issuer_; }
    [[nodiscard]] const CCrypto_X509_ValueList& extensions() const { return extensions_; }
    [[nodiscard]] const CCryptoAlgorithmIdentifier& signatureAlgorithm() const { return signatureAlgorithm_; }
    [[nodiscard]] const CCryptoAlgorithmIdentifier& outerSignatureAlgorithm() const { return outerSignatureAlgorithm_; }
    /// Whether the two identifiers have the same octets, as RFC 5280, 4.1.1.2, asks.
    [[nodiscard]] bool algorithmsAgree() const;
    /// Empty, and so good for no key, when bits of the last octet are unused.
    [[nodiscard]] const element& signature() const { return signature_; }

    /// Whether the owner of `key` signed it. Unsupported algorithms, algorithms that do not agree, and octets that are not DER are
    /// no good signature; see isDer() and ReadSignatureAlgorithm() for which.
    [[nodiscard]] ccrypto::SignatureResult verifySignature(ICryptoKeyPair& key) const;

protected:
    CCrypto_X509_Base() = default;
    ~CCrypto_X509_Base() = default;

    /// Takes the octets and their tree, for the fields to be read from. \return false, logged, for none ("value is empty") and for
    /// what does not decode ("Loading failed!"); failure() is malformed until a caller says otherwise.
    [[nodiscard]] bool decode(CCryptoAutoLogger& logger, element der);
    /// Back to an object that nothing was loaded into; failure() stays.
    void clearBase();

    ccrypto::ElementNodePtr tree_; ///< what was read, where the lists refer to it; may be null

    element der_;
    bool isDer_ = false;
    ccrypto::LoadFailure failure_ = ccrypto::LoadFailure::none;
    std::span<const std::uint8_t> signedOctets_;
    std::uint32_t version_ = 0;
    CCrypto_X509_ValueList issuer_;
    CCrypto_X509_ValueList extensions_;
    CCryptoAlgorithmIdentifier signatureAlgorithm_;
    CCryptoAlgorithmIdentifier outerSignatureAlgorithm_;
    element signature_;
};
