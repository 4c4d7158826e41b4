#pragma once

#include "core/memory/wiped.h"
#include "crypto/ec/signed_window.h"
#include "crypto/ec/square_root.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

namespace ccrypto::internal {

/// Points of the curve a * x^2 + y^2 = 1 + d * x^2 * y^2 of EdDSA, with a = 1 or -1 (RFC 8032, 5.1 and 5.2). The formulas for
/// their sums have no exceptions ("Twisted Edwards curves", 2008, section 6), so there is no case that a secret scalar could lead
/// to. Curve gives
///     N (limbs of a number)  Field (as for MontgomeryLadder)  aIsOne  prime  order  d  x  y (of the base point)  pointBytes
template <typename Curve>
class EdwardsPoints {
public:
    static constexpr std::size_t N = Curve::N;
    using Field = typename Curve::Field;
    using Element = typename Field::Element;
    using Encoded = std::array<std::uint8_t, Curve::pointBytes>;

    /// (x / z, y / z)
    struct Point {
        Element x, y, z;
    };

    EdwardsPoints() : d_(loaded(Curve::d)) { fillTable(); }

    /// scalar times the base point. The scalar is below the order; the time does not depend on it.
    void multiplyBase(Point& result, const ccrypto::Limbs<N>& scalar) const
    {
        result = neutral();
        ccrypto::Wiped<Affine> entry{};
        for (std::size_t i = 0; i < digits; ++i) {
            const ccrypto::SignedDigit digit = ccrypto::SignedDigitAt(scalar, i, width);
            selectEntry(entry, i, digit);
            result = add(result, entry);
        }
    }

    /// baseScalar times the base point less scalar times `point`, all of which may be known; scalars are below the order.
    Point multiplyAndSubtract(const ccrypto::Limbs<N>& baseScalar, const Point& point, const ccrypto::Limbs<N>& scalar) const
    {
        std::array<Point, 8> table; // the point times 1, 3, 5 to 15
        table[0] = point;
        const Point two = twice(point);
        for (std::size_t i = 1; i < table.size(); ++i)
            table[i] = add(table[i - 1], two);

        std::array<std::int8_t, 64 * N + 1> sparse;
        ccrypto::SparseDigits<N>(sparse, scalar);
        Point sum = neutral();
        for (std::size_t i = sparse.size(); i-- > 0;) {
            sum = twice(sum);
            if (sparse[i] != 0) {
                const Point& entry = table[static_cast<std::size_t>(std::abs(sparse[i]) / 2)];
                sum = add(sum, sparse[i] < 0 ? entry : Point{Field::subtract(Element{}, entry.x), entry.y, entry.z});
            }
        }
        Affine entry{};
        for (std::size_t i = 0; i < digits; ++i) {
            selectEntry(entry, i, ccrypto::SignedDigitAt(baseScalar, i, width));
            sum = add(sum, entry);
        }
        return sum;
    }

    /// True when the order of the point divides 8. Four times such a point is the neutral one or that of order 2, whose x is 0.
    [[nodiscard]] static bool isOfLowOrder(const Point& point) { return IsZero(twice(twice(point)).x); }

    /// The bytes of a point: y, and the lowest bit of x as the highest bit (RFC 8032, 5.1.2).
    static void encode(Encoded& bytes, const Point& point)
    {
        const ccrypto::Wiped<Element> inverse{Field::invert(point.z)};
        ccrypto::Wiped<std::array<std::uint8_t, Field::bytes>> x;
        Field::store(x.data(), Field::multiply(point.x, inverse));
        bytes.back() = 0;
        Field::store(bytes.data(), Field::multiply(point.y, inverse));
        bytes.back() = static_cast<std::uint8_t>(bytes.back() | (x[0] & 1) << 7);
    }

    /// \return false unless the bytes are those of a point exactly: with a y below the prime and no bit set that means nothing. A
    /// point whose x is 0 is refused as well. Everything may be known.
    [[nodiscard]] static bool decode(Point& point, const Encoded& bytes)
    {
        Encoded yBytes = bytes;
        const unsigned odd = yBytes.back() >> 7;
        yBytes.back() &= 0x7F;
        if constexpr (Curve::pointBytes > Field::bytes)
            if (yBytes.back() != 0)
                return false;
        ccrypto::Limbs<N> y{};
        std::memcpy(y.data(), yBytes.data(), Field::bytes);
        ccrypto::Limbs<N> difference;
        if (ccrypto::fixed_limbs::Subtract(difference, y, Curve::prime.value) == 0)
            return false;

        // x^2 = (y^2 - 1) / (d * y^2 - a), whose denominator is never 0.
        static const ccrypto::MontgomeryField<N> field(Curve::prime);
        static const ccrypto::SquareRoot<N> root(field);
        const ccrypto::Limbs<N> square = field.square(field.enter(y));
        const ccrypto::Limbs<N> product = field.multiply(field.enter(Curve::d), square);
        const ccrypto::Limbs<N> denominator =
            Curve::aIsOne ? field.subtract(product, field.one()) : field.add(product, field.one());
        ccrypto::Limbs<N> x;
        if (!root.find(x, field.multiply(field.subtract(square, field.one()), field.invert(denominator))))
            return false;
        ccrypto::Limbs<N> plain = field.leave(x);
        if ((plain[0] & 1) != odd)
            plain = field.leave(field.negate(x));
        point = {loaded(plain), loaded(y), Element{1}};
        return true;
    }

private:
    static constexpr std::size_t width = 5;
    static constexpr std::size_t maxDigit = 1u << (width - 1);
    static constexpr std::size_t digits = ccrypto::SignedDigitCount(Curve::order.bits, width);

