#pragma once

#include "crypto/cipher/block_cipher.h"

#include <algorithm>
#include <cstring>

namespace ccrypto {

/// A block cipher of 16 bytes that only turns bits, and says whether it has a key.
class SpyCipher final : public ICryptoBlockCipher {
public:
    explicit SpyCipher(bool& hasKey) : hasKey_(hasKey) {}

    [[nodiscard]] bool setKey(std::span<const std::uint8_t>) override { return hasKey_ = true; }
    void clearKey() override { hasKey_ = false; }
    std::size_t blockSize() const override { return 16; }
    void encrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const override
    {
        std::transform(in, in + 16 * blocks, out, [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
    }
    void decrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const override { encrypt(out, in, blocks); }

private:
    bool& hasKey_;
};

} // namespace ccrypto
