#pragma once

#include "core/memory/wiped.h"
#include "crypto/ec/curve_domains.h"
#include "crypto/ec/point_multiples.h"
#include "crypto/ec/signed_window.h"

#include <cstdlib>
#include <memory>
#include <vector>

namespace ccrypto {

/// What JacobianPoints needs of a field besides its sums and products, for one whose numbers are in Montgomery form.
template <auto& domain>
struct MontgomeryForm {
    using Element = std::remove_cvref_t<decltype(domain.a)>;
    static constexpr std::size_t limbCount = std::tuple_size_v<Element>;
    static constexpr MontgomeryField<limbCount> field{domain.p};

    static const Element& one() { return field.one(); }
    static Element enter(const Element& number) { return field.enter(number); }
    static Element leave(const Element& number) { return field.leave(number); }
    static Element invert(const Element& number) { return field.invert(number); }
    static Element half(const Element& number) { return field.half(number); }
};

/// Multiples of points of a curve with a = -3 over a field that is given as a type, so that its products can be written for it:
///     Field::limbCount  Field::multiply  square  add  subtract  twice  half  one  enter  leave  invert
/// (all static, on numbers in the field's own form, which enter() and leave() convert; each number has one form only). Coordinates
/// are Jacobian. Their sums have exceptions, which these loops cannot meet but where they say so.
///
/// Multiples of other points take digits of `width` bits, which some orders do not allow (see addMasked).
///
/// Multiples of the base point come out of a table of all digits at all places, `baseWidth` bits each, which is computed when it is
/// first needed.
template <typename Field, auto& domain, std::size_t baseWidth, std::size_t width = 5>
class JacobianPoints final : public PointMultiples<Field::limbCount> {
public:
    static constexpr std::size_t N = Field::limbCount;
    using Affine = AffinePoint<N>;

    JacobianPoints() { fillTable(); }

    void multiplyBase(Affine& result, const Limbs<N>& scalar) const override
    {
        Wiped<Point> sum{};
        addBaseMultiple(sum, scalar);
        leave(result, sum);
    }

    bool isBaseMultiple(const Limbs<N>& x, const Limbs<N>& scalar) const override
    {
        Wiped<Point> sum{};
        addBaseMultiple(sum, scalar);
        const Wiped<Element> expected{Field::multiply(Field::enter(x), Field::square(sum.z))};
        // A sum that a fault made infinity would equal anything.
        return constant_time::Declassify(fixed_limbs::Equal(expected, sum.x) & ~fixed_limbs::IsZero(sum.z)) != 0;
    }

    void multiply(Affine& result, const Affine& point, const Limbs<N>& scalar) const override
    {
        Wiped<Multiples> table;
        fillMultiples(table, point);
        Wiped<Point> sum{};
        Wiped<Point> entry{};
        for (std::size_t i = digits; i-- > 0;) {
            for (std::size_t j = 0; j < width && i + 1 != digits; ++j)
                static_cast<Point&>(sum) = twice(sum);
            const SignedDigit digit = SignedDigitAt(scalar, i, width);
            for (std::size_t each = 0; each < table.size(); ++each)
                assignIf(entry, constant_time::Mask::Equal(each + 1, digit.magnitude).word(), table[each]);
            entry.y = fixed_limbs::Select(digit.negative, Field::subtract(Element{}, entry.y), entry.y);
            addMasked(sum, entry, constant_time::Mask::IsZero(digit.magnitude).word());
        }
        leave(result, sum);
    }

    bool multiplyAndAdd(Affine& result, const Limbs<N>& baseScalar, const Affine& point, const Limbs<N>& scalar) const override
    {
        const OddMultiples table = oddMultiples(point);
        std::array<std::int8_t, 64 * N + 1> sparse;
        SparseDigits<N>(sparse, scalar);
        Point sum{};
        for (std::size_t i = sparse.size(); i-- > 0;) {
            sum = fixed_limbs::IsZero(sum.z) != 0 ? sum : twice(sum);
            if (sparse[i] != 0)
                addKnown(sum, negatedIf(table[static_cast<std::size_t>(std::abs(sparse[i]) / 2)],
                                        sparse[i] < 0 ? ~std::uint64_t{0} : 0));
        }
        for (std::size_t i = 0; i < baseDigits; ++i) {
            const SignedDigit digit = SignedDigitAt(baseScalar, i, baseWidth);
            if (digit.magnitude != 0) {
                const Affine& entry = table_[i * baseMax + digit.magnitude - 1];
                addKnown(sum, negatedIf(Point{entry.x, entry.y, Field::one()}, digit.negative));
            }
        }
        if (fixed_limbs::IsZero(sum.z) != 0)
            return false;
        leave(result, sum);
        return true;
    }

private:
    using Element = Limbs<N>;
    static constexpr std::size_t maxDigit = 1u << (width - 1);
    static constexpr std::size_t digits = SignedDigitCount(domain.n.bits, width);
    static constexpr std::size_t baseMax = 1u << (baseWidth - 1);
    static constexpr std::size_t baseDigits = SignedDigitCount(domain.n.bits, baseWidth);