    struct Affine {
        Element x, y;
    };

    static Point neutral() { return {Element{}, Element{1}, Element{1}}; }
    static Element loaded(const ccrypto::Limbs<N>& number)
    {
        std::array<std::uint8_t, Field::bytes> bytes;
        std::memcpy(bytes.data(), number.data(), bytes.size());
        return Field::load(bytes.data());
    }
    static bool IsZero(const Element& number)
    {
        std::array<std::uint8_t, Field::bytes> bytes;
        Field::store(bytes.data(), number);
        return bytes == std::array<std::uint8_t, Field::bytes>{};
    }

    /// y^2 - a * x^2 of a product of each.
    static Element difference(const Element& yy, const Element& xx)
    {
        return Curve::aIsOne ? Field::subtract(yy, xx) : Field::add(yy, xx);
    }

    [[gnu::noinline]] Point add(const Point& p, const Point& q) const { return sumOf(p, q.x, q.y, Field::multiply(p.z, q.z)); }
    [[gnu::noinline]] Point add(const Point& p, const Affine& q) const { return sumOf(p, q.x, q.y, p.z); }

    /// The sum of p and a point; z is the product of both denominators.
    [[gnu::always_inline]] Point sumOf(const Point& p, const Element& x, const Element& y, const Element& z) const
    {
        const Element zz = Field::square(z);
        const Element xx = Field::multiply(p.x, x);
        const Element yy = Field::multiply(p.y, y);
        const Element rest = Field::multiply(d_, Field::multiply(xx, yy));
        const Element less = Field::subtract(zz, rest);
        const Element more = Field::add(zz, rest);
        const Element cross = Field::subtract(Field::multiply(Field::add(p.x, p.y), Field::add(x, y)), Field::add(xx, yy));
        return {Field::multiply(Field::multiply(z, less), cross), Field::multiply(Field::multiply(z, more), difference(yy, xx)),
                Field::multiply(less, more)};
    }

    [[gnu::noinline]] static Point twice(const Point& p)
    {
        const Element xx = Field::square(p.x);
        const Element yy = Field::square(p.y);
        const Element zz = Field::square(p.z);
        const Element both = Field::add(xx, yy);
        const Element cross = Field::subtract(Field::square(Field::add(p.x, p.y)), both);
        const Element twoZz = Field::add(zz, zz);
        if constexpr (Curve::aIsOne) {
            const Element rest = Field::subtract(both, twoZz);
            return {Field::multiply(cross, rest), Field::multiply(both, Field::subtract(xx, yy)), Field::multiply(both, rest)};
        } else {
            const Element rest = Field::subtract(yy, Field::add(xx, twoZz));
            const Element sum = Field::subtract(yy, xx);
            return {Field::multiply(cross, rest), Field::multiply(Field::subtract(xx, yy), both), Field::multiply(sum, rest)};
        }
    }

    /// The entry at place i of that digit, the neutral point for 0; reads all of them.
    void selectEntry(Affine& entry, std::size_t i, const ccrypto::SignedDigit& digit) const
    {
        entry = {Element{}, Element{1}};
        for (std::size_t each = 0; each < maxDigit; ++each) {
            const std::uint64_t mask = ccrypto::constant_time::Mask::Equal(each + 1, digit.magnitude).word();
            const Affine& source = table_[i * maxDigit + each];
            entry.x = ccrypto::fixed_limbs::Select(mask, source.x, entry.x);
            entry.y = ccrypto::fixed_limbs::Select(mask, source.y, entry.y);
        }
        entry.x = ccrypto::fixed_limbs::Select(digit.negative, Field::subtract(Element{}, entry.x), entry.x);
    }

    void fillTable()
    {
        table_.reset(new Affine[digits * maxDigit]);
        Point first = {loaded(Curve::x), loaded(Curve::y), Element{1}};
        for (std::size_t i = 0; i < digits; ++i) {
            Point multiple = first;
            for (std::size_t each = 0; each < maxDigit; ++each) {
                const Element inverse = Field::invert(multiple.z);
                table_[i * maxDigit + each] = {canonical(Field::multiply(multiple.x, inverse)),
                                               canonical(Field::multiply(multiple.y, inverse))};
                if (each + 1 < maxDigit)
                    multiple = add(multiple, first);
            }
            first = twice(multiple);
        }
    }
    static Element canonical(const Element& number)
    {
        std::array<std::uint8_t, Field::bytes> bytes;
        Field::store(bytes.data(), number);
        return Field::load(bytes.data());
    }

    Element d_;
    std::unique_ptr<Affine[]> table_;
};

} // namespace ccrypto::internal
