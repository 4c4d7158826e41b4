#pragma once

#include "crypto/rsa/rsa.h"
#include "tests/crypto/base/test_bytes.h"

#include <memory>

namespace ccrypto {

/// The numbers of the private key that a vector stands under.
inline CCryptoRSANumbers NumbersOf(const TestVector& vector)
{
    const auto number = [&](const char* name) { return ElementOf(vector.bytes(name)); };
    return {number("Modulus"), number("PublicExponent"), number("PrivateExponent"), number("Prime1"),
            number("Prime2"),  number("Exponent1"),      number("Exponent2"),       number("Coefficient")};
}

/// A private key of 1024 bits for tests that need any.
inline const CCryptoRSA& AnyKey()
{
    static const std::unique_ptr<CCryptoRSA> key = CCryptoRSA::FromPrivate(NumbersOf(ReadVectors("rsa_sign.txt").front()));
    return *key;
}

} // namespace ccrypto
