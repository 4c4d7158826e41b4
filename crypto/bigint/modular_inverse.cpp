#include "core/memory/wiped.h"
#include "crypto/bigint/fixed_limbs.h"

namespace ccrypto {

/// Bernstein and Yang, "Fast constant-time gcd computation and modular inversion", 2019: a number of division steps that is enough
/// for any input, 62 of them at a time on the lowest bits alone, whose transition matrix is then applied to the long numbers.
namespace modular_inverse {

/// Signed numbers of 62-bit limbs; the last limb holds the sign.
template <std::size_t M>
using Signed62 = std::array<std::int64_t, M>;

constexpr std::uint64_t low62 = ~std::uint64_t{0} >> 2;

/// 2^62 times what 62 division steps do to the pair (f, g).
struct Matrix {
    std::int64_t u, v, q, r;
};

/// \return the new delta.
inline std::int64_t DivisionSteps(std::int64_t delta, std::uint64_t f, std::uint64_t g, Matrix& matrix)
{
    std::uint64_t u = 1;
    std::uint64_t v = 0;
    std::uint64_t q = 0;
    std::uint64_t r = 1;
    for (int i = 0; i < 62; ++i) {
        // All ones when delta > 0 (it is never so large that the difference overflows), and when g is odd.
        std::uint64_t positive = fixed_limbs::Opaque(static_cast<std::uint64_t>(-delta >> 63));
        const std::uint64_t odd = fixed_limbs::Opaque(0 - (g & 1));
        g += ((f ^ positive) - positive) & odd;
        q += ((u ^ positive) - positive) & odd;
        r += ((v ^ positive) - positive) & odd;
        positive &= odd;
        const auto swap = static_cast<std::int64_t>(positive);
        delta = (delta ^ swap) - swap + 1;
        f += g & positive;
        u += q & positive;
        v += r & positive;
        g >>= 1;
        u <<= 1;
        v <<= 1;
    }
    matrix = {static_cast<std::int64_t>(u), static_cast<std::int64_t>(v), static_cast<std::int64_t>(q),
              static_cast<std::int64_t>(r)};
    return delta;
}

/// (f, g) = matrix * (f, g) / 2^62, which leaves no remainder.
template <std::size_t M>
void UpdatePair(Signed62<M>& f, Signed62<M>& g, const Matrix& t)
{
    SignedWord128 cf = SignedWord128{t.u} * f[0] + SignedWord128{t.v} * g[0];
    SignedWord128 cg = SignedWord128{t.q} * f[0] + SignedWord128{t.r} * g[0];
    cf >>= 62;
    cg >>= 62;
    for (std::size_t i = 1; i < M; ++i) {
        cf += SignedWord128{t.u} * f[i] + SignedWord128{t.v} * g[i];
        cg += SignedWord128{t.q} * f[i] + SignedWord128{t.r} * g[i];
        f[i - 1] = static_cast<std::int64_t>(static_cast<std::uint64_t>(cf) & low62);
        g[i - 1] = static_cast<std::int64_t>(static_cast<std::uint64_t>(cg) & low62);
        cf >>= 62;
        cg >>= 62;
    }
    f[M - 1] = static_cast<std::int64_t>(cf);
    g[M - 1] = static_cast<std::int64_t>(cg);
}

/// (d, e) = matrix * (d, e) / 2^62 modulo m. Both are above -2m and below m, before and after. `inverse` is 1 / m mod 2^62.
template <std::size_t M>
void UpdateFactors(Signed62<M>& d, Signed62<M>& e, const Matrix& t, const Signed62<M>& m, std::uint64_t inverse)
{
    const std::int64_t dNegative = d[M - 1] >> 63;
    const std::int64_t eNegative = e[M - 1] >> 63;
    std::int64_t md = (t.u & dNegative) + (t.v & eNegative);
    std::int64_t me = (t.q & dNegative) + (t.r & eNegative);
    SignedWord128 cd = SignedWord128{t.u} * d[0] + SignedWord128{t.v} * e[0];
    SignedWord128 ce = SignedWord128{t.q} * d[0] + SignedWord128{t.r} * e[0];
    // The multiples of m that make the lowest 62 bits zero.
    md -= static_cast<std::int64_t>((inverse * static_cast<std::uint64_t>(cd) + static_cast<std::uint64_t>(md)) & low62);
    me -= static_cast<std::int64_t>((inverse * static_cast<std::uint64_t>(ce) + static_cast<std::uint64_t>(me)) & low62);
    cd += SignedWord128{m[0]} * md;
    ce += SignedWord128{m[0]} * me;
    cd >>= 62;
    ce >>= 62;
    for (std::size_t i = 1; i < M; ++i) {
        cd += SignedWord128{t.u} * d[i] + SignedWord128{t.v} * e[i] + SignedWord128{m[i]} * md;
        ce += SignedWord128{t.q} * d[i] + SignedWord128{t.r} * e[i] + SignedWord128{m[i]} * me;
        d[i - 1] = static_cast<std::int64_t>(static_cast<std::uint64_t>(cd) & low62);
        e[i - 1] = static_cast<std::int64_t>(static_cast<std::uint64_t>(ce) & low62);
        cd >>= 62;
        ce >>= 62;
    }
    d[M - 1] = static_cast<std::int64_t>(cd);
    e[M - 1] = static_cast<std::int64_t>(ce);
}

template <std::size_t N, std::size_t M>
void ToSigned62(Signed62<M>& target, const Limbs<N>& source)
{
    for (std::size_t i = 0; i < M; ++i) {
        const std::size_t bit = 62 * i;
        const std::size_t limb = bit / 64;
        std::uint64_t word = limb < N ? source[limb] >> (bit % 64) : 0;
        if (bit % 64 > 2 && limb + 1 < N)
            word |= source[limb + 1] << (64 - bit % 64);
        target[i] = static_cast<std::int64_t>(word & low62);
    }
}

template <std::size_t N, std::size_t M>
Limbs<N> FromSigned62(const Signed62<M>& source)
{
    Limbs<N> number{};
    for (std::size_t i = 0; i < M; ++i) {
        const std::size_t bit = 62 * i;
        const std::size_t limb = bit / 64;
        const auto word = static_cast<std::uint64_t>(source[i]);
        if (limb < N)
            number[limb] |= word << (bit % 64);
        if (bit % 64 > 2 && limb + 1 < N)
            number[limb + 1] |= word >> (64 - bit % 64);
    }
    return number;
}

/// `number`, from -2m to m, its sign turned when `negate` is all ones, brought into 0 to m - 1.
template <std::size_t M>
void Normalize(Signed62<M>& number, std::int64_t negate, const Signed62<M>& m)
{
    const auto addIfNegative = [&](std::int64_t turn) {
        const auto negative = static_cast<std::int64_t>(fixed_limbs::Opaque(static_cast<std::uint64_t>(number[M - 1] >> 63)));
        for (std::size_t i = 0; i < M; ++i)
            number[i] = ((number[i] + (m[i] & negative)) ^ turn) - turn;
        for (std::size_t i = 0; i + 1 < M; ++i) {
            number[i + 1] += number[i] >> 62;
            number[i] &= static_cast<std::int64_t>(low62);
        }
    };
    addIfNegative(negate);
    addIfNegative(0);
}

template <std::size_t M>
struct State {
    Signed62<M> f, g, d, e;
    Matrix matrix;
};

} // namespace modular_inverse

template <std::size_t N>
Limbs<N> ModularInverse(const Limbs<N>& number, const Limbs<N>& modulus, std::uint64_t negative)
{
    using namespace modular_inverse;
    constexpr std::size_t M = (64 * N + 2 + 61) / 62;
    // Enough for numbers of that many bits, from 46 bits on (theorem 11.2 of the paper).
    constexpr std::size_t steps = (49 * (64 * N) + 57) / 17;

    Signed62<M> m{};
    ToSigned62<N>(m, modulus);
    Wiped<State<M>> state{};
    state.f = m;
    ToSigned62<N>(state.g, number);
    state.e[0] = 1;
    std::int64_t delta = 1;
    for (std::size_t done = 0; done < steps; done += 62) {
        delta = DivisionSteps(delta, static_cast<std::uint64_t>(state.f[0]) | static_cast<std::uint64_t>(state.f[1]) << 62,
                              static_cast<std::uint64_t>(state.g[0]) | static_cast<std::uint64_t>(state.g[1]) << 62, state.matrix);
        UpdateFactors<M>(state.d, state.e, state.matrix, m, (0 - negative) & low62);
        UpdatePair<M>(state.f, state.g, state.matrix);
    }
    // f is 1 or -1 now.
    Normalize<M>(state.d, state.f[M - 1] >> 63, m);
    return FromSigned62<N, M>(state.d);
}

template Limbs<2> ModularInverse(const Limbs<2>&, const Limbs<2>&, std::uint64_t);
template Limbs<3> ModularInverse(const Limbs<3>&, const Limbs<3>&, std::uint64_t);
template Limbs<4> ModularInverse(const Limbs<4>&, const Limbs<4>&, std::uint64_t);
template Limbs<5> ModularInverse(const Limbs<5>&, const Limbs<5>&, std::uint64_t);
template Limbs<6> ModularInverse(const Limbs<6>&, const Limbs<6>&, std::uint64_t);
template Limbs<7> ModularInverse(const Limbs<7>&, const Limbs<7>&, std::uint64_t);
template Limbs<8> ModularInverse(const Limbs<8>&, const Limbs<8>&, std::uint64_t);
template Limbs<9> ModularInverse(const Limbs<9>&, const Limbs<9>&, std::uint64_t);

} // namespace ccrypto
