#include "crypto/ec/x25519.h"

#include "crypto/ec/field25519.h"
#include "crypto/ec/montgomery_ladder.h"

#include <array>
#include <cstring>

namespace ccrypto {

namespace {

constexpr Variant<X25519Ladder> variants[] = {
    {"portable", cpu::none, X25519Portable},
    {"adx", cpu::adx, X25519Adx},
};

using Bytes32 = std::array<std::uint8_t, 32>;

} // namespace

std::uint64_t X25519Portable(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point)
{
    return MontgomeryLadder<ccrypto::internal::Field25519>(result, scalar, point);
}

std::span<const Variant<X25519Ladder>> X25519Variants()
{
    return variants;
}

bool X25519(std::uint8_t* result, const std::uint8_t* scalar, const std::uint8_t* point)
{
    static const auto& chosen = ChooseVariant(X25519Variants());
    Wiped<Bytes32> clamped;
    std::memcpy(clamped.data(), scalar, clamped.size());
    clamped[0] &= 0xF8;
    clamped[31] = static_cast<std::uint8_t>((clamped[31] & 0x7F) | 0x40);
    Bytes32 x;
    std::memcpy(x.data(), point, x.size());
    x[31] &= 0x7F;
    return constant_time::Declassify(chosen.calls(result, clamped.data(), x.data())) == 0;
}

void X25519Public(std::uint8_t* result, const std::uint8_t* scalar)
{
    constexpr Bytes32 base = {9};
    static_cast<void>(X25519(result, scalar, base.data()));
}

} // namespace ccrypto
