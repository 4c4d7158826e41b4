#pragma once

#include "core/text/element.h"
#include "crypto/base/constant_time.h"
#include "crypto/random/random.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ccrypto {

using Bytes = std::vector<std::uint8_t>;

/// Bytes 0x5A that valgrind takes for undefined.
inline Bytes Secret(std::size_t length)
{
    Bytes bytes(length, 0x5A);
    constant_time::ClassifyBytes(bytes.data(), bytes.size());
    return bytes;
}

/// The bytes, which may be known now.
inline Bytes Known(element bytes)
{
    constant_time::DeclassifyBytes(bytes.data(), bytes.length());
    return {bytes.data(), bytes.data() + bytes.length()};
}

/// Random bytes that nobody may know.
class SecretRandom final : public ICryptoRandom {
public:
    explicit SecretRandom(ICryptoRandom& source) : source_(source) {}

    bool generate(std::span<std::uint8_t> bytes) override
    {
        const bool generated = source_.generate(bytes);
        constant_time::ClassifyBytes(bytes.data(), bytes.size());
        return generated;
    }

private:
    ICryptoRandom& source_;
};

} // namespace ccrypto
