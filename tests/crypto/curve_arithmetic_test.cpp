#include "crypto/complete_points.h"
#include "crypto/prime_curves.h"
#include "crypto/x25519_variants.h"

#include <gtest/gtest.h>

#include <random>

namespace {

/// Numbers modulo a number as one learns it at school, a bit at a time: slow and plain.
template <std::size_t N>
class Slow {
public:
    explicit Slow(const Limbs<N>& modulus) : modulus_(modulus) {}

    Limbs<N> add(const Limbs<N>& a, const Limbs<N>& b) const
    {
        Limbs<N> sum;
        const std::uint64_t carry = fixed_limbs::Add(sum, a, b);
        Limbs<N> less;
        const bool below = fixed_limbs::Subtract(less, sum, modulus_) != 0;
        return below && carry == 0 ? sum : less;
    }
    Limbs<N> negate(const Limbs<N>& a) const
    {
        Limbs<N> difference;
        fixed_limbs::Subtract(difference, modulus_, a);
        return a == Limbs<N>{} ? a : difference;
    }
    Limbs<N> subtract(const Limbs<N>& a, const Limbs<N>& b) const { return add(a, negate(b)); }
    Limbs<N> multiply(const Limbs<N>& a, const Limbs<N>& b) const
    {
        Limbs<N> product{};
        for (std::size_t bit = 64 * N; bit-- > 0;) {
            product = add(product, product);
            if ((b[bit / 64] >> (bit % 64) & 1) != 0)
                product = add(product, a);
        }
        return product;
    }

private:
    const Limbs<N>& modulus_;
};

template <std::size_t N>
class Curve {
public:
    explicit Curve(const CurveDomain<N>& domain) : domain_(domain), field_(domain.p.value), order_(domain.n.value), points_(domain)
    {
    }

    const CompletePoints<N>& points() const { return points_; }
    const Slow<N>& order() const { return order_; }

