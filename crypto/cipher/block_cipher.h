#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace ccrypto {

/// The block size of all ciphers here is not above this, in bytes.
constexpr std::size_t maxCipherBlock = 16;

} // namespace ccrypto

/// A cipher of whole blocks under one key, and the chains of blocks that a processor can speed up. Modes of operation that take
/// bytes are built on it (crypto/cipher/cipher.h).
///
/// `out` and `in` hold `blocks` whole blocks each; they are the same bytes or do not overlap. Without a key all of it computes
/// nonsense. The key is wiped at the end. Several threads may use one cipher whose key is set.
class ICryptoBlockCipher {
public:
    virtual ~ICryptoBlockCipher() = default;

    /// \return false, logged, for a length that the cipher has no keys of; the cipher then has no key.
    [[nodiscard]] virtual bool setKey(std::span<const std::uint8_t> key) = 0;
    /// Wipes the key.
    virtual void clearKey() = 0;
    /// As ICryptoCipher::setEffectiveKeyBits, for the next key. \return false for all ciphers but RC2.
    [[nodiscard]] virtual bool setEffectiveKeyBits(std::uint32_t) { return false; }
    /// 8 or 16 bytes.
    virtual std::size_t blockSize() const = 0;

    virtual void encrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const = 0;
    virtual void decrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const = 0;

    /// Cipher block chaining (SP 800-38A, 6.2). `chain` is the initialisation vector, and becomes the last block of cipher text.
    virtual void encryptCbc(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain) const;
    virtual void decryptCbc(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain) const;
    /// Exclusive-or with the encrypted counter blocks (SP 800-38A, 6.5). The counter is the whole block as one big-endian number,
    /// and is left one past the last that was used.
    virtual void applyCounter(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* counter) const;

protected:
    ICryptoBlockCipher() = default;
    ICryptoBlockCipher(const ICryptoBlockCipher&) = default;
    ICryptoBlockCipher& operator=(const ICryptoBlockCipher&) = default;
};
