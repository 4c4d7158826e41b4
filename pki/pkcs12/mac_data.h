#pragma once

#include "asn1/types/algorithm_identifier.h"
#include "asn1/types/asn1_object.h"
#include "core/base/algorithm.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// PBMAC1-params with PBKDF2 (RFC 8018, A.5; RFC 9579, 4).
class CCryptoPBMAC1Parameters : public CCryptoASN1Object {
public:
    CCryptoPBMAC1Parameters();

    bool BuildNode() override;
    /// False without a key length, which RFC 9579 demands, and for numbers that do not fit.
    bool ParseNode() override;

    element salt;
    std::uint32_t iterations = 0;
    std::uint32_t keyLength = 0;
    ccrypto::algorithm::Id prf = ccrypto::algorithm::hmacSha1; ///< as when it is not given
    ccrypto::algorithm::Id mac = ccrypto::algorithm::none;     ///< an HMAC

protected:
    void ClearFields() override;
};

/// MacData (RFC 7292, 4; RFC 9579): a code over the content of a file, keyed with the password.
class CCryptoPKCS12MacData : public CCryptoASN1Object {
public:
    /// Keys of PBMAC1 that are shorter, in bytes, are refused: whoever writes a file chooses the length, and a MAC under a key of
    /// few bytes is guessed without the password.
    static constexpr std::uint32_t minKey = 20;

    CCryptoPKCS12MacData();

    bool BuildNode() override;
    /// True for any algorithm: see isSupported().
    bool ParseNode() override;

    /// HMAC with SHA-1 or SHA-2, or PBMAC1 with PBKDF2 and the same, whose numbers are within bounds.
    [[nodiscard]] bool isSupported() const;
    /// Dotted.
    [[nodiscard]] CCryptoString algorithmOid() const { return digestAlgorithm_.oid(); }
    [[nodiscard]] bool isPBMAC1() const { return isPBMAC1_; }
    /// The hash of the HMAC.
    [[nodiscard]] ccrypto::algorithm::Id hash() const;
    [[nodiscard]] std::uint32_t iterations() const { return isPBMAC1_ ? pbmac1_.iterations : iterations_; }

    /// A MAC to be made, with a salt. \param isPBMAC1 the key by PBKDF2 with an HMAC over the same hash.
    void set(ccrypto::algorithm::Id hash, std::uint32_t iterations, const element& salt, bool isPBMAC1);
    /// \return false, logged, when there is no key for this password.
    [[nodiscard]] bool sign(std::string_view password, std::span<const std::uint8_t> content);
    /// Whether the MAC is that of the content. \param password UTF-8; none for no password at all, which HMAC tells from an empty
    /// one. The time does not depend on where MACs differ.
    [[nodiscard]] bool verify(std::optional<std::string_view> password, std::span<const std::uint8_t> content) const;

protected:
    void ClearFields() override;

private:
    element compute(std::optional<std::string_view> password, std::span<const std::uint8_t> content) const;
    element deriveKey(std::optional<std::string_view> password) const;

    CCryptoAlgorithmIdentifier digestAlgorithm_;
    bool isPBMAC1_ = false;
    bool isRead_ = false; ///< the parameters of PBMAC1 are understood
    CCryptoPBMAC1Parameters pbmac1_;
    element mac_;
    element salt_;
    std::uint32_t iterations_ = 1;
};