    /// (x / z^2, y / z^3); z = 0 is infinity.
    struct Point {
        Element x, y, z;
    };
    /// A point times 1 to `maxDigit`.
    using Multiples = std::array<Point, maxDigit>;

    /// A point times 1, 3, 5 to 15, for the digits of SparseDigits.
    using OddMultiples = std::array<Point, 8>;

    /// For a sum that is infinity so far.
    void addBaseMultiple(Point& sum, const Limbs<N>& scalar) const
    {
        Wiped<Affine> entry{};
        for (std::size_t i = 0; i < baseDigits; ++i) {
            const SignedDigit digit = SignedDigitAt(scalar, i, baseWidth);
            SelectEntry<baseMax>(static_cast<Affine&>(entry), &table_[i * baseMax], digit.magnitude);
            entry.y = fixed_limbs::Select(digit.negative, Field::subtract(Element{}, entry.y), entry.y);
            addMasked(sum, entry, fixed_limbs::Opaque(constant_time::Mask::IsZero(digit.magnitude).word()));
        }
    }

    [[gnu::noinline]] static void assignIf(Point& target, std::uint64_t mask, const Point& source)
    {
        target.x = fixed_limbs::Select(mask, source.x, target.x);
        target.y = fixed_limbs::Select(mask, source.y, target.y);
        target.z = fixed_limbs::Select(mask, source.z, target.z);
    }

    [[gnu::noinline]] static Point negatedIf(const Point& point, std::uint64_t mask)
    {
        return {point.x, fixed_limbs::Select(mask, Field::subtract(Element{}, point.y), point.y), point.z};
    }

    /// Infinity stays infinity.
    [[gnu::noinline]] static Point twice(const Point& p)
    {
        const Element zz = Field::square(p.z);
        const Element twoY = Field::twice(p.y);
        const Element fourYY = Field::square(twoY);
        const Element s = Field::multiply(fourYY, p.x);
        const Element difference = Field::multiply(Field::subtract(p.x, zz), Field::add(p.x, zz));
        const Element slope = Field::add(Field::twice(difference), difference);
        Point r;
        r.z = Field::multiply(twoY, p.z);
        r.x = Field::subtract(Field::square(slope), Field::twice(s));
        r.y = Field::subtract(Field::multiply(slope, Field::subtract(s, r.x)), Field::half(Field::square(fourYY)));
        return r;
    }

    /// What the sum of two points begins with; both differences are zero when the points are the same.
    struct Differences {
        Element x1, y1; ///< of the first point, over the common denominator
        Element x;      ///< x2 - x1
        Element y;      ///< y2 - y1
        Element z;      ///< the product of both
    };

    [[gnu::noinline]] static Differences difference(const Point& p, const Point& q)
    {
        const Element zzP = Field::square(p.z);
        const Element zzQ = Field::square(q.z);
        Differences d;
        d.x1 = Field::multiply(p.x, zzQ);
        d.y1 = Field::multiply(p.y, Field::multiply(zzQ, q.z));
        d.x = Field::subtract(Field::multiply(q.x, zzP), d.x1);
        d.y = Field::subtract(Field::multiply(q.y, Field::multiply(zzP, p.z)), d.y1);
        d.z = Field::multiply(p.z, q.z);
        return d;
    }

    [[gnu::noinline]] static Differences difference(const Point& p, const Affine& q)
    {
        const Element zzP = Field::square(p.z);
        return {p.x, p.y, Field::subtract(Field::multiply(q.x, zzP), p.x),
                Field::subtract(Field::multiply(q.y, Field::multiply(zzP, p.z)), p.y), p.z};
    }

    [[gnu::noinline]] static Point sumOf(const Differences& d)
    {
        const Element square = Field::square(d.x);
        const Element cube = Field::multiply(square, d.x);
        const Element v = Field::multiply(d.x1, square);
        Point r;
        r.z = Field::multiply(d.z, d.x);
        r.x = Field::subtract(Field::subtract(Field::square(d.y), cube), Field::twice(v));
        r.y = Field::subtract(Field::multiply(d.y, Field::subtract(v, r.x)), Field::multiply(d.y1, cube));
        return r;
    }

