#include "crypto/ec/curve_arithmetic.h"

#include "core/base/algorithm.h"
#include "core/memory/wiped.h"
#include "crypto/ec/complete_points.h"
#include "crypto/ec/prime_curves.h"
#include "crypto/ec/square_root.h"

#include <algorithm>

namespace ccrypto {

namespace {

/// The bytes fit into `limbs`.
void LoadLimbs(std::span<std::uint64_t> limbs, CurveArithmetic::Bytes bytes)
{
    std::ranges::fill(limbs, 0);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        limbs[i / 8] |= std::uint64_t{bytes[bytes.size() - 1 - i]} << (i % 8 * 8);
}

void StoreLimbs(CurveArithmetic::Target bytes, std::span<const std::uint64_t> limbs)
{
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[bytes.size() - 1 - i] = static_cast<std::uint8_t>(limbs[i / 8] >> (i % 8 * 8));
}

template <std::size_t N>
bool IsBelow(const Limbs<N>& number, const Limbs<N>& limit)
{
    Limbs<N> difference;
    return constant_time::Declassify(fixed_limbs::Subtract(difference, number, limit)) != 0;
}

template <std::size_t N>
class CurveArithmeticOf final : public CurveArithmetic {
public:
    /// Neither is owned.
    CurveArithmeticOf(const CurveDomain<N>& domain, const PointMultiples<N>& points)
        : domain_(domain), field_(domain.p), order_(domain.n), root_(field_), points_(points)
    {
    }

    bool isPoint(Bytes x, Bytes y) const override
    {
        const AffinePoint<N> point = loaded({x, y});
        if (!IsBelow(point.x, domain_.p.value) || !IsBelow(point.y, domain_.p.value))
            return false;
        const Limbs<N> root = field_.enter(point.y);
        return constant_time::Declassify(fixed_limbs::Equal(field_.square(root), ySquared(point.x))) != 0;
    }

    bool findY(Target y, Bytes x, bool odd) const override
    {
        Limbs<N> number;
        LoadLimbs(number, x);
        if (!IsBelow(number, domain_.p.value))
            return false;
        Limbs<N> root;
        if (!root_.find(root, ySquared(number)))
            return false;
        // A root is not 0, since no point of prime order has y = 0; so the two of them differ in parity.
        Limbs<N> plain = field_.leave(root);
        if (((plain[0] & 1) != 0) != odd)
            plain = field_.leave(field_.negate(root));
        StoreLimbs(y, plain);
        return true;
    }

    bool isScalar(Bytes number) const override
    {
        Wiped<Limbs<N>> scalar;
        return loadInOrder(scalar, number);
    }

    void multiplyBase(Target x, Target y, Bytes scalar) const override
    {
        Wiped<Limbs<N>> factor;
        LoadLimbs(factor, scalar);
        Wiped<AffinePoint<N>> result;
        points_.multiplyBase(result, factor);
        store(x, y, result);
    }

    void multiply(Target x, Target y, Bytes pointX, Bytes pointY, Bytes scalar) const override
    {
        const AffinePoint<N> point = loaded({pointX, pointY});
        Wiped<Limbs<N>> factor;
        LoadLimbs(factor, scalar);
        Wiped<AffinePoint<N>> result;
        points_.multiply(result, point, factor);
        store(x, y, result);
    }

    bool add(Target x, Target y, const Coordinates& left, const Coordinates& right) const override
    {
        const Wiped<AffinePoint<N>> p{entered(left)};
        const Wiped<AffinePoint<N>> q{entered(right)};
        // The slope of the line through both, or of the tangent of one; the run of opposite points is 0 in both ways.
        const std::uint64_t same = fixed_limbs::Equal(p.x, q.x);
        const Limbs<N> square = field_.square(p.x);
        const Limbs<N> tangentRise = field_.add(field_.add(square, field_.add(square, square)), field_.enter(domain_.a));
        const Limbs<N> rise = fixed_limbs::Select(same, tangentRise, field_.subtract(q.y, p.y));
        const Limbs<N> run = fixed_limbs::Select(same, field_.add(p.y, q.y), field_.subtract(q.x, p.x));
        const Wiped<Limbs<N>> slope{field_.multiply(rise, field_.invert(run))};

        Wiped<AffinePoint<N>> sum;
        sum.x = field_.subtract(field_.square(slope), field_.add(p.x, q.x));
        sum.y = field_.leave(field_.subtract(field_.multiply(slope, field_.subtract(p.x, sum.x)), p.y));
        sum.x = field_.leave(sum.x);
        store(x, y, sum);
        return constant_time::Declassify(fixed_limbs::IsZero(run)) == 0;
    }

