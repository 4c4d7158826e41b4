#include "crypto/ec/montgomery_field.h"

namespace ccrypto {

template <std::size_t N>
Limbs<N> MontgomeryMultiply(const Limbs<N>& a, const Limbs<N>& b, const Modulus<N>& modulus)
{
    return MontgomeryProduct(a, b, modulus);
}

template Limbs<2> MontgomeryMultiply(const Limbs<2>&, const Limbs<2>&, const Modulus<2>&);
template Limbs<3> MontgomeryMultiply(const Limbs<3>&, const Limbs<3>&, const Modulus<3>&);
template Limbs<4> MontgomeryMultiply(const Limbs<4>&, const Limbs<4>&, const Modulus<4>&);
template Limbs<5> MontgomeryMultiply(const Limbs<5>&, const Limbs<5>&, const Modulus<5>&);
template Limbs<6> MontgomeryMultiply(const Limbs<6>&, const Limbs<6>&, const Modulus<6>&);
template Limbs<7> MontgomeryMultiply(const Limbs<7>&, const Limbs<7>&, const Modulus<7>&);
template Limbs<8> MontgomeryMultiply(const Limbs<8>&, const Limbs<8>&, const Modulus<8>&);
template Limbs<9> MontgomeryMultiply(const Limbs<9>&, const Limbs<9>&, const Modulus<9>&);

} // namespace ccrypto