    /// sum += entry, unless `skip` is all ones.
    ///
    /// Here the two are never the same or opposite. The digits below place i make at most 2^(baseWidth * i - 1), in which the
    /// digit at place i is at least 1, so neither their sum nor their difference is 0. Nor is it the order n: below the last place
    /// since it is too small. At the last one the sum is the scalar itself, which is below n; and for the difference to be n, what
    /// the digits below make would be negative and n that much above a multiple of 2^(baseWidth * i), while all of the bits that n
    /// has there and some 30 below them are ones.
    static void addMasked(Point& sum, const Affine& entry, std::uint64_t skip)
    {
        const std::uint64_t empty = fixed_limbs::IsZero(sum.z);
        Point r = sumOf(difference(sum, entry));
        r.x = fixed_limbs::Select(empty, entry.x, r.x);
        r.y = fixed_limbs::Select(empty, entry.y, r.y);
        r.z = fixed_limbs::Select(empty, Field::one(), r.z);
        assignIf(sum, ~skip, r);
    }

    /// The same for any multiple. The sum so far is 2^width times a number that is not negative, so only at the last digit d it
    /// comes near the order n. The two are opposite for the scalars 0 and n alone, which there are not, and they would be the same
    /// if n were that sum and |d|, for a d below 0; but then n modulo 2^width would be a digit.
    static_assert(domain.n.value[0] % (2 * maxDigit) > maxDigit);
    static void addMasked(Point& sum, const Point& entry, std::uint64_t skip)
    {
        const std::uint64_t empty = fixed_limbs::IsZero(sum.z);
        Point r = sumOf(difference(sum, entry));
        assignIf(r, empty, entry);
        assignIf(sum, ~skip, r);
    }

    /// For points that may be known: any two.
    static void addKnown(Point& sum, const Point& entry)
    {
        if (fixed_limbs::IsZero(sum.z) != 0) {
            sum = entry;
            return;
        }
        const Differences d = entry.z == Field::one() ? difference(sum, Affine{entry.x, entry.y}) : difference(sum, entry);
        if (fixed_limbs::IsZero(d.x) != 0 && fixed_limbs::IsZero(d.y) != 0)
            sum = twice(entry);
        else
            sum = sumOf(d);
    }

    static void fillMultiples(Multiples& table, const Affine& point)
    {
        const Affine entered = {Field::enter(point.x), Field::enter(point.y)};
        table[0] = {entered.x, entered.y, Field::one()};
        for (std::size_t i = 2; i <= maxDigit; ++i)
            table[i - 1] = i % 2 == 0 ? twice(table[i / 2 - 1]) : sumOf(difference(table[i - 2], entered));
    }

    static OddMultiples oddMultiples(const Affine& point)
    {
        OddMultiples table;
        table[0] = {Field::enter(point.x), Field::enter(point.y), Field::one()};
        const Point two = twice(table[0]);
        for (std::size_t i = 1; i < table.size(); ++i)
            table[i] = sumOf(difference(table[i - 1], two));
        return table;
    }

    void fillTable()
    {
        std::vector<Point> points;
        points.reserve(baseDigits * baseMax);
        Point first = {Field::enter(domain.x), Field::enter(domain.y), Field::one()};
        for (std::size_t i = 0; i < baseDigits; ++i) {
            points.push_back(first);
            for (std::size_t each = 2; each <= baseMax; ++each)
                points.push_back(each % 2 == 0 ? twice(points[i * baseMax + each / 2 - 1])
                                               : sumOf(difference(points.back(), first)));
            first = twice(points.back());
        }
        // One inversion for all: of the product of all z, from which each is taken off in turn.
        std::vector<Element> products(points.size());
        Element product = Field::one();
        for (std::size_t i = 0; i < points.size(); ++i) {
            products[i] = product;
            product = Field::multiply(product, points[i].z);
        }
        Element inverse = Field::invert(product);
        table_.reset(new Affine[points.size()]);
        for (std::size_t i = points.size(); i-- > 0;) {
            const Element own = Field::multiply(inverse, products[i]);
            inverse = Field::multiply(inverse, points[i].z);
            const Element square = Field::square(own);
            table_[i] = {Field::multiply(points[i].x, square), Field::multiply(points[i].y, Field::multiply(square, own))};
        }
    }

    static void leave(Affine& result, const Point& point)
    {
        Wiped<Element> inverse{Field::invert(point.z)};
        Wiped<Element> square{Field::square(inverse)};
        result.x = Field::leave(Field::multiply(point.x, square));
        result.y = Field::leave(Field::multiply(point.y, Field::multiply(square, inverse)));
    }

    std::unique_ptr<Affine[]> table_;
};

} // namespace ccrypto
