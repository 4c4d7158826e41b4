#pragma once

#include "core/base/algorithm.h"
#include "core/memory/wiped.h"
#include "core/text/element.h"
#include "crypto/random/random.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>

namespace ccrypto {

namespace internal {
class EddsaScheme;
}

/// Which of the schemes of RFC 8032 a signature is of: Ed25519 and Ed448 without anything set.
struct EddsaMode {
    /// At most 255 bytes. With one that is not empty, Ed25519 is Ed25519ctx.
    std::span<const std::uint8_t> context;
    /// Ed25519ph or Ed448ph: the message is hashed first.
    bool prehash = false;
};

/// A key of Ed25519 or Ed448 (RFC 8032): a public key and, if it is there, the seed that the private numbers are derived from,
/// which is wiped at the end. Both are 32 bytes for Ed25519 and 57 for Ed448, signatures are 64 and 114. Only valid keys exist: the
/// public one is the exact encoding of a point that is not of low order.
///
/// Signing and making public keys takes time that depends on lengths alone. Verification is strict: encodings are exact, S is below
/// the order, and the equation holds without the cofactor, [S]B = R + [k]A, as RFC 8032, 5.1.7 allows. So a signature that one
/// verifier of this kind accepts, all of them accept.
class EddsaKey {
public:
    /// A new pair. \return null, logged, for an id other than ed25519 and ed448, and when there are no random bytes.
    [[nodiscard]] static std::unique_ptr<EddsaKey> Generate(ccrypto::algorithm::Id curve,
                                                            ICryptoRandom& random = ICryptoRandom::Instance());
    /// The pair of a seed. \return null, logged, for another id and for a wrong length.
    [[nodiscard]] static std::unique_ptr<EddsaKey> FromSeed(ccrypto::algorithm::Id curve, std::span<const std::uint8_t> seed);
    /// A public key. \return null, logged, for another id, a wrong length, bytes that are not the exact encoding of a point, and a
    /// point of low order.
    [[nodiscard]] static std::unique_ptr<EddsaKey> FromPublic(ccrypto::algorithm::Id curve,
                                                              std::span<const std::uint8_t> publicKey);

    EddsaKey(const EddsaKey&) = delete;
    EddsaKey& operator=(const EddsaKey&) = delete;

    [[nodiscard]] ccrypto::algorithm::Id curve() const;
    /// "Ed25519" or "Ed448"
    [[nodiscard]] const char* name() const;
    [[nodiscard]] bool hasPrivate() const { return hasSeed_; }
    [[nodiscard]] element publicKey() const;
    /// Empty when there is none.
    [[nodiscard]] element seed() const;

    /// \return empty, logged, without a seed, for a context that is too long, and when the signature is not right. It is checked
    /// before it leaves, with copies of seed and public key, since a faulty one can give the key away. What is noticed is a fault
    /// in one of the copies, in the hash that S is made of, in a point and in S; what is not is a nonce that was wrong from the
    /// start.
    [[nodiscard]] element sign(std::span<const std::uint8_t> message, const EddsaMode& mode = {}) const;
    /// \return false, logged, when the signature is not one of this key over the message, for whatever reason.
    [[nodiscard]] bool verify(std::span<const std::uint8_t> message, std::span<const std::uint8_t> signature,
                              const EddsaMode& mode = {}) const;

private:
    using Padded = std::array<std::uint8_t, 57>;

    explicit EddsaKey(const internal::EddsaScheme& scheme) : scheme_(scheme) {}
    std::span<const std::uint8_t> publicBytes() const;

    const internal::EddsaScheme& scheme_;
    Padded public_{};
    ccrypto::Wiped<Padded> seed_{};
    /// What signatures are checked with.
    Padded publicCopy_{};
    ccrypto::Wiped<Padded> seedCopy_{};
    bool hasSeed_ = false;
};

} // namespace ccrypto
