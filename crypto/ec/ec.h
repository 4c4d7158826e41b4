#pragma once

#include "core/base/algorithm.h"
#include "core/memory/wiped.h"
#include "core/text/element.h"
#include "crypto/ec/ecdsa_signature.h"
#include "crypto/random/random.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace ccrypto {

/// The public facts of a curve.
struct CurveFacts {
    algorithm::Id id;
    const char* name;         ///< "prime256v1"; "X25519"
    std::uint32_t bits;       ///< of the prime: 256
    std::uint32_t fieldBytes; ///< of a coordinate
    std::uint32_t orderBytes; ///< of a private scalar, and of r and of s
    bool signs;               ///< by ECDSA; X25519 and X448 only agree on secrets
};

/// All curves of CCryptoEC. On each but X25519 and X448, whose keys need no check, all points but infinity have one prime order.
[[nodiscard]] std::span<const CurveFacts> Curves();
/// Null for any other id.
[[nodiscard]] const CurveFacts* FindCurve(algorithm::Id id);
/// By the name of Curves() in any case, or another common one: "P-256", "secp256r1", "nistp256". Null for any other.
[[nodiscard]] const CurveFacts* FindCurve(std::string_view name);

} // namespace ccrypto

/// A key on a curve of the algorithm table: a public point and, if it is there, the private scalar, which is wiped at the end.
/// Only valid keys exist: the point is on the curve and not infinity, the scalar is from 1 to order - 1. Curves are known by their
/// ids alone; nothing here takes parameters from outside.
///
/// Points are bytes as SEC 1, 2.3.3 writes them: 04 x y, or 02 or 03 and x; for X25519 and X448 they are the 32 and 56 bytes of
/// RFC 7748. Scalars are big-endian and exactly orderBytes long; for X25519 and X448 they are the bytes of RFC 7748 as given.
///
/// What takes a private scalar takes the same time for all scalars of a curve; verification does not.
class CCryptoEC {
public:
    /// A new pair; scalars are drawn until one fits (FIPS 186-5, A.2.2). \return null, logged, for an unknown curve and when
    /// there are no random bytes.
    [[nodiscard]] static std::unique_ptr<CCryptoEC> Generate(ccrypto::algorithm::Id curve,
                                                             ICryptoRandom& random = ICryptoRandom::Instance());
    /// The pair of this scalar; the point is computed. \return null, logged, for a wrong length and for 0 or the order and above.
    [[nodiscard]] static std::unique_ptr<CCryptoEC> FromPrivate(ccrypto::algorithm::Id curve, std::span<const std::uint8_t> scalar);
    /// The same for a point that came with the scalar. \return null, logged, as above and when the point is not the scalar's.
    [[nodiscard]] static std::unique_ptr<CCryptoEC> FromPrivate(ccrypto::algorithm::Id curve, std::span<const std::uint8_t> scalar,
                                                                std::span<const std::uint8_t> point);
    /// A public key. \return null, logged, for a wrong length or form, a coordinate that is not below the prime, infinity, a point
    /// off the curve, and a point of X25519 or X448 that agrees on nothing but zeros.
    [[nodiscard]] static std::unique_ptr<CCryptoEC> FromPublic(ccrypto::algorithm::Id curve, std::span<const std::uint8_t> point);

    CCryptoEC(const CCryptoEC&) = delete;
    CCryptoEC& operator=(const CCryptoEC&) = delete;

    [[nodiscard]] const ccrypto::CurveFacts& curve() const { return facts_; }
    [[nodiscard]] bool hasPrivate() const { return hasPrivate_; }
    /// `compressed` is ignored for X25519 and X448.
    [[nodiscard]] element publicPoint(bool compressed = false) const;
    /// Empty when there is none.
    [[nodiscard]] element privateScalar() const;
    /// A key of the point alone.
    [[nodiscard]] std::unique_ptr<CCryptoEC> publicHalf() const;
    /// True when both are of one curve and one point.
    [[nodiscard]] bool samePublic(const CCryptoEC& other) const;

    /// ECDSA over the digest of a message (FIPS 186-5, 6.4.1): of one that is longer than the order, the first bits are taken.
    /// The nonce is derived from scalar, digest and fresh random bytes (RFC 6979, 3.6), so that neither a bad source nor a fault
    /// that repeats the digest gives the key away. \return empty, logged, without a private scalar, for X25519 and X448, for a
    /// digest of no or more than 64 bytes, when there are no random bytes, and when the signature does not verify: it is checked
    /// before it leaves, since a faulty one can give the key away.
    [[nodiscard]] element signHash(std::span<const std::uint8_t> digest, ccrypto::SignatureForm form,
                                   ICryptoRandom& random = ICryptoRandom::Instance()) const;
    /// Without random bytes: RFC 6979 unchanged, with HMAC over the hash of this id, which is the digest's own. For tests and for
    /// callers that must reproduce signatures. \return empty, logged, as above and for a digest of another length than the hash's.
    [[nodiscard]] element signHashDeterministically(std::span<const std::uint8_t> digest, ccrypto::SignatureForm form,
                                                    ccrypto::algorithm::Id hash) const;
    /// \return false, logged, when the signature is not one of this key over this digest, for whatever reason.
    [[nodiscard]] bool verifyHash(std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature,
                                  ccrypto::SignatureForm form) const;

    /// The x coordinate of scalar times `point` (SP 800-56A, 5.7.1.2), fieldBytes long; for X25519 and X448 the result of RFC 7748.
    /// \return empty, logged, without a private scalar, when FromPublic would refuse the point, and for a result of all zeros of
    /// X25519 or X448.
    [[nodiscard]] element agree(std::span<const std::uint8_t> point) const;

private:
    static constexpr std::size_t maxBytes = 72;
    using Padded = std::array<std::uint8_t, maxBytes>;

    explicit CCryptoEC(const ccrypto::CurveFacts& facts) : facts_(facts) {}

    [[nodiscard]] element sign(std::span<const std::uint8_t> digest, ccrypto::SignatureForm form, ccrypto::algorithm::Id hash,
                               std::span<const std::uint8_t> fresh) const;
    bool setPoint(std::span<const std::uint8_t> point);
    bool setScalar(std::span<const std::uint8_t> scalar);

    const ccrypto::CurveFacts& facts_;
    bool hasPrivate_ = false;
    /// Coordinates, big-endian and fieldBytes long; of X25519 and X448 the point is x.
    Padded x_{};
    Padded y_{};
    ccrypto::Wiped<Padded> scalar_{};
    /// What signatures are checked with.
    ccrypto::Wiped<Padded> scalarCopy_{};
};
