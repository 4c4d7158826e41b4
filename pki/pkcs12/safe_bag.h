#pragma once

#include "asn1/types/oid.h"
#include "core/text/element.h"
#include "core/text/string.h"
#include "pki/keys/key_pair.h"
#include "pki/keys/password_encryption.h"
#include "pki/x509/certificate.h"
#include "pki/x509/crl.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace ccrypto {

/// What a file of PKCS#12 holds in one place (RFC 7292, 4.2): a key, a certificate, a revocation list, a secret.
struct PKCS12Bag {
    enum class Kind { key, certificate, revocationList, secret, other };

    Kind kind = Kind::other;
    /// Of a certificate, a list or a secret its own type, else that of the bag.
    Oid type;
    CCryptoString friendlyName; ///< may hold anything: it is for people
    element localKeyId;
    /// Of a key: how it is encrypted by itself; none for one that is not.
    std::optional<SCryptoPasswordEncryption> encryption;
    std::uint32_t safe = 0; ///< which of the contents holds it

    /// Null for a key that is still encrypted, and for one of an algorithm that is not supported, as are the next two for what does
    /// not load.
    std::shared_ptr<ICryptoKeyPair> key;
    CertificatePtr certificate;
    CrlPtr revocationList;
    /// DER of the certificate or list; of a secret and of others the value as it was read, which may be secret.
    element octets;
};

/// Walks SafeContents (RFC 7292, 4.2) and the SafeContents in its bags. Bags are read off the octets, without a tree: each level of
/// nested contents would copy all levels below, keys included.
class PKCS12SafeReader {
public:
    static constexpr std::uint32_t maxBags = 10'000; ///< of one file

    /// Makes octets of PrivateKeyInfo of those of EncryptedPrivateKeyInfo. \return false when the key stays encrypted.
    enum class KeyResult { opened, closed, failed };
    using KeyOpener = std::function<KeyResult(std::span<const std::uint8_t> encrypted, PKCS12Bag& bag)>;

    PKCS12SafeReader(std::vector<PKCS12Bag>& bags, KeyOpener opener) : bags_(bags), opener_(std::move(opener)) {}

    /// \param contents DER or BER. \return false, logged, for what is not SafeContents, for too many bags, and when the opener
    /// failed.
    [[nodiscard]] bool read(std::span<const std::uint8_t> contents, std::uint32_t safe);

private:
    bool readBag(std::span<const std::uint8_t> bag, std::uint32_t safe);
    bool readValue(std::span<const std::uint8_t> value, PKCS12Bag& bag);

    std::vector<PKCS12Bag>& bags_;
    KeyOpener opener_;
    std::vector<std::span<const std::uint8_t>> nested_; ///< contents that the bag read last holds
};

/// Reads PrivateKeyInfo into the bag; a key of an algorithm that is not supported leaves it null. \return false for octets that are
/// no PrivateKeyInfo.
[[nodiscard]] bool ReadPKCS12Key(const element& privateKeyInfo, PKCS12Bag& bag);

namespace pkcs12 {
extern const Oid keyBag, shroudedKeyBag, certificateBag, revocationListBag, secretBag, safeContentsBag, x509Certificate,
    x509RevocationList, friendlyName, localKeyId;
} // namespace pkcs12

} // namespace ccrypto
