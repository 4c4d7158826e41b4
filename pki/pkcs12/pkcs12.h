#pragma once

#include "crypto/random/random.h"
#include "pki/keys/password_encryption.h"
#include "pki/pkcs12/mac_data.h"
#include "pki/pkcs12/safe_bag.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ccrypto {

/// How reading a file of PKCS#12 ended.
enum class PKCS12Outcome {
    opened,
    locked, ///< the structure was read; what is encrypted was not
    malformed,
    unsupported,   ///< by an algorithm, or by asking for too many iterations
    wrongPassword, ///< or damaged: nobody can say which
    noPassword,    ///< one is needed, and the source gave none
};

/// One of the contents of a file.
struct PKCS12Safe {
    Oid type;                                            ///< data, encryptedData, or what is not supported
    std::optional<SCryptoPasswordEncryption> encryption; ///< of encryptedData whose algorithm is supported
    bool isOpen = false;
};

} // namespace ccrypto

/// How a file of PKCS#12 is written.
struct SCryptoPKCS12Options {
    enum class Mac { hmac, pbmac1, none };

    /// Of certificates and key: PBES2 with AES-256, unless it is an old scheme, whose readers know no MAC but with SHA-1.
    SCryptoPasswordEncryption encryption;
    /// HMAC is keyed as RFC 7292, appendix B, says; PBMAC1 (RFC 9579) is not read by programs before 2024.
    Mac mac = Mac::hmac;
    ccrypto::algorithm::Id macHash = ccrypto::algorithm::sha256; ///< SHA-1 or SHA-2
    std::uint32_t macIterations = 600'000;
    CCryptoString friendlyName; ///< of the key and its certificate; empty for none
};

/// A file of keys and certificates under a password: PFX (RFC 7292).
///
/// The MAC is verified before anything is decrypted. A file without one is read, too: hasMac() says so, and what is in it may then
/// come from anybody. An empty password is tried as one and as none, since writers differ. What was decrypted is wiped.
class CCryptoPKCS12 {
public:
    using PasswordSource = std::function<bool(element& password)>;
    /// Iterations of all keys that are derived for one file together.
    static constexpr std::uint32_t maxIterations = 50'000'000;

    CCryptoPKCS12() = default;
    CCryptoPKCS12(const CCryptoPKCS12&) = delete;
    CCryptoPKCS12& operator=(const CCryptoPKCS12&) = delete;

    /// Reads what can be read without a password, and verifies nothing. \param bytes DER or BER. \return `locked`, or `opened` when
    /// there is nothing to verify or decrypt; else the object is empty.
    [[nodiscard]] ccrypto::PKCS12Outcome Read(std::span<const std::uint8_t> bytes);
    /// After Read(): verifies the MAC, and decrypts everything. \param password UTF-8. \return `opened`; after another outcome the
    /// object is as Read() left it.
    [[nodiscard]] ccrypto::PKCS12Outcome Open(std::string_view password);
    /// Both. The source is asked once, when a password is needed. \return whether the outcome is `opened`; else, with the reason
    /// in the log and in ccrypto::LastFailure(), the object is empty.
    [[nodiscard]] bool Load(std::span<const std::uint8_t> bytes, const PasswordSource& password);
    /// Of the call made last.
    [[nodiscard]] ccrypto::PKCS12Outcome outcome() const { return outcome_; }

    [[nodiscard]] bool hasMac() const { return mac_ != nullptr; }
    /// Null for none.
    [[nodiscard]] const CCryptoPKCS12MacData* mac() const { return mac_.get(); }
    [[nodiscard]] const std::vector<ccrypto::PKCS12Safe>& safes() const { return safes_; }
    /// In the order of the file.
    [[nodiscard]] const std::vector<ccrypto::PKCS12Bag>& bags() const { return bags_; }
    /// The certificate of a key: of those with its public key the one with its localKeyId, else the first. For a key that was not
    /// loaded the localKeyId alone decides. Null for none.
    [[nodiscard]] const ccrypto::PKCS12Bag* certificateOf(const ccrypto::PKCS12Bag& key) const;

    void clear();

    /// Makes a file. \param key null for certificates alone; it must have a private half that can leave its place.
    /// \param certificates the first with the key's public key is bound to it; the chain follows in any order.
    /// \return DER; empty, logged, on failure, and for more certificates or iterations than Load() accepts.
    [[nodiscard]] static element Save(const ICryptoKeyPair* key, std::span<const ccrypto::CertificatePtr> certificates,
                                      std::string_view password, const SCryptoPKCS12Options& options = {},
                                      ICryptoRandom& random = ICryptoRandom::Instance());

private:
    using Password = std::optional<std::string_view>;

    ccrypto::PKCS12Outcome readFile(std::span<const std::uint8_t> bytes);
    ccrypto::PKCS12Outcome readSafes();
    ccrypto::PKCS12Outcome openWith(Password password);
    /// Of what Read() found; keys inside of what is encrypted come on top.
    std::uint64_t iterationsAskedFor() const;
    bool spend(std::uint32_t iterations);
    void setBags(std::vector<ccrypto::PKCS12Bag> bags);

    ccrypto::PKCS12Outcome outcome_ = ccrypto::PKCS12Outcome::malformed;
    element contents_; ///< AuthenticatedSafe as the MAC covers it
    std::unique_ptr<CCryptoPKCS12MacData> mac_;
    std::vector<element> safeContents_; ///< of data the octets, of encryptedData EncryptedData
    std::vector<ccrypto::PKCS12Safe> safes_;
    std::vector<ccrypto::PKCS12Bag> bags_;
    /// The first certificate with this public key and this localKeyId, of which one may be left out. A search of all bags for each
    /// key would take minutes for a file of thousands.
    std::map<std::pair<std::string, std::string>, std::size_t> certificates_;
    std::uint32_t iterationsLeft_ = maxIterations;
};
