#include "tests/crypto/ec/domain_numbers.h"

#include "crypto/ec/curve_domains.h"

#include <algorithm>

namespace ccrypto {

namespace {

template <std::size_t N>
CCryptoBigInteger Plain(const Limbs<N>& limbs)
{
    CCryptoBigInteger number;
    for (std::size_t i = N; i-- > 0;)
        number = (number << 64) + CCryptoBigInteger::FromWord(limbs[i]);
    return number;
}

template <std::size_t N>
DomainNumbers NumbersOf(algorithm::Id id, const CurveDomain<N>& domain)
{
    return {id, Plain(domain.p.value), Plain(domain.a), Plain(domain.b), {Plain(domain.x), Plain(domain.y)}, Plain(domain.n.value)};
}

} // namespace

const std::vector<DomainNumbers>& AllDomains()
{
    using namespace curve_domains;
    static const std::vector<DomainNumbers> domains = {
        NumbersOf(algorithm::secp112r1, secp112r1),
        NumbersOf(algorithm::secp160r1, secp160r1),
        NumbersOf(algorithm::prime192v1, prime192v1),
        NumbersOf(algorithm::secp224r1, secp224r1),
        NumbersOf(algorithm::prime256v1, prime256v1),
        NumbersOf(algorithm::secp384r1, secp384r1),
        NumbersOf(algorithm::secp521r1, secp521r1),
        NumbersOf(algorithm::secp256k1, secp256k1),
        NumbersOf(algorithm::brainpoolP160r1, brainpoolP160r1),
        NumbersOf(algorithm::brainpoolP224r1, brainpoolP224r1),
        NumbersOf(algorithm::brainpoolP256r1, brainpoolP256r1),
        NumbersOf(algorithm::brainpoolP320r1, brainpoolP320r1),
        NumbersOf(algorithm::brainpoolP384r1, brainpoolP384r1),
        NumbersOf(algorithm::brainpoolP384t1, brainpoolP384t1),
        NumbersOf(algorithm::brainpoolP512r1, brainpoolP512r1),
    };
    return domains;
}

const DomainNumbers& DomainOf(algorithm::Id curve)
{
    return *std::ranges::find(AllDomains(), curve, &DomainNumbers::id);
}

} // namespace ccrypto
