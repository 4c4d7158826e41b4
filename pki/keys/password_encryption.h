#pragma once

#include "asn1/types/algorithm_identifier.h"
#include "core/base/algorithm.h"
#include "crypto/random/random.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// How something is enciphered with a password.
struct SCryptoPasswordEncryption {
    /// pbes2, or one of the six of PKCS#12 (pkcs12Sha1…), which are weak: for readers that support nothing else.
    ccrypto::algorithm::Id scheme = ccrypto::algorithm::pbes2;
    /// Of PBES2: AES or triple DES in CBC mode.
    ccrypto::algorithm::Id cipher = ccrypto::algorithm::aes256Cbc;
    /// Of PBES2: the HMAC of PBKDF2, over SHA-1, SHA-2 or SHA-3.
    ccrypto::algorithm::Id prf = ccrypto::algorithm::hmacSha256;
    std::uint32_t iterations = 600'000;
};

/// Encryption with a password as an AlgorithmIdentifier describes it: PBES2 with PBKDF2 (RFC 8018, 6.2) and the schemes of PKCS#12
/// (RFC 7292, appendix C).
class CCryptoPasswordEncryption {
public:
    /// Whether Encrypt() has the scheme and the cipher.
    [[nodiscard]] static bool Supports(const SCryptoPasswordEncryption& parameters);
    /// \param password UTF-8 text. \param how is given the description, with a fresh salt. \return the ciphertext; empty, logged,
    /// for a scheme that is none of these and when there are no random bytes.
    [[nodiscard]] static element Encrypt(const SCryptoPasswordEncryption& parameters, std::string_view password,
                                         std::span<const std::uint8_t> text, CCryptoAlgorithmIdentifier& how,
                                         ICryptoRandom& random = ICryptoRandom::Instance());

    /// Whether there is any use in asking for a password: false, logged, for a description that is none of these, whose numbers
    /// are out of bounds, or that asks for more than 50,000,000 iterations. RC2 in CBC mode under PBES2 is understood, too.
    [[nodiscard]] static bool Understands(const CCryptoAlgorithmIdentifier& how);

    /// What a description asks for; of the schemes of PKCS#12 the cipher and the prf are those that the scheme implies. None,
    /// logged, for what Understands() refuses.
    [[nodiscard]] static std::optional<SCryptoPasswordEncryption> ParametersOf(const CCryptoAlgorithmIdentifier& how);

    /// \param password none for no password at all, which the schemes of PKCS#12 tell from an empty one: the two zero bytes at its
    /// end are left out. \return false, logged, `text` empty, for a description that is not understood, and for a wrong password,
    /// as far as the padding shows.
    [[nodiscard]] static bool Decrypt(const CCryptoAlgorithmIdentifier& how, std::optional<std::string_view> password,
                                      std::span<const std::uint8_t> ciphertext, element& text);
};
