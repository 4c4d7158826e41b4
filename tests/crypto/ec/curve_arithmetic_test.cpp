#include "crypto/ec/complete_points.h"
#include "crypto/ec/prime_curves.h"
#include "crypto/ec/x25519.h"

#include <gtest/gtest.h>

#include <random>

using namespace ccrypto;

namespace {

/// Numbers modulo a number as one learns it at school, a bit at a time: slow and plain. Through pointers, since nothing of a test
/// is optimised.
template <std::size_t N>
class SlowField {
public:
    explicit SlowField(const Limbs<N>& modulus) : modulus_(modulus) {}

    Limbs<N> add(const Limbs<N>& a, const Limbs<N>& b) const
    {
        Limbs<N> sum;
        Limbs<N> less;
        const bool carry = combine(sum.data(), a.data(), b.data(), 0);
        const bool below = !combine(less.data(), sum.data(), modulus_.data(), ~std::uint64_t{0});
        return below && !carry ? sum : less;
    }
    Limbs<N> negate(const Limbs<N>& a) const
    {
        Limbs<N> difference;
        combine(difference.data(), modulus_.data(), a.data(), ~std::uint64_t{0});
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
    /// a + b, or a - b, that is a + ~b + 1, when `turn` is all ones. \return the carry, which a difference has when it is not
    /// negative.
    static bool combine(std::uint64_t* result, const std::uint64_t* a, const std::uint64_t* b, std::uint64_t turn)
    {
        Word128 sum = turn & 1;
        for (std::size_t i = 0; i < N; ++i) {
            sum += Word128{a[i]} + (b[i] ^ turn);
            result[i] = static_cast<std::uint64_t>(sum);
            sum >>= 64;
        }
        return sum != 0;
    }

    const Limbs<N>& modulus_;
};

template <std::size_t N>
struct Multiple {
    Limbs<N> scalar;
    AffinePoint<N> ofBase;
    AffinePoint<N> ofPoint;
};

template <std::size_t N>
bool operator==(const AffinePoint<N>& a, const AffinePoint<N>& b)
{
    return a.x == b.x && a.y == b.y;
}

template <std::size_t N>
class Curve {
public:
    explicit Curve(const CurveDomain<N>& domain) : domain_(domain), field_(domain.p.value), order_(domain.n.value), points_(domain)
    {
    }

    const CompletePoints<N>& points() const { return points_; }
    const SlowField<N>& order() const { return order_; }

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
    /// Where loops of additions have their exceptions, if they have any, and some others; not infinity's. The multiples of `point`
    /// are those of the complete formulas.
    std::vector<Multiple<N>> multiples(const AffinePoint<N>& point) const
    {
        std::vector<Multiple<N>> all;
        const auto add = [&](const Limbs<N>& scalar) {
            Multiple<N> multiple{scalar, timesBase(scalar), {}};
            points_.multiply(multiple.ofPoint, point, scalar);
            all.push_back(multiple);
        };
        // The opposite of a multiple is known without the formulas.
        const auto addBoth = [&](const Limbs<N>& scalar) {
            add(scalar);
            all.push_back({order_.negate(scalar), opposite(all.back().ofBase), opposite(all.back().ofPoint)});
        };
        for (const std::uint64_t small : {1, 2, 3, 4, 8, 15, 16, 17, 18, 31, 32, 33, 34, 63, 64, 65})
            addBoth({small});
        // Digits of both widths begin here.
        for (std::size_t bit = 70; bit + 1 < domain_.n.bits; bit += 70) {
            Limbs<N> power{};
            power[bit / 64] |= std::uint64_t{1} << (bit % 64);
            addBoth(power);
            add(order_.subtract(power, {1}));
        }
        std::mt19937_64 engine(domain_.n.bits);
        for (int i = 0; i < 8; ++i)
            addBoth(random(engine));
        return all;
    }

private:
    AffinePoint<N> opposite(const AffinePoint<N>& p) const { return {p.x, field_.negate(p.y)}; }

