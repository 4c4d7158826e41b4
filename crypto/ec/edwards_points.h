#pragma once

#include "core/memory/wiped.h"
#include "crypto/ec/montgomery_field.h"
#include "crypto/ec/signed_window.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

namespace ccrypto::internal {

/// Points of the curve a * x^2 + y^2 = 1 + d * x^2 * y^2 of EdDSA, with a = 1 or -1 (RFC 8032, 5.1 and 5.2), in extended
/// coordinates ("Twisted Edwards Curves Revisited", 2008). The formulas for their sums have no exceptions on these curves, so there
/// is no case that a secret scalar could lead to. Curve gives
///     N (limbs of a number)  Field (as for MontgomeryLadder, and its prime)  aIsOne  order  d  x  y (of the base point) pointBytes
template <typename Curve>
class EdwardsPoints {
public:
    static constexpr std::size_t N = Curve::N;
    using Field = typename Curve::Field;
    using Element = typename Field::Element;
    using Encoded = std::array<std::uint8_t, Curve::pointBytes>;

    /// (x / z, y / z); t is x * y / z, which doubling does not need.
    struct Point {
        Element x, y, z, t;
    };

    EdwardsPoints() { fillTable(); }

    /// scalar times the base point. The scalar is below the order; the time does not depend on it.
    void multiplyBase(Point& result, const ccrypto::Limbs<N>& scalar) const
    {
        result = neutral();
        ccrypto::Wiped<AffineAddend> entry{};
        for (std::size_t i = 0; i < digits; ++i) {
            selectEntry(entry, i, ccrypto::SignedDigitAt(scalar, i, width));
            result = extended(add(result, entry));
        }
    }

    /// baseScalar times the base point less scalar times `point`, all of which may be known; scalars are below the order.
    Point multiplyAndSubtract(const ccrypto::Limbs<N>& baseScalar, const Point& point, const ccrypto::Limbs<N>& scalar) const
    {
        std::array<Addend, 8> table; // the point times 1, 3, 5 to 15
        const Addend two = addendOf(extended(twice(point)));
        Point odd = point;
        for (Addend& addend : table) {
            addend = addendOf(odd);
            odd = extended(add(odd, two));
        }

        std::array<std::int8_t, 64 * N + 1> sparse;
        ccrypto::SparseDigits<N>(sparse, scalar);
        Point sum = neutral();
        for (std::size_t i = sparse.size(); i-- > 0;) {
            Sum next = twice(sum);
            if (sparse[i] != 0) {
                Addend addend = table[static_cast<std::size_t>(std::abs(sparse[i]) / 2)];
                negateIf(addend, sparse[i] > 0 ? ~std::uint64_t{0} : 0);
                next = add(extended(next), addend);
            }
            sum = i > 0 ? projective(next) : extended(next);
        }
        for (std::size_t i = 0; i < digits; ++i) {
            const ccrypto::SignedDigit digit = ccrypto::SignedDigitAt(baseScalar, i, width);
            if (digit.magnitude == 0)
                continue;
            AffineAddend entry = table_[i * maxDigit + digit.magnitude - 1];
            negateIf(entry, digit.negative);
            sum = extended(add(sum, entry));
        }
        return sum;
    }

    /// True when the order of the point divides 8. Four times such a point is the neutral one or that of order 2, whose x is 0.
    [[nodiscard]] static bool isOfLowOrder(const Point& point) { return IsZero(projective(twice(projective(twice(point)))).x); }

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
        if (ccrypto::fixed_limbs::Subtract(difference, y, Field::prime.value) == 0)
            return false;

        // x^2 = (y^2 - 1) / (d * y^2 - a), whose denominator is never 0.
        const Element one = {1};
        point.y = loaded(y);
        point.z = one;
        const Element square = Field::square(point.y);
        const Element product = Field::multiply(loaded(Curve::d), square);
        const Element denominator = Curve::aIsOne ? Field::subtract(product, one) : Field::add(product, one);
        if (!findRoot(point.x, Field::subtract(square, one), denominator) || IsZero(point.x))
            return false;
        if ((stored(point.x)[0] & 1) != odd)
            point.x = Field::multiply(Field::subtract(Element{}, point.x), one);
        point.t = Field::multiply(point.x, point.y);
        return true;
    }

private:
    static constexpr std::size_t width = 5;
    static constexpr std::size_t maxDigit = 1u << (width - 1);
    static constexpr std::size_t digits = ccrypto::SignedDigitCount(Curve::order.bits, width);

