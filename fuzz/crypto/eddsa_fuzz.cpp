#include "crypto/ec/eddsa.h"
#include "fuzz/require.h"

#include <algorithm>
#include <array>
#include <vector>

using namespace ccrypto;

namespace {

using Bytes = std::span<const std::uint8_t>;

/// Up to `count` bytes taken off `rest`.
Bytes Take(Bytes& rest, std::size_t count)
{
    const Bytes taken = rest.first(std::min(count, rest.size()));
    rest = rest.subspan(taken.size());
    return taken;
}

/// A public key that is taken comes out as it went in, and nobody signed with it.
void VerifyForeign(algorithm::Id curve, Bytes rest, const EddsaMode& mode)
{
    const std::size_t length = curve == algorithm::ed25519 ? 32 : 57;
    const Bytes publicKey = Take(rest, length);
    const auto key = EddsaKey::FromPublic(curve, publicKey);
    if (key == nullptr)
        return;
    Require(std::ranges::equal(key->publicKey().bytes(), publicKey));
    const Bytes signature = Take(rest, 2 * length);
    Require(!key->verify(rest, signature, mode));
}

/// The key of a seed verifies what it signed, and not what differs from it in one bit.
void SignAndChange(algorithm::Id curve, Bytes rest, const EddsaMode& mode)
{
    if (rest.size() < 2)
        return;
    const std::size_t change = rest[0] | std::size_t{rest[1]} << 8;
    rest = rest.subspan(2);
    std::array<std::uint8_t, 57> seed{};
    std::ranges::copy(Take(rest, seed.size()), seed.begin());
    const auto key = EddsaKey::FromSeed(curve, Bytes(seed).first(curve == algorithm::ed25519 ? 32 : 57));
    Require(key != nullptr);
    const auto half = EddsaKey::FromPublic(curve, key->publicKey().bytes());
    Require(half != nullptr);
    element signature = key->sign(rest, mode);
    Require(!signature.isEmpty() && half->verify(rest, signature.bytes(), mode));
    signature.data()[change / 8 % signature.length()] ^= static_cast<std::uint8_t>(1u << change % 8);
    Require(!half->verify(rest, signature.bytes(), mode));
}

} // namespace

/// The lowest bits of the first byte are the curve, the mode and what to do, the others the length of the context.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    Bytes rest(data + 1, size - 1);
    const algorithm::Id curve = (data[0] & 1) == 0 ? algorithm::ed25519 : algorithm::ed448;
    const EddsaMode mode = {Take(rest, data[0] >> 3), (data[0] & 2) != 0};
    if ((data[0] & 4) == 0)
        VerifyForeign(curve, rest, mode);
    else
        SignAndChange(curve, rest, mode);
    return 0;
}
