#pragma once

#include "crypto/hash/hash.h"
#include "crypto/rsa/rsa.h"
#include "tests/crypto/base/test_bytes.h"

#include <algorithm>
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

inline Bytes DigestOf(ICryptoHash& hash, const Bytes& message)
{
    return BytesOf(hash.digestOf(message));
}

/// "Random" bytes from a vector, each once; after that it fails.
class ToldBytes : public ICryptoRandom {
public:
    explicit ToldBytes(Bytes bytes) : bytes_(std::move(bytes)) {}

    bool generate(std::span<std::uint8_t> bytes) override
    {
        if (bytes.size() > bytes_.size() - used_)
            return false;
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(used_), bytes.size(), bytes.begin());
        used_ += bytes.size();
        return true;
    }

private:
    Bytes bytes_;
    std::size_t used_ = 0;
};

} // namespace ccrypto