    /// (e / g, h / f), with which every sum ends.
    struct Sum {
        Element e, f, g, h;
    };

    /// A point with z = 1 in the form in which it is added: x, y and d * x * y; for a = -1, which saves a product then, y - x, y +
    /// x and 2 * d * x * y.
    struct alignas(16) AffineAddend {
        Element first, second, product;
    };
    /// Any point in that form; for a = -1, z is doubled as well.
    struct Addend : AffineAddend {
        Element z;
    };

    static Point neutral() { return {Element{}, Element{1}, Element{1}, Element{}}; }
    static Element loaded(const ccrypto::Limbs<N>& number)
    {
        std::array<std::uint8_t, Field::bytes> bytes;
        std::memcpy(bytes.data(), number.data(), bytes.size());
        return Field::load(bytes.data());
    }
    static std::array<std::uint8_t, Field::bytes> stored(const Element& number)
    {
        std::array<std::uint8_t, Field::bytes> bytes;
        Field::store(bytes.data(), number);
        return bytes;
    }
    static bool IsZero(const Element& number) { return stored(number) == std::array<std::uint8_t, Field::bytes>{}; }

    static Point projective(const Sum& s)
    {
        return {Field::multiply(s.e, s.f), Field::multiply(s.g, s.h), Field::multiply(s.f, s.g), Element{}};
    }
    static Point extended(const Sum& s)
    {
        return {Field::multiply(s.e, s.f), Field::multiply(s.g, s.h), Field::multiply(s.f, s.g), Field::multiply(s.e, s.h)};
    }

    static AffineAddend affineAddendOf(const Element& x, const Element& y, const Element& t)
    {
        static const Element d = loaded(Curve::d);
        const Element product = Field::multiply(d, t);
        if constexpr (Curve::aIsOne)
            return {x, y, product};
        else
            return {Field::subtract(y, x), Field::add(y, x), Field::add(product, product)};
    }
    static Addend addendOf(const Point& p) { return {affineAddendOf(p.x, p.y, p.t), Curve::aIsOne ? p.z : Field::add(p.z, p.z)}; }
    static void negateIf(AffineAddend& addend, std::uint64_t mask)
    {
        using ccrypto::fixed_limbs::Select;
        const Element first = Curve::aIsOne ? Field::subtract(Element{}, addend.first) : addend.second;
        addend.second = Curve::aIsOne ? addend.second : Select(mask, addend.first, addend.second);
        addend.first = Select(mask, first, addend.first);
        addend.product = Select(mask, Field::subtract(Element{}, addend.product), addend.product);
    }

    [[gnu::noinline]] static Sum add(const Point& p, const Addend& q) { return sumOf(p, q, Field::multiply(p.z, q.z)); }
    [[gnu::noinline]] static Sum add(const Point& p, const AffineAddend& q)
    {
        return sumOf(p, q, Curve::aIsOne ? p.z : Field::add(p.z, p.z));
    }

    /// The sum of two points; z is the product of both denominators, doubled for a = -1.
    [[gnu::always_inline]] static Sum sumOf(const Point& p, const AffineAddend& q, const Element& z)
    {
        const Element rest = Field::multiply(p.t, q.product);
        const Element less = Field::subtract(z, rest);
        const Element more = Field::add(z, rest);
        if constexpr (Curve::aIsOne) {
            const Element xx = Field::multiply(p.x, q.first);
            const Element yy = Field::multiply(p.y, q.second);
            const Element both = Field::multiply(Field::add(p.x, p.y), Field::add(q.first, q.second));
            return {Field::subtract(both, Field::add(xx, yy)), less, more, Field::subtract(yy, xx)};
        } else {
            const Element differences = Field::multiply(Field::subtract(p.y, p.x), q.first);
            const Element sums = Field::multiply(Field::add(p.y, p.x), q.second);
            return {Field::subtract(sums, differences), less, more, Field::add(sums, differences)};
        }
    }

    [[gnu::noinline]] static Sum twice(const Point& p)
    {
        const Element xx = Field::square(p.x);
        const Element yy = Field::square(p.y);
        const Element zz = Field::square(p.z);
        const Element twoZz = Field::add(zz, zz);
        const Element both = Field::add(xx, yy);
        const Element cross = Field::subtract(Field::square(Field::add(p.x, p.y)), both);
        if constexpr (Curve::aIsOne)
            return {cross, Field::subtract(both, twoZz), both, Field::subtract(xx, yy)};
        else
            return {cross, Field::subtract(Field::add(twoZz, xx), yy), Field::subtract(yy, xx), both};
    }