    void digestToNumber(Target number, Bytes digest) const override { StoreLimbs(number, order_.leave(enteredDigest(digest))); }

    void bitsToNumber(Target number, Bytes bits) const override
    {
        Wiped<Limbs<N>> value;
        loadBits(value, bits);
        StoreLimbs(number, value);
    }

    bool sign(Target r, Target s, Bytes digest, Bytes key, Bytes nonce) const override
    {
        Wiped<Limbs<N>> k;
        LoadLimbs(k, nonce);
        Wiped<AffinePoint<N>> point;
        points_.multiplyBase(point, k);
        Limbs<N> first = order_.enter(point.x);
        constant_time::DeclassifyBytes(&first, sizeof first);

        Wiped<Limbs<N>> d;
        LoadLimbs(d, key);
        static_cast<Limbs<N>&>(d) = order_.multiply(order_.enter(d), first);
        static_cast<Limbs<N>&>(d) = order_.add(d, enteredDigest(digest));
        static_cast<Limbs<N>&>(k) = order_.invert(order_.enter(k));
        Limbs<N> second = order_.multiply(k, d);
        constant_time::DeclassifyBytes(&second, sizeof second);

        if (fixed_limbs::IsZero(first) != 0 || fixed_limbs::IsZero(second) != 0)
            return false;
        StoreLimbs(r, order_.leave(first));
        StoreLimbs(s, order_.leave(second));
        return true;
    }

    bool isOwnSignature(Bytes digest, Bytes r, Bytes s, Bytes key, Bytes nonce) const override
    {
        Limbs<N> first;
        Limbs<N> second;
        Wiped<Limbs<N>> d;
        Wiped<Limbs<N>> k;
        LoadLimbs(d, key);
        if (!loadInOrder(first, r) || !loadInOrder(second, s) || !loadInOrder(k, nonce) || !IsBelow(first, domain_.p.value))
            return false;

        const Wiped<Limbs<N>> left{order_.multiply(order_.enter(second), order_.enter(k))};
        static_cast<Limbs<N>&>(d) = order_.multiply(order_.enter(d), order_.enter(first));
        static_cast<Limbs<N>&>(d) = order_.add(d, enteredDigest(digest));
        if (constant_time::Declassify(fixed_limbs::Equal(left, d)) == 0)
            return false;
        Wiped<Limbs<N>> opposite;
        fixed_limbs::Subtract(opposite, domain_.n.value, k);
        return points_.isBaseMultiple(first, opposite);
    }

    bool verify(Bytes digest, Bytes r, Bytes s, Bytes x, Bytes y) const override
    {
        Limbs<N> first;
        Limbs<N> second;
        if (!loadInOrder(first, r) || !loadInOrder(second, s))
            return false;
        const AffinePoint<N> point = loaded({x, y});

        const Limbs<N> inverse = order_.invert(order_.enter(second));
        const Limbs<N> ofBase = order_.leave(order_.multiply(enteredDigest(digest), inverse));
        const Limbs<N> ofPoint = order_.leave(order_.multiply(order_.enter(first), inverse));
        AffinePoint<N> sum{};
        if (!points_.multiplyAndAdd(sum, ofBase, point, ofPoint))
            return false;
        return fixed_limbs::Equal(order_.leave(order_.enter(sum.x)), first) != 0;
    }

private:
    static AffinePoint<N> loaded(const Coordinates& point)
    {
        AffinePoint<N> plain;
        LoadLimbs(plain.x, point.x);
        LoadLimbs(plain.y, point.y);
        return plain;
    }
    static void store(Target x, Target y, const AffinePoint<N>& point)
    {
        StoreLimbs(x, point.x);
        StoreLimbs(y, point.y);
    }

