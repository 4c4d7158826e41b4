#include "crypto/ec/field25519_adx.h"
#include "crypto/ec/montgomery_ladder.h"
#include "crypto/ec/x25519.h"

namespace ccrypto {

std::uint64_t X25519Adx(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point)
{
    return MontgomeryLadder<internal::Field25519Adx>(result, scalar, point);
}

} // namespace ccrypto
