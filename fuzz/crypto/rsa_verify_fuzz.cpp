#include "core/base/algorithm.h"
#include "crypto/bigint/big_integer.h"
#include "crypto/rsa/rsa.h"
#include "fuzz/require.h"

#include <algorithm>
#include <array>
#include <vector>

using namespace ccrypto;

namespace {

using Bytes = std::span<const std::uint8_t>;
using Number = CCryptoBigInteger;

/// Two bytes of length, one for the count of bytes that follow, which are repeated to the length: a short input makes an enormous
/// number.
element TakeNumber(Bytes& rest)
{
    if (rest.size() < 3)
        return {};
    const std::uint32_t length = rest[0] | std::uint32_t{rest[1]} << 8;
    const Bytes pattern = rest.subspan(3, std::min<std::size_t>(rest[2], rest.size() - 3));
    rest = rest.subspan(3 + pattern.size());
    element number;
    number.resize(length);
    for (std::uint32_t i = 0; i < length; ++i)
        number.data()[i] = pattern.empty() ? std::uint8_t{0xFF} : pattern[i % pattern.size()];
    return number;
}

/// number^exponent by squarings and divisions.
Number Power(const Number& number, const Number& exponent, const Number& modulus)
{
    Number power(1);
    for (std::uint32_t bit = exponent.bits(); bit-- > 0;) {
        power = (power * power) % modulus;
        if (exponent.bit(bit))
            power = (power * number) % modulus;
    }
    return power;
}

/// RFC 8017, 8.2.2 over a DigestInfo, with the block written down byte by byte.
bool VerifiesNaively(const Number& n, const Number& e, Bytes digestInfo, Bytes signature)
{
    const std::size_t length = (n.bits() + 7) / 8;
    const Number s = Number::FromBytes(signature);
    if (signature.size() != length || s >= n || digestInfo.empty() || digestInfo.size() + 11 > length)
        return false;
    std::vector<std::uint8_t> block = {0, 1};
    block.resize(length - digestInfo.size() - 1, 0xFF);
    block.push_back(0);
    block.insert(block.end(), digestInfo.begin(), digestInfo.end());
    return Power(s, e, n) == Number::FromBytes(block);
}

} // namespace

/// A modulus, an exponent, a signature and a message: keys that are taken are within the limits, and both ways to verify agree.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Bytes rest(data, size);
    const element modulus = TakeNumber(rest);
    const element exponent = TakeNumber(rest);
    element signature = TakeNumber(rest);
    const auto key = CCryptoRSA::FromPublic(modulus, exponent);
    if (key == nullptr)
        return 0;
    const Number n = Number::FromBytes(modulus.bytes());
    const Number e = Number::FromBytes(exponent.bytes());
    Require(n.isOdd() && n.bits() >= CCryptoRSA::minBits && n.bits() <= CCryptoRSA::maxBits);
    Require(e.isOdd() && e.bits() >= 2 && e.bits() <= 64);
    Require(Number::FromBytes(key->modulus().bytes()) == n && Number::FromBytes(key->publicExponent().bytes()) == e);

    const Number s = Number::FromBytes(signature.bytes());
    const element opened = key->publicOperation(signature.bytes());
    const bool fits = signature.length() <= key->bytes() && s < n;
    Require(opened.isEmpty() != fits);
    Require(!fits || Number::FromBytes(opened.bytes()) == Power(s, e, n));
    Require(key->verifyDigestInfo(rest, signature.bytes()) == VerifiesNaively(n, e, rest, signature.bytes()));
    // What a signature opens to is no digest of SHA-256; with salts of any length, whatever they are.
    const Bytes digest = Bytes(data, size).first(std::min<std::size_t>(size, 32));
    Require(!key->verifyPKCS1(algorithm::sha256, digest, signature.bytes()));
    for (const std::int32_t salt : {CCryptoRSAPadding::saltOfAnyLength, CCryptoRSAPadding::saltAsLongAsDigest, 0, 1 << 30})
        Require(!key->verifyPSS({.hash = algorithm::sha256, .saltLength = salt}, digest, signature.bytes()));
    return 0;
}