    /// x^3 + a * x + b in Montgomery form.
    Limbs<N> ySquared(const Limbs<N>& x) const
    {
        const Limbs<N> entered = field_.enter(x);
        const Limbs<N> factor = field_.add(field_.square(entered), field_.enter(domain_.a));
        return field_.add(field_.multiply(factor, entered), field_.enter(domain_.b));
    }

    /// In Montgomery form.
    AffinePoint<N> entered(const Coordinates& point) const
    {
        const Wiped<AffinePoint<N>> plain{loaded(point)};
        return {field_.enter(plain.x), field_.enter(plain.y)};
    }

    /// \return false for a number that is 0 or not below the order; the answer is public.
    bool loadInOrder(Limbs<N>& number, Bytes bytes) const
    {
        LoadLimbs(number, bytes);
        return constant_time::Declassify(fixed_limbs::IsZero(number)) == 0 && IsBelow(number, domain_.n.value);
    }

    void loadBits(Limbs<N>& number, Bytes bits) const
    {
        const std::size_t most = (domain_.n.bits + 7) / 8;
        const bool cut = bits.size() >= most;
        LoadLimbs(number, cut ? bits.first(most) : bits);
        const std::size_t shift = most * 8 - domain_.n.bits;
        if (cut && shift != 0)
            for (std::size_t i = 0; i < N; ++i)
                number[i] = number[i] >> shift | (i + 1 < N ? number[i + 1] << (64 - shift) : 0);
    }

    Limbs<N> enteredDigest(Bytes digest) const
    {
        Limbs<N> number;
        loadBits(number, digest);
        return order_.enter(number);
    }

    const CurveDomain<N>& domain_;
    MontgomeryField<N> field_;
    MontgomeryField<N> order_;
    SquareRoot<N> root_;
    const PointMultiples<N>& points_;
};

/// With multiples of points by the formulas for any curve.
template <auto& domain>
const CurveArithmetic* General()
{
    static const CompletePoints points(domain);
    static const CurveArithmeticOf arithmetic(domain, points);
    return &arithmetic;
}

} // namespace

const CurveArithmetic* CurveArithmetic::Of(algorithm::Id curve)
{
    static const CurveArithmeticOf prime256v1(curve_domains::prime256v1, PrimePoints256());
    static const CurveArithmeticOf secp384r1(curve_domains::secp384r1, PrimePoints384());
    static const CurveArithmeticOf secp521r1(curve_domains::secp521r1, PrimePoints521());
    switch (curve) {
    case algorithm::secp112r1:
        return General<curve_domains::secp112r1>();
    case algorithm::secp160r1:
        return General<curve_domains::secp160r1>();
    case algorithm::prime192v1:
        return General<curve_domains::prime192v1>();
    case algorithm::prime256v1:
        return &prime256v1;
    case algorithm::secp384r1:
        return &secp384r1;
    case algorithm::secp521r1:
        return &secp521r1;
    case algorithm::brainpoolP160r1:
        return General<curve_domains::brainpoolP160r1>();
    case algorithm::brainpoolP256r1:
        return General<curve_domains::brainpoolP256r1>();
    case algorithm::brainpoolP384r1:
        return General<curve_domains::brainpoolP384r1>();
    case algorithm::secp224r1:
        return General<curve_domains::secp224r1>();
    case algorithm::secp256k1:
        return General<curve_domains::secp256k1>();
    case algorithm::brainpoolP224r1:
        return General<curve_domains::brainpoolP224r1>();
    case algorithm::brainpoolP320r1:
        return General<curve_domains::brainpoolP320r1>();
    case algorithm::brainpoolP384t1:
        return General<curve_domains::brainpoolP384t1>();
    case algorithm::brainpoolP512r1:
        return General<curve_domains::brainpoolP512r1>();
    default:
        return nullptr;
    }
}

} // namespace ccrypto
