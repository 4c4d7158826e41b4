#include "crypto/ec/x448.h"

#include "crypto/ec/field448.h"
#include "crypto/ec/montgomery_ladder.h"

#include <array>
#include <cstring>

namespace ccrypto {

namespace {

using ccrypto::internal::Field448;
using Bytes56 = std::array<std::uint8_t, Field448::bytes>;

} // namespace

bool X448(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point)
{
    Wiped<Bytes56> clamped;
    std::memcpy(clamped.data(), scalar, clamped.size());
    clamped[0] &= 0xFC;
    clamped[55] |= 0x80;
    return constant_time::Declassify(MontgomeryLadder<Field448>(result, clamped.data(), point)) == 0;
}

void X448Public(std::uint8_t* result, const std::uint8_t* scalar)
{
    constexpr Bytes56 base = {5};
    static_cast<void>(X448(result, scalar, base.data()));
}

} // namespace ccrypto
