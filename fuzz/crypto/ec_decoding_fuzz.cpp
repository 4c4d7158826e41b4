#include "crypto/ec/ec.h"
#include "fuzz/require.h"

#include <algorithm>
#include <array>
#include <cstring>

using namespace ccrypto;

namespace {

using Bytes = std::span<const std::uint8_t>;

bool Same(const element& value, Bytes bytes)
{
    return std::ranges::equal(value.bytes(), bytes);
}

/// A point that is taken comes out as it went in, in the same form, and the other form of it is taken, too.
void DecodePoint(algorithm::Id curve, Bytes bytes)
{
    const auto key = CCryptoEC::FromPublic(curve, bytes);
    if (key == nullptr)
        return;
    const bool compressed = key->curve().signs && bytes.size() == key->curve().fieldBytes + 1;
    Require(Same(key->publicPoint(compressed), bytes));
    const auto again = CCryptoEC::FromPublic(curve, key->publicPoint(!compressed).bytes());
    Require(again != nullptr && again->samePublic(*key));
}

/// What is read as a signature is written as the same bytes; and nobody signed it.
void DecodeSignature(const CurveFacts& facts, Bytes bytes)
{
    const element pair = EcdsaDerToPair(bytes, facts.orderBytes);
    if (pair.isEmpty())
        return;
    Require(pair.length() == 2 * facts.orderBytes && Same(EcdsaPairToDer(pair.bytes()), bytes));
    std::array<std::uint8_t, 66> scalar{};
    scalar[facts.orderBytes - 1] = 5;
    const auto key = CCryptoEC::FromPrivate(facts.id, Bytes(scalar).first(facts.orderBytes));
    // Of a digest that depends on the signature.
    std::array<std::uint8_t, 32> digest{};
    std::memcpy(digest.data(), pair.data() + 1, std::min<std::size_t>(digest.size(), pair.length() - 1));
    Require(!facts.signs || !key->verifyHash(digest, bytes, SignatureForm::der));
}

} // namespace

/// The first byte names the curve, the second one what the rest is to be.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const CurveFacts& facts = Curves()[data[0] % Curves().size()];
    const Bytes rest(data + 2, size - 2);
    if (data[1] % 2 == 0)
        DecodePoint(facts.id, rest);
    else
        DecodeSignature(facts, rest);
    return 0;
}