    const CurveDomain<N>& domain_;
    SlowField<N> field_;
    SlowField<N> order_;
    CompletePoints<N> points_;
};

template <std::size_t N>
void AgreesWithTheTwin(const CurveDomain<N>& domain)
{
    const Curve curve(domain);
    std::mt19937_64 engine(7);
    for (int round = 0; round < 2; ++round) {
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

        EXPECT_TRUE(curve.points().isBaseMultiple(aPoint.x, a));
        EXPECT_FALSE(curve.points().isBaseMultiple(product.x, a));
        EXPECT_FALSE(curve.points().isBaseMultiple(aPoint.x, {}));
        EXPECT_FALSE(curve.points().isBaseMultiple({}, {}));

        const MontgomeryField<N> order(domain.n);
        EXPECT_EQ(curve.order().multiply(order.leave(order.invert(order.enter(a))), a), Limbs<N>{1});
    }
}

template <typename Calls>
std::vector<Variant<Calls>> PresentOf(std::span<const Variant<Calls>> variants)
{
    std::vector<Variant<Calls>> present;
    for (const auto& variant : variants)
        if ((variant.needs & ~cpu::PresentFeatures()) == 0)
            present.push_back(variant);
    return present;
}

template <std::size_t N>
struct Sum {
    Limbs<N> ofBase;
    AffinePoint<N> point;
    Limbs<N> ofPoint;
    bool finite;
    AffinePoint<N> expected;
};

/// Sums, among them those of a point with itself and with its opposite.
template <std::size_t N>
std::vector<Sum<N>> Sums(const Curve<N>& curve, const std::vector<Multiple<N>>& multiples, const AffinePoint<N>& point)
{
    std::vector<Sum<N>> sums = {{{}, point, {}, false, {}}};
    const Limbs<N>& other = multiples.back().scalar;
    for (std::size_t i = 0; i < multiples.size(); i += 12) {
        const Limbs<N>& scalar = multiples[i].scalar;
        for (const Limbs<N>& factor : {scalar, curve.order().negate(scalar), Limbs<N>{}, other})
            sums.push_back({scalar, curve.timesBase({1}), factor, true, {}});
        sums.push_back({scalar, point, other, true, {}});
    }
    for (Sum<N>& sum : sums)
        sum.finite = curve.points().multiplyAndAdd(sum.expected, sum.ofBase, sum.point, sum.ofPoint);
    return sums;
}

/// Numbers below the modulus whose limbs are such that carries and borrows run far, or nowhere.
template <std::size_t N>
std::vector<Limbs<N>> Edges(const Limbs<N>& modulus)
{
    std::vector<Limbs<N>> edges;
    std::mt19937_64 engine(N);
    const SlowField<N> field(modulus);
    for (std::uint64_t small = 0; small < 3; ++small) {
        edges.push_back({small});
        edges.push_back(field.negate({small + 1}));
    }
    constexpr std::uint64_t limbs[] = {
        0, 1, 0x1FF, 0xFFFFFFFF, 0xFFFFFFFF00000000, 0xFFFFFFFF00000001, ~std::uint64_t{0} - 1, ~std::uint64_t{0}};
    while (edges.size() < 40) {
        Limbs<N> edge;
        for (std::uint64_t& limb : edge)
            limb = limbs[engine() % std::size(limbs)];
        Limbs<N> difference;
        if (fixed_limbs::Subtract(difference, edge, modulus) != 0)
            edges.push_back(edge);
    }
    return edges;
}

/// All variants against the formulas that have no exceptions.
template <typename Calls, std::size_t N>
void VariantsAreRight(std::span<const Variant<Calls>> variants, const CurveDomain<N>& domain)
{
    const Curve curve(domain);
    std::mt19937_64 engine(8);
    const AffinePoint<N> point = curve.timesBase(curve.random(engine));
    const std::vector<Multiple<N>> multiples = curve.multiples(point);
    const std::vector<Sum<N>> sums = Sums(curve, multiples, point);
    const auto present = PresentOf(variants);
    for (const auto& variant : present) {
        SCOPED_TRACE(variant.name);
        const PointMultiples<N>& points = variant.calls();
        for (const Multiple<N>& multiple : multiples) {
            SCOPED_TRACE(testing::PrintToString(multiple.scalar));
            AffinePoint<N> result;
            points.multiplyBase(result, multiple.scalar);
            ASSERT_TRUE(result == multiple.ofBase);
            ASSERT_TRUE(points.isBaseMultiple(result.x, multiple.scalar));
            ASSERT_FALSE(points.isBaseMultiple(multiple.ofPoint.x, multiple.scalar));
            points.multiply(result, point, multiple.scalar);
            ASSERT_TRUE(result == multiple.ofPoint);
        }
        // Infinity has no x, and is not taken for a point with any.
        EXPECT_FALSE(points.isBaseMultiple(point.x, {}));
        EXPECT_FALSE(points.isBaseMultiple({}, {}));
        for (const Sum<N>& sum : sums) {
            SCOPED_TRACE(testing::PrintToString(sum.ofBase) + ", " + testing::PrintToString(sum.ofPoint));
            AffinePoint<N> result{};
            ASSERT_EQ(points.multiplyAndAdd(result, sum.ofBase, sum.point, sum.ofPoint), sum.finite);
            ASSERT_TRUE(result == sum.expected);
        }
    }
    if (present.size() < variants.size())
        GTEST_SKIP() << variants.size() - present.size() << " variants need another processor";
}

/// Doubling does not ask for b, so every point is on some curve for it: also those whose coordinates are, as Montgomery writes
/// them, the numbers that a product, a sum or a difference is most likely to be wrong for.
template <typename Calls, std::size_t N>
void VariantsDoubleAtTheEdges(std::span<const Variant<Calls>> variants, const CurveDomain<N>& domain)
{
    const Curve curve(domain);
    // What the field of the variants takes the number of an edge for; that of secp521r1 has no form of its own.
    const MontgomeryField<N> field(domain.p);
    const auto number = [&field](const Limbs<N>& edge) { return N == 9 ? edge : field.leave(edge); };
    const std::vector<Limbs<N>> edges = Edges(domain.p.value);
    for (const auto& variant : PresentOf(variants)) {
        SCOPED_TRACE(variant.name);
        for (std::size_t i = 0; i < 3 * edges.size(); ++i) {
            const Limbs<N>& x = edges[i % edges.size()];
            const Limbs<N>& y = edges[(i + i / edges.size() * 13) % edges.size()];
            SCOPED_TRACE(testing::PrintToString(x) + ", " + testing::PrintToString(y));
            const AffinePoint<N> point = {number(x), number(y)};
            AffinePoint<N> twice;
            const bool finite = variant.calls().multiplyAndAdd(twice, {}, point, {2});
            ASSERT_EQ(finite, point.y != Limbs<N>{});
            ASSERT_TRUE(!finite || curve.isSum(point, point, twice));
        }
    }
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
    AgreesWithTheTwin(curve_domains::secp224r1);
    AgreesWithTheTwin(curve_domains::secp256k1);
    AgreesWithTheTwin(curve_domains::brainpoolP224r1);
    AgreesWithTheTwin(curve_domains::brainpoolP320r1);
    AgreesWithTheTwin(curve_domains::brainpoolP384t1);
    AgreesWithTheTwin(curve_domains::brainpoolP512r1);
}

TEST(CurveArithmetic, VariantsOf256BitsAreRight)
{
    VariantsDoubleAtTheEdges(Prime256Variants(), curve_domains::prime256v1);
    VariantsAreRight(Prime256Variants(), curve_domains::prime256v1);
}

TEST(CurveArithmetic, VariantsOf384BitsAreRight)
{
    VariantsDoubleAtTheEdges(Prime384Variants(), curve_domains::secp384r1);
    VariantsAreRight(Prime384Variants(), curve_domains::secp384r1);
}

TEST(CurveArithmetic, VariantsOf521BitsAreRight)
{
    VariantsDoubleAtTheEdges(Prime521Variants(), curve_domains::secp521r1);
    VariantsAreRight(Prime521Variants(), curve_domains::secp521r1);
}

TEST(CurveArithmetic, InvertsAtTheEdges)
{
    const Limbs<4>& order = curve_domains::prime256v1.n.value;
    const MontgomeryField<4> field(curve_domains::prime256v1.n);
    const SlowField<4> slow(order);
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
    const auto present = PresentOf(X25519Variants());
    for (int round = 0; round < 66; ++round) {
        std::array<std::uint8_t, 32> scalar;
        std::array<std::uint8_t, 32> point;
        for (std::size_t i = 0; i < 32; ++i) {
            scalar[i] = static_cast<std::uint8_t>(engine());
            // Every third point has long runs of ones, up to above the prime.
            point[i] = round % 3 == 0 && i >= 1 ? std::uint8_t{0xFF} : static_cast<std::uint8_t>(engine());
        }
        scalar[0] &= 0xF8;
        point[31] &= 0x7F;
        std::array<std::uint8_t, 32> expected;
        const std::uint64_t zero = X25519Portable(expected.data(), scalar.data(), point.data());
        for (const auto& variant : std::span(present).subspan(1)) {
            SCOPED_TRACE(variant.name);
            std::array<std::uint8_t, 32> result;
            EXPECT_EQ(variant.calls(result.data(), scalar.data(), point.data()), zero);
            EXPECT_EQ(result, expected);
        }
    }
    if (present.size() < X25519Variants().size())
        GTEST_SKIP() << X25519Variants().size() - present.size() << " variants need another processor";
}
