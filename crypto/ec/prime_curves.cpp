#include "crypto/ec/prime_curves.h"

#include "crypto/ec/jacobian_points.h"
#include "crypto/ec/secp521r1_field.h"

namespace ccrypto {

namespace {

/// Numbers modulo the prime of a curve that is known to the compiler.
template <auto& domain>
struct Field : MontgomeryForm<domain> {
    using Element = typename MontgomeryForm<domain>::Element;
    using MontgomeryForm<domain>::field;

    [[gnu::noinline]] static Element multiply(const Element& x, const Element& y) { return MontgomeryProduct(x, y, domain.p); }
    [[gnu::noinline]] static Element square(const Element& x) { return MontgomeryProduct(x, x, domain.p); }
    static Element add(const Element& x, const Element& y) { return field.add(x, y); }
    static Element twice(const Element& x) { return field.add(x, x); }
    static Element subtract(const Element& x, const Element& y) { return field.subtract(x, y); }
};

template <auto& domain, std::size_t baseWidth>
const auto& Points()
{
    static const JacobianPoints<Field<domain>, domain, baseWidth> points;
    return points;
}

constexpr Variant<PointCalls256> variants256[] = {
    {"portable", cpu::none, []() -> const PointMultiples<4>& { return Points<curve_domains::prime256v1, 6>(); }},
    {"adx", cpu::adx, Prime256Adx},
};
constexpr Variant<PointCalls384> variants384[] = {
    {"portable", cpu::none, []() -> const PointMultiples<6>& { return Points<curve_domains::secp384r1, 5>(); }},
    {"adx", cpu::adx, Prime384Adx},
};
constexpr Variant<PointCalls521> variants521[] = {
    {"portable", cpu::none,
     []() -> const PointMultiples<9>& {
         static const JacobianPoints<Prime521Field, curve_domains::secp521r1, 5, 4> points;
         return points;
     }},
    {"adx", cpu::adx, Prime521Adx},
};

} // namespace

std::span<const Variant<PointCalls256>> Prime256Variants()
{
    return variants256;
}

std::span<const Variant<PointCalls384>> Prime384Variants()
{
    return variants384;
}

std::span<const Variant<PointCalls521>> Prime521Variants()
{
    return variants521;
}

const PointMultiples<4>& PrimePoints256()
{
    static const PointMultiples<4>& chosen = ChooseVariant(Prime256Variants()).calls();
    return chosen;
}

const PointMultiples<6>& PrimePoints384()
{
    static const PointMultiples<6>& chosen = ChooseVariant(Prime384Variants()).calls();
    return chosen;
}

const PointMultiples<9>& PrimePoints521()
{
    static const PointMultiples<9>& chosen = ChooseVariant(Prime521Variants()).calls();
    return chosen;
}

} // namespace ccrypto
