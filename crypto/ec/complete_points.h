#pragma once

#include "crypto/ec/curve_domains.h"
#include "crypto/ec/point_multiples.h"
#include "crypto/ec/signed_window.h"

#include <vector>

namespace ccrypto {

/// Multiples of points by formulas without exceptions (Renes, Costello and Batina, "Complete addition formulas for prime order
/// elliptic curves", 2015, algorithm 1): infinity, doublings and opposite points are added like any other, so there is no case that
/// a secret scalar could lead to. N is one of those of the curves.
template <std::size_t N>
class CompletePoints final : public PointMultiples<N> {
public:
    /// The domain is not owned.
    explicit CompletePoints(const CurveDomain<N>& domain);

    void multiplyBase(AffinePoint<N>& result, const Limbs<N>& scalar) const override;
    bool isBaseMultiple(const Limbs<N>& x, const Limbs<N>& scalar) const override;
    void multiply(AffinePoint<N>& result, const AffinePoint<N>& point, const Limbs<N>& scalar) const override;
    bool multiplyAndAdd(AffinePoint<N>& result, const Limbs<N>& baseScalar, const AffinePoint<N>& point,
                        const Limbs<N>& scalar) const override;

private:
    using Element = Limbs<N>;
    static constexpr std::size_t width = 5;
    static constexpr std::size_t maxDigit = 1u << (width - 1);

    /// (x / z, y / z); (0, 1, 0) is infinity.
    struct Point {
        Element x, y, z;
    };

    /// A point times 0 to `maxDigit`.
    struct Table {
        Table(const CompletePoints& curve, const Point& point);
        std::array<Point, maxDigit + 1> multiples;
    };

    std::size_t digitCount() const { return SignedDigitCount(domain_.n.bits, width); }
    Point infinity() const { return {Element{}, field_.one(), Element{}}; }
    Point entered(const AffinePoint<N>& point) const { return {field_.enter(point.x), field_.enter(point.y), field_.one()}; }
    Element tripled(const Element& number) const { return field_.add(field_.add(number, number), number); }
    std::vector<Table> tablesOfBase() const;
    /// For a sum that is infinity so far.
    void addBaseMultiple(Point& sum, const Limbs<N>& scalar) const;
    Element timesA(const Element& number) const;
    Point add(const Point& p, const Point& q) const;
    /// The multiple that a secret digit asks for.
    void select(Point& chosen, const Table& table, const SignedDigit& digit) const;
    /// For digits that may be known.
    void addDigit(Point& sum, const Table& table, const SignedDigit& digit) const;
    void leave(AffinePoint<N>& result, const Point& point) const;

    const CurveDomain<N>& domain_;
    MontgomeryField<N> field_;
    Element a_;
    bool aIsMinusThree_;
    Element b3_;
    /// Of 2^(width * i) times the base point at place i, so that its multiples need no doublings.
    std::vector<Table> ofBase_;
};

} // namespace ccrypto
