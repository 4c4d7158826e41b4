#pragma once

#include "crypto/bigint/fixed_limbs.h"

namespace ccrypto {

/// A point other than infinity. The coordinates are plain numbers below the prime, not in Montgomery form.
template <std::size_t N>
struct AffinePoint {
    Limbs<N> x;
    Limbs<N> y;
};

/// Multiples of points of one curve.
template <std::size_t N>
class PointMultiples {
public:
    virtual ~PointMultiples() = default;

    /// scalar times the base point. The scalar is from 1 to order - 1; the time does not depend on it.
    virtual void multiplyBase(AffinePoint<N>& result, const Limbs<N>& scalar) const = 0;
    /// Whether scalar times the base point has this x, which is public and below the prime, as is the answer. With a scalar as
    /// above; takes less time than multiplyBase().
    [[nodiscard]] virtual bool isBaseMultiple(const Limbs<N>& x, const Limbs<N>& scalar) const = 0;
    /// scalar times a point of the curve, with a scalar as above.
    virtual void multiply(AffinePoint<N>& result, const AffinePoint<N>& point, const Limbs<N>& scalar) const = 0;
    /// baseScalar times the base point and scalar times `point`, all of them public; scalars are below the order.
    /// \return false, with `result` untouched, when the sum is infinity.
    [[nodiscard]] virtual bool multiplyAndAdd(AffinePoint<N>& result, const Limbs<N>& baseScalar, const AffinePoint<N>& point,
                                              const Limbs<N>& scalar) const = 0;
};

} // namespace ccrypto
