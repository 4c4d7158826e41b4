#include "crypto/cipher/block_cipher.h"

#include "core/memory/wiped.h"
#include "crypto/base/block_bytes.h"

#include <algorithm>
#include <array>
#include <cstring>

using namespace ccrypto;

namespace {

/// So many bytes are enciphered by one call, so that a cipher that takes many blocks side by side has them.
constexpr std::size_t batchBytes = 2048;

using Batch = Wiped<std::array<std::uint8_t, batchBytes>>;
using Block = Wiped<std::array<std::uint8_t, maxCipherBlock>>;

} // namespace

void ICryptoBlockCipher::encryptCbc(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain) const
{
    const std::size_t size = blockSize();
    for (; blocks > 0; --blocks, in += size, out += size) {
        block_bytes::Xor(chain, chain, in, size);
        encrypt(chain, chain, 1);
        std::memcpy(out, chain, size);
    }
}

void ICryptoBlockCipher::decryptCbc(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain) const
{
    const std::size_t size = blockSize();
    Batch plain;
    Block next;
    while (blocks > 0) {
        const std::size_t count = std::min(blocks, batchBytes / size);
        const std::size_t length = count * size;
        decrypt(plain.data(), in, count);
        std::memcpy(next.data(), in + length - size, size);
        block_bytes::Xor(plain.data() + size, plain.data() + size, in, length - size);
        block_bytes::Xor(plain.data(), plain.data(), chain, size);
        std::memcpy(out, plain.data(), length);
        std::memcpy(chain, next.data(), size);
        blocks -= count;
        in += length;
        out += length;
    }
}

void ICryptoBlockCipher::applyCounter(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* counter) const
{
    const std::size_t size = blockSize();
    Batch stream;
    while (blocks > 0) {
        const std::size_t count = std::min(blocks, batchBytes / size);
        for (std::size_t i = 0; i < count; ++i) {
            std::memcpy(stream.data() + i * size, counter, size);
            block_bytes::Increment(counter, size);
        }
        encrypt(stream.data(), stream.data(), count);
        block_bytes::Xor(out, in, stream.data(), count * size);
        blocks -= count;
        in += count * size;
        out += count * size;
    }
}
