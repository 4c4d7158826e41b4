#include "crypto/dsa/dsa.h"
#include "fuzz/require.h"

#include <algorithm>
#include <array>
#include <vector>

using namespace ccrypto;

namespace {

using Bytes = std::span<const std::uint8_t>;

/// A key with a prime of 1024 bits, whose private value nobody kept.
constexpr const char* sound[] = {
    "839b3b2593232479e46ccbcbd6e6fa7ed403306f80a1ff429f52fb8055b1daa1fbdeba95de77f22edf17d70bd9ab0302749d3a85"
    "c7a803bf2646d009e77046aa4c724f0f76a4df769ce9e2a4b9ae707595a0cac8c7b061cca2ad251f6f41451851da5c3eae5c8050"
    "2a0a50cb43b4d60ec49bd5d74d1113a4df4564f36cf5aa87",
    "c4d7724eb933249a32c4a9737beed2bdec6e9f7b",
    "4abbc0a40ce417d0dd19ccfb274e8f5abe3adf946078a49b3a82b93e3d155cab935c985d106923351516abeeea0ecc265fbf1b5a"
    "dab1f8a38d34a0de39569ba58fc263740adab163506a8cf21bc8efae8dd5020d10061d7f49f2d1aaf813b9e472ee428f5528475b"
    "28dc6a7ca1912ef571b620939f3d1ebab70d67cee581366f",
    "6a43e2695a1688b3ea364b9bc966cd0454bebec48f29f05c39a01fab95fa1ce6e82f6ee248785f1ef4edc531e6b72974c043d135"
    "b2c010f3a4e26b29967a0c783ea54f36d919e4ca0e20b550ce209cc99bb320502f09b2482eac0842fad379ab51db7a6d45bc7cd0"
    "7613efe0bdc0676691f7bc33c06723504aa0442b03fb7eee",
};

/// A number as the input describes it: two bytes of length, one that says whether the number is that of the sound key with the
/// bytes of the input laid over it (by exclusive or), and up to 20 bytes, which are repeated to the length. So a short input makes
/// an enormous number.
element TakeNumber(Bytes& rest, const element& base)
{
    if (rest.size() < 3)
        return base;
    const std::uint32_t length = rest[0] | std::uint32_t{rest[1]} << 8;
    const std::uint8_t kind = rest[2];
    rest = rest.subspan(3);
    const Bytes pattern = rest.first(std::min<std::size_t>({std::size_t{kind} >> 2, 20, rest.size()}));
    rest = rest.subspan(pattern.size());
    element number = base;
    if ((kind & 1) == 0) {
        for (std::size_t i = 0; i < pattern.size(); ++i)
            number.data()[(length + i) % number.length()] ^= pattern[i];
        return number;
    }
    number.resize(length);
    for (std::uint32_t i = 0; i < length; ++i)
        number.data()[i] = pattern.empty() ? std::uint8_t{0xFF} : pattern[i % pattern.size()];
    return number;
}

} // namespace

/// Four numbers and a signature. A key that is taken has numbers as the header promises, and does not verify what nobody signed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::array<element, 4> base = [] {
        std::array<element, 4> numbers;
        for (std::size_t i = 0; i < numbers.size(); ++i)
            numbers[i] = CCryptoBigInteger::FromHex(sound[i]).toBytes();
        return numbers;
    }();
    Bytes rest(data, size);
    CCryptoDSANumbers numbers;
    numbers.prime = TakeNumber(rest, base[0]);
    numbers.order = TakeNumber(rest, base[1]);
    numbers.generator = TakeNumber(rest, base[2]);
    numbers.publicValue = TakeNumber(rest, base[3]);
    const auto key = CCryptoDSA::FromPublic(numbers);
    if (key == nullptr)
        return 0;
    Require(key->bits() >= CCryptoDSA::minBits && key->bits() <= CCryptoDSA::maxBits);
    Require(key->orderBytes() == 20 || key->orderBytes() == 28 || key->orderBytes() == 32);
    // The bits of an order count, as p - 1 is a multiple of it.
    const CCryptoBigInteger p = CCryptoBigInteger::FromBytes(key->numbers().prime.bytes());
    const CCryptoBigInteger q = CCryptoBigInteger::FromBytes(key->numbers().order.bytes());
    Require(((p - CCryptoBigInteger(1)) % q).isZero());
    constexpr std::array<std::uint8_t, 20> digest = {1, 2, 3};
    Require(!key->verifyHash(digest, rest, SignatureForm::der));
    Require(!key->verifyHash(digest, rest, SignatureForm::pair));
    return 0;
}