    /// number^exponent for a public exponent, four bits at a time.
    static Element power(const Element& number, const ccrypto::Limbs<N>& exponent)
    {
        std::array<Element, 16> table;
        table[0] = Element{1};
        for (std::size_t i = 1; i < table.size(); ++i)
            table[i] = Field::multiply(table[i - 1], number);
        Element result = table[0];
        for (std::size_t digit = 16 * N; digit-- > 0;) {
            for (int i = 0; i < 4; ++i)
                result = Field::square(result);
            result = Field::multiply(result, table[exponent[digit / 16] >> (digit % 16 * 4) & 15]);
        }
        return result;
    }
    /// prime / 2^bits
    static constexpr ccrypto::Limbs<N> primeShifted(unsigned count)
    {
        ccrypto::Limbs<N> shifted = Field::prime.value;
        for (std::size_t i = 0; i < N; ++i)
            shifted[i] = shifted[i] >> count | (i + 1 < N ? shifted[i + 1] << (64 - count) : 0);
        return shifted;
    }

    /// A square root of u / v (RFC 8032, 5.1.3 and 5.2.3). \return false when there is none. The time depends on the numbers.
    [[nodiscard]] static bool findRoot(Element& root, const Element& u, const Element& v)
    {
        constexpr bool is3Modulo4 = (Field::prime.value[0] & 3) == 3;
        static_assert(is3Modulo4 || (Field::prime.value[0] & 7) == 5);
        const Element uv = Field::multiply(u, v);
        const Element uvv = Field::multiply(uv, v);
        if constexpr (is3Modulo4) {
            // u^3 * v * (u^5 * v^3)^((p - 3) / 4)
            const Element uuv = Field::multiply(u, uv);
            const Element base = Field::multiply(Field::multiply(uuv, uuv), uv);
            root = Field::multiply(Field::multiply(u, uuv), power(base, primeShifted(2)));
            return IsZero(Field::subtract(Field::multiply(v, Field::square(root)), Field::multiply(u, Element{1})));
        } else {
            // u * v^3 * (u * v^7)^((p - 5) / 8), or that times a root of -1
            static const Element rootOfMinusOne = power(Element{2}, primeShifted(2));
            const Element uvvv = Field::multiply(uvv, v);
            const Element base = Field::multiply(uvvv, Field::square(Field::square(v)));
            root = Field::multiply(uvvv, power(base, primeShifted(3)));
            const Element square = Field::multiply(v, Field::square(root));
            const Element wanted = Field::multiply(u, Element{1});
            if (IsZero(Field::subtract(square, wanted)))
                return true;
            root = Field::multiply(root, rootOfMinusOne);
            return IsZero(Field::add(square, wanted));
        }
    }

    /// The entry at place i of that digit, the neutral point for 0; reads all of them.
    void selectEntry(AffineAddend& entry, std::size_t i, const ccrypto::SignedDigit& digit) const
    {
        ccrypto::SelectEntry<maxDigit>(entry, &table_[i * maxDigit], digit.magnitude);
        const std::uint64_t one = ccrypto::constant_time::Mask::IsZero(digit.magnitude).word() & 1;
        entry.first[0] |= Curve::aIsOne ? 0 : one;
        entry.second[0] |= one;
        negateIf(entry, digit.negative);
    }

    void fillTable()
    {
        table_.reset(new AffineAddend[digits * maxDigit]);
        Point first = {loaded(Curve::x), loaded(Curve::y), Element{1}, Field::multiply(loaded(Curve::x), loaded(Curve::y))};
        for (std::size_t i = 0; i < digits; ++i) {
            const Addend addend = addendOf(first);
            Point multiple = first;
            for (std::size_t each = 0; each < maxDigit; ++each) {
                const Element inverse = Field::invert(multiple.z);
                const Element x = Field::load(stored(Field::multiply(multiple.x, inverse)).data());
                const Element y = Field::load(stored(Field::multiply(multiple.y, inverse)).data());
                AffineAddend& entry = table_[i * maxDigit + each];
                entry = affineAddendOf(x, y, Field::multiply(x, y));
                for (Element* const number : {&entry.first, &entry.second, &entry.product})
                    *number = Field::load(stored(*number).data());
                if (each + 1 < maxDigit)
                    multiple = extended(add(multiple, addend));
            }
            first = extended(twice(multiple));
        }
    }

    std::unique_ptr<AffineAddend[]> table_;
};

} // namespace ccrypto::internal
