#pragma once

#include "core/base/algorithm.h"

#include <cstdint>
#include <span>

namespace ccrypto {

/// The operations of keys on a Weierstrass curve. Numbers are big-endian bytes: coordinates fieldBytes long, numbers modulo the
/// order orderBytes long (CurveFacts). Unless it says otherwise, the time does not depend on the values.
class CurveArithmetic {
public:
    using Bytes = std::span<const std::uint8_t>;
    using Target = std::span<std::uint8_t>;
    struct Coordinates {
        Bytes x, y;
    };

    /// Null for an id that is not that of a Weierstrass curve.
    [[nodiscard]] static const CurveArithmetic* Of(algorithm::Id curve);

    virtual ~CurveArithmetic() = default;

    /// True when the coordinates are below the prime and the point is on the curve. The answer is public.
    [[nodiscard]] virtual bool isPoint(Bytes x, Bytes y) const = 0;
    /// The y of that parity for an x, both public. \return false when x is not below the prime or no point has it.
    [[nodiscard]] virtual bool findY(Target y, Bytes x, bool odd) const = 0;
    /// True when the number is from 1 to order - 1. The answer is public, the number is not.
    [[nodiscard]] virtual bool isScalar(Bytes number) const = 0;

    /// scalar times the base point.
    virtual void multiplyBase(Target x, Target y, Bytes scalar) const = 0;
    /// scalar times a point of the curve.
    virtual void multiply(Target x, Target y, Bytes pointX, Bytes pointY, Bytes scalar) const = 0;

    /// The sum of two points of the curve. \return false when it is infinity, which is public; the target then has no meaning.
    [[nodiscard]] virtual bool add(Target x, Target y, const Coordinates& left, const Coordinates& right) const = 0;

    /// The number of a digest, which may be of any length: its first bits, as many as the order has (FIPS 186-5, 6.4.1), modulo the
    /// order.
    virtual void digestToNumber(Target number, Bytes digest) const = 0;
    /// The first bits of `bits` as a number, as above, but not taken modulo the order (bits2int of RFC 6979).
    virtual void bitsToNumber(Target number, Bytes bits) const = 0;
    /// ECDSA with this scalar as nonce. \return false when r or s is 0, which is public: another nonce is needed.
    [[nodiscard]] virtual bool sign(Target r, Target s, Bytes digest, Bytes key, Bytes nonce) const = 0;
    /// Whether r and s are the signature over the digest with this key and this nonce: what verify() says of it, but for the owner
    /// of the key, who finds it out in less time. The answer is public.
    ///
    /// It notices a fault in anything that sign() computed: s * nonce is digest + r * key modulo the order, and r is the x of
    /// order - nonce times the base point, that is of the point opposite to sign()'s, which other entries of the table add up to.
    /// It does not notice a nonce that was wrong before sign() began, since that makes a signature as good as any.
    /// \return false, too, where x is not below the order, which has a chance below 2^-54 on all curves.
    [[nodiscard]] virtual bool isOwnSignature(Bytes digest, Bytes r, Bytes s, Bytes key, Bytes nonce) const = 0;
    /// For a point of the curve. All arguments are public; r and s may be any numbers.
    [[nodiscard]] virtual bool verify(Bytes digest, Bytes r, Bytes s, Bytes x, Bytes y) const = 0;
};

} // namespace ccrypto
