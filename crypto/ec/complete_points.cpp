#include "crypto/ec/complete_points.h"

#include "core/memory/wiped.h"

namespace ccrypto {

template <std::size_t N>
CompletePoints<N>::CompletePoints(const CurveDomain<N>& domain)
    : domain_(domain), field_(domain.p), a_(field_.enter(domain.a)), aIsMinusThree_(a_ == field_.negate(tripled(field_.one()))),
      b3_(tripled(field_.enter(domain.b))), ofBase_(tablesOfBase())
{
}

template <std::size_t N>
CompletePoints<N>::Table::Table(const CompletePoints& curve, const Point& point)
{
    multiples[0] = curve.infinity();
    for (std::size_t i = 1; i <= maxDigit; ++i)
        multiples[i] = curve.add(multiples[i - 1], point);
}

template <std::size_t N>
std::vector<typename CompletePoints<N>::Table> CompletePoints<N>::tablesOfBase() const
{
    std::vector<Table> tables;
    Point first = entered({domain_.x, domain_.y});
    for (std::size_t i = 0; i < digitCount(); ++i) {
        const Point& last = tables.emplace_back(*this, first).multiples.back();
        first = add(last, last);
    }
    return tables;
}

template <std::size_t N>
void CompletePoints<N>::addBaseMultiple(Point& sum, const Limbs<N>& scalar) const
{
    Wiped<Point> chosen{};
    for (std::size_t i = 0; i < digitCount(); ++i) {
        select(chosen, ofBase_[i], SignedDigitAt(scalar, i, width));
        sum = add(sum, chosen);
    }
}

template <std::size_t N>
void CompletePoints<N>::multiplyBase(AffinePoint<N>& result, const Limbs<N>& scalar) const
{
    Wiped<Point> sum{infinity()};
    addBaseMultiple(sum, scalar);
    leave(result, sum);
}

template <std::size_t N>
bool CompletePoints<N>::isBaseMultiple(const Limbs<N>& x, const Limbs<N>& scalar) const
{
    Wiped<Point> sum{infinity()};
    addBaseMultiple(sum, scalar);
    const Wiped<Element> expected{field_.multiply(field_.enter(x), sum.z)};
    // A sum that a fault made infinity would equal anything.
    return constant_time::Declassify(fixed_limbs::Equal(expected, sum.x) & ~fixed_limbs::IsZero(sum.z)) != 0;
}

template <std::size_t N>
void CompletePoints<N>::multiply(AffinePoint<N>& result, const AffinePoint<N>& point, const Limbs<N>& scalar) const
{
    const Table table(*this, entered(point));
    Wiped<Point> sum{infinity()};
    Wiped<Point> chosen{};
    for (std::size_t i = digitCount(); i-- > 0;) {
        for (std::size_t j = 0; j < width && i + 1 != digitCount(); ++j)
            static_cast<Point&>(sum) = add(sum, sum);
        select(chosen, table, SignedDigitAt(scalar, i, width));
        static_cast<Point&>(sum) = add(sum, chosen);
    }
    leave(result, sum);
}

template <std::size_t N>
bool CompletePoints<N>::multiplyAndAdd(AffinePoint<N>& result, const Limbs<N>& baseScalar, const AffinePoint<N>& point,
                                       const Limbs<N>& scalar) const
{
    const Table ofPoint(*this, entered(point));
    Point sum = infinity();
    for (std::size_t i = digitCount(); i-- > 0;) {
        for (std::size_t j = 0; j < width && i + 1 != digitCount(); ++j)
            sum = add(sum, sum);
        addDigit(sum, ofPoint, SignedDigitAt(scalar, i, width));
    }
    for (std::size_t i = 0; i < digitCount(); ++i)
        addDigit(sum, ofBase_[i], SignedDigitAt(baseScalar, i, width));
    if (fixed_limbs::IsZero(sum.z) != 0)
        return false;
    leave(result, sum);
    return true;
}

template <std::size_t N>
typename CompletePoints<N>::Element CompletePoints<N>::timesA(const Element& number) const
{
    return aIsMinusThree_ ? field_.negate(tripled(number)) : field_.multiply(a_, number);
}

template <std::size_t N>
typename CompletePoints<N>::Point CompletePoints<N>::add(const Point& p, const Point& q) const
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

template <std::size_t N>
void CompletePoints<N>::select(Point& chosen, const Table& table, const SignedDigit& digit) const
{
    for (std::size_t entry = 0; entry <= maxDigit; ++entry) {
        const std::uint64_t mask = constant_time::Mask::Equal(entry, digit.magnitude).word();
        chosen.x = fixed_limbs::Select(mask, table.multiples[entry].x, chosen.x);
        chosen.y = fixed_limbs::Select(mask, table.multiples[entry].y, chosen.y);
        chosen.z = fixed_limbs::Select(mask, table.multiples[entry].z, chosen.z);
    }
    chosen.y = fixed_limbs::Select(digit.negative, field_.negate(chosen.y), chosen.y);
}

template <std::size_t N>
void CompletePoints<N>::addDigit(Point& sum, const Table& table, const SignedDigit& digit) const
{
    if (digit.magnitude == 0)
        return;
    Point chosen = table.multiples[digit.magnitude];
    if (digit.negative != 0)
        chosen.y = field_.negate(chosen.y);
    sum = add(sum, chosen);
}

template <std::size_t N>
void CompletePoints<N>::leave(AffinePoint<N>& result, const Point& point) const
{
    const Wiped<Element> inverse{field_.invert(point.z)};
    result.x = field_.leave(field_.multiply(point.x, inverse));
    result.y = field_.leave(field_.multiply(point.y, inverse));
}

template class CompletePoints<2>;
template class CompletePoints<3>;
template class CompletePoints<4>;
template class CompletePoints<5>;
template class CompletePoints<6>;
template class CompletePoints<8>;
template class CompletePoints<9>;

} // namespace ccrypto