    bool isPoint(const AffinePoint<N>& p) const
    {
        const Limbs<N> square = field_.multiply(p.x, p.x);
        return field_.multiply(p.y, p.y) == field_.add(field_.multiply(field_.add(square, domain_.a), p.x), domain_.b);
    }
    /// Whether r = p + q, checked without a division: r lies on the line through p and -r with the slope of p and q.
    bool isSum(const AffinePoint<N>& p, const AffinePoint<N>& q, const AffinePoint<N>& r) const
    {
        const bool same = p.x == q.x;
        const Limbs<N> square = field_.multiply(p.x, p.x);
        const Limbs<N> rise =
            same ? field_.add(field_.add(square, field_.add(square, square)), domain_.a) : field_.subtract(q.y, p.y);
        const Limbs<N> run = same ? field_.add(p.y, p.y) : field_.subtract(q.x, p.x);
        const Limbs<N> sumOfX = field_.add(r.x, field_.add(p.x, q.x));
        return field_.multiply(sumOfX, field_.multiply(run, run)) == field_.multiply(rise, rise) &&
               field_.multiply(field_.add(r.y, p.y), run) == field_.multiply(rise, field_.subtract(p.x, r.x));
    }
    AffinePoint<N> timesBase(const Limbs<N>& scalar) const
    {
        AffinePoint<N> result;
        points_.multiplyBase(result, scalar);
        return result;
    }
    Limbs<N> random(std::mt19937_64& engine) const
    {
        Limbs<N> number;
        for (std::uint64_t& limb : number)
            limb = engine();
        // Adding nothing reduces what is below twice the order; the top limb sees to that.
        const std::size_t bits = domain_.n.bits - 1;
        for (std::size_t bit = bits; bit < 64 * N; ++bit)
            number[bit / 64] &= ~(std::uint64_t{1} << (bit % 64));
        return number;
    }
    /// Those where loops of additions have their exceptions, if they have any.
    std::vector<Limbs<N>> scalars(std::size_t randomOnes) const
    {
        std::vector<Limbs<N>> all;
        for (std::uint64_t small = 1; small <= 66; small += small == 34 ? 28 : 1) {
            all.push_back({small});
            all.push_back(order_.negate({small}));
        }
        for (std::size_t bit = 70; bit + 1 < domain_.n.bits; bit += 35) {
            Limbs<N> power{};
            power[bit / 64] |= std::uint64_t{1} << (bit % 64);
            all.push_back(power);
            all.push_back(order_.subtract(power, {1}));
            all.push_back(order_.negate(power));
        }
        std::mt19937_64 engine(domain_.n.bits);
        for (std::size_t i = 0; i < randomOnes; ++i)
            all.push_back(random(engine));
        return all;
    }

private:
    const CurveDomain<N>& domain_;
    Slow<N> field_;
    Slow<N> order_;
    CompletePoints<N> points_;
};

template <std::size_t N>
void AgreesWithTheTwin(const CurveDomain<N>& domain)
{
    const Curve curve(domain);
    std::mt19937_64 engine(7);
    for (int round = 0; round < 3; ++round) {
        const Limbs<N> a = curve.random(engine);
        const Limbs<N> b = round == 0 ? a : curve.random(engine);
        const AffinePoint<N> aPoint = curve.timesBase(a);
        const AffinePoint<N> bPoint = curve.timesBase(b);
        EXPECT_TRUE(curve.isPoint(aPoint));
        EXPECT_TRUE(curve.isSum(aPoint, bPoint, curve.timesBase(curve.order().add(a, b))));
        AffinePoint<N> product;
        curve.points().multiply(product, aPoint, b);
        EXPECT_EQ(product.x, curve.timesBase(curve.order().multiply(a, b)).x);
        AffinePoint<N> sum;
        EXPECT_TRUE(curve.points().multiplyAndAdd(sum, a, bPoint, {3}));
        const Limbs<N> whole = curve.order().add(a, curve.order().multiply({3}, b));
        EXPECT_EQ(sum.y, curve.timesBase(whole).y);

        const MontgomeryField<N> order(domain.n);
        EXPECT_EQ(curve.order().multiply(order.leave(order.invert(order.enter(a))), a), Limbs<N>{1});
    }
}

/// All variants against the formulas that have no exceptions.
template <typename Calls, std::size_t N>
void VariantsAreEqual(std::span<const Variant<Calls>> variants, const CurveDomain<N>& domain)
{
    const Curve curve(domain);
    const std::vector<Limbs<N>> scalars = curve.scalars(20);
    std::mt19937_64 engine(8);
    const Limbs<N> other = curve.random(engine);
    const AffinePoint<N> point = curve.timesBase(other);
    std::vector<AffinePoint<N>> ofBase;
    std::vector<AffinePoint<N>> ofPoint;
    for (const Limbs<N>& scalar : scalars) {
        ofBase.push_back(curve.timesBase(scalar));
        curve.points().multiply(ofPoint.emplace_back(), point, scalar);
    }
    std::size_t skipped = 0;
    for (const auto& variant : variants) {
        if ((variant.needs & ~cpu::PresentFeatures()) != 0) {
            ++skipped;
            continue;
        }
        SCOPED_TRACE(variant.name);
        const CurvePoints<N>& points = variant.calls();
        for (std::size_t i = 0; i < scalars.size(); ++i) {
            SCOPED_TRACE(testing::PrintToString(scalars[i]));
            AffinePoint<N> result;
            points.multiplyBase(result, scalars[i]);
            ASSERT_TRUE(result.x == ofBase[i].x && result.y == ofBase[i].y);
            points.multiply(result, point, scalars[i]);
            ASSERT_TRUE(result.x == ofPoint[i].x && result.y == ofPoint[i].y);
        }

        // Sums, among them those of a point with itself and with its opposite.
        const AffinePoint<N> base = curve.timesBase({1});
        for (std::size_t i = 0; i < scalars.size(); i += 9) {
            const Limbs<N>& scalar = scalars[i];
            for (const Limbs<N>& factor : {scalar, curve.order().negate(scalar), Limbs<N>{}, Limbs<N>{1}, other}) {
                for (const AffinePoint<N>& second : {base, point}) {
                    AffinePoint<N> result{};
                    AffinePoint<N> expected{};
                    const bool finite = points.multiplyAndAdd(result, scalar, second, factor);
                    ASSERT_EQ(finite, curve.points().multiplyAndAdd(expected, scalar, second, factor));
                    ASSERT_TRUE(result.x == expected.x && result.y == expected.y);
                }
            }
        }
        AffinePoint<N> untouched{};
        EXPECT_FALSE(points.multiplyAndAdd(untouched, {}, point, {}));
    }
    if (skipped != 0)
        GTEST_SKIP() << skipped << " variants need another processor";
}

} // namespace

