#pragma once

#include "crypto/curve_domains.h"
#include "crypto/curve_points.h"
#include "crypto/signed_window.h"

/// Multiples of points by formulas without exceptions (Renes, Costello and Batina, "Complete addition formulas for prime order
/// elliptic curves", 2015, algorithm 1): infinity, doublings and opposite points are added like any other, so there is no case that
/// a secret scalar could lead to.
template <std::size_t N>
class CompletePoints final : public CurvePoints<N> {
public:
    /// The domain is not owned.
    explicit CompletePoints(const CurveDomain<N>& domain)
        : domain_(domain), field_(domain.p), a_(field_.enter(domain.a)),
          b3_(tripled(field_.enter(domain.b))), base_{field_.enter(domain.x), field_.enter(domain.y), field_.one()}
    {
        aIsMinusThree_ = a_ == field_.negate(tripled(field_.one()));
    }

    void multiplyBase(AffinePoint<N>& result, const Limbs<N>& scalar) const override { multiplySecret(result, base_, scalar); }

    void multiply(AffinePoint<N>& result, const AffinePoint<N>& point, const Limbs<N>& scalar) const override
    {
        multiplySecret(result, entered(point), scalar);
    }

    bool multiplyAndAdd(AffinePoint<N>& result, const Limbs<N>& baseScalar, const AffinePoint<N>& point,
                        const Limbs<N>& scalar) const override
    {
        const Table ofBase(*this, base_);
        const Table ofPoint(*this, entered(point));
        Point sum = infinity();
        for (std::size_t i = digitCount(); i-- > 0;) {
            for (std::size_t j = 0; j < width; ++j)
                sum = add(sum, sum);
            addDigit(sum, ofBase, SignedDigitAt(baseScalar, i, width));
            addDigit(sum, ofPoint, SignedDigitAt(scalar, i, width));
        }
        if (fixed_limbs::IsZero(sum.z) != 0)
            return false;
        leave(result, sum);
        return true;
    }

private:
    using Element = Limbs<N>;
    static constexpr std::size_t width = 5;
    static constexpr std::size_t most = 1u << (width - 1);

    /// (x / z, y / z); (0, 1, 0) is infinity.
    struct Point {
        Element x, y, z;
    };

    /// A point times 0 to `most`.
    struct Table {
        Table(const CompletePoints& curve, const Point& point)
        {
            multiples[0] = curve.infinity();
            for (std::size_t i = 1; i <= most; ++i)
                multiples[i] = curve.add(multiples[i - 1], point);
        }
        std::array<Point, most + 1> multiples;
    };

    std::size_t digitCount() const { return SignedDigitCount(domain_.n.bits, width); }
    Point infinity() const { return {Element{}, field_.one(), Element{}}; }
    Point entered(const AffinePoint<N>& point) const { return {field_.enter(point.x), field_.enter(point.y), field_.one()}; }
    Element tripled(const Element& number) const { return field_.add(field_.add(number, number), number); }
    Element timesA(const Element& number) const
    {
        return aIsMinusThree_ ? field_.negate(tripled(number)) : field_.multiply(a_, number);
    }

    Point add(const Point& p, const Point& q) const
    {
        const auto& f = field_;
        const Element xx = f.multiply(p.x, q.x);
        const Element yy = f.multiply(p.y, q.y);
        const Element zz = f.multiply(p.z, q.z);
        // x1 * y2 + x2 * y1, and the like of the other pairs.
        const auto cross = [&f](const Element& p1, const Element& p2, const Element& q1, const Element& q2, const Element& first,
                                const Element& second) {
            return f.subtract(f.multiply(f.add(p1, p2), f.add(q1, q2)), f.add(first, second));
        };
        const Element xy = cross(p.x, p.y, q.x, q.y, xx, yy);
        const Element xz = cross(p.x, p.z, q.x, q.z, xx, zz);
        const Element yz = cross(p.y, p.z, q.y, q.z, yy, zz);

        const Element inner = f.add(timesA(xz), f.multiply(b3_, zz));
        const Element less = f.subtract(yy, inner);
        const Element more = f.add(yy, inner);
        const Element azz = timesA(zz);
        const Element slope = f.add(tripled(xx), azz);
        const Element rest = f.add(f.multiply(b3_, xz), timesA(f.subtract(xx, azz)));
        return {f.subtract(f.multiply(xy, less), f.multiply(yz, rest)), f.add(f.multiply(less, more), f.multiply(slope, rest)),
                f.add(f.multiply(yz, more), f.multiply(xy, slope))};
    }

    /// In time that does not depend on the scalar.
    void multiplySecret(AffinePoint<N>& result, const Point& point, const Limbs<N>& scalar) const
    {
        const Table table(*this, point);
        Wiped<Point> sum{infinity()};
        Wiped<Point> chosen{};
        for (std::size_t i = digitCount(); i-- > 0;) {
            for (std::size_t j = 0; j < width; ++j)
                static_cast<Point&>(sum) = add(sum, sum);
            const SignedDigit digit = SignedDigitAt(scalar, i, width);
            for (std::size_t entry = 0; entry <= most; ++entry) {
                const std::uint64_t mask = constant_time::Mask::Equal(entry, digit.magnitude).word();
                chosen.x = fixed_limbs::Select(mask, table.multiples[entry].x, chosen.x);
                chosen.y = fixed_limbs::Select(mask, table.multiples[entry].y, chosen.y);
                chosen.z = fixed_limbs::Select(mask, table.multiples[entry].z, chosen.z);
            }
            chosen.y = fixed_limbs::Select(digit.negative, field_.negate(chosen.y), chosen.y);
            static_cast<Point&>(sum) = add(sum, chosen);
        }
        leave(result, sum);
    }

    /// For digits that may be known.
    void addDigit(Point& sum, const Table& table, const SignedDigit& digit) const
    {
        if (digit.magnitude == 0)
            return;
        Point chosen = table.multiples[digit.magnitude];
        if (digit.negative != 0)
            chosen.y = field_.negate(chosen.y);
        sum = add(sum, chosen);
    }

    void leave(AffinePoint<N>& result, const Point& point) const
    {
        const Element inverse = field_.invert(point.z);
        result.x = field_.leave(field_.multiply(point.x, inverse));
        result.y = field_.leave(field_.multiply(point.y, inverse));
    }

    const CurveDomain<N>& domain_;
    MontgomeryField<N> field_;
    Element a_;
    Element b3_;
    Point base_;
    bool aIsMinusThree_ = false;
};