TEST(CurveArithmetic, AgreesWithTheTwin)
{
    AgreesWithTheTwin(curve_domains::secp112r1);
    AgreesWithTheTwin(curve_domains::secp160r1);
    AgreesWithTheTwin(curve_domains::prime192v1);
    AgreesWithTheTwin(curve_domains::prime256v1);
    AgreesWithTheTwin(curve_domains::secp384r1);
    AgreesWithTheTwin(curve_domains::secp521r1);
    AgreesWithTheTwin(curve_domains::brainpoolP160r1);
    AgreesWithTheTwin(curve_domains::brainpoolP256r1);
    AgreesWithTheTwin(curve_domains::brainpoolP384r1);
}

TEST(CurveArithmetic, VariantsOf256BitsAreEqual)
{
    VariantsAreEqual(Prime256Variants(), curve_domains::prime256v1);
}

TEST(CurveArithmetic, VariantsOf384BitsAreEqual)
{
    VariantsAreEqual(Prime384Variants(), curve_domains::secp384r1);
}

TEST(CurveArithmetic, InvertsAtTheEdges)
{
    const Limbs<4>& order = curve_domains::prime256v1.n.value;
    const MontgomeryField<4> field(curve_domains::prime256v1.n);
    const Slow<4> slow(order);
    EXPECT_EQ(field.invert({}), Limbs<4>{});
    for (std::uint64_t small = 1; small < 50; ++small) {
        for (const Limbs<4>& number : {Limbs<4>{small}, slow.negate({small}), Limbs<4>{0, 0, 0, small}}) {
            EXPECT_EQ(slow.multiply(field.leave(field.invert(field.enter(number))), number), Limbs<4>{1});
        }
    }
}

TEST(CurveArithmetic, VariantsOfX25519AreEqual)
{
    std::mt19937_64 engine(9);
    std::size_t skipped = 0;
    for (const auto& variant : X25519Variants()) {
        if ((variant.needs & ~cpu::PresentFeatures()) != 0) {
            ++skipped;
            continue;
        }
        SCOPED_TRACE(variant.name);
        for (int round = 0; round < 200; ++round) {
            std::array<std::uint8_t, 32> scalar;
            std::array<std::uint8_t, 32> point;
            for (std::size_t i = 0; i < 32; ++i) {
                scalar[i] = static_cast<std::uint8_t>(engine());
                // Every third point has long runs of ones, up to above the prime.
                point[i] = round % 3 == 0 && i >= 1 ? std::uint8_t{0xFF} : static_cast<std::uint8_t>(engine());
            }
            scalar[0] &= 0xF8;
            point[31] &= 0x7F;
            std::array<std::uint8_t, 32> result;
            std::array<std::uint8_t, 32> expected;
            EXPECT_EQ(variant.calls(result.data(), scalar.data(), point.data()),
                      X25519Portable(expected.data(), scalar.data(), point.data()));
            EXPECT_EQ(result, expected);
        }
    }
    if (skipped != 0)
        GTEST_SKIP() << skipped << " variants need another processor";
}
