#pragma once

#include "core/text/element.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace ccrypto {

/// The start of an encrypted file, which says how to decrypt it:
///
///     "CCIPHER" 0x01
///     1 byte   0 for a key, 1 for a password
///     4 bytes  iterations of PBKDF2 with HMAC-SHA-256, big-endian; 0 for a key
///     16 bytes salt; zeros for a key
///     1 byte   length of the initialisation vector, and its bytes
///     1 byte   length of the cipher's name, and its bytes ("aes-256-gcm")
///
/// Galois/counter mode authenticates these bytes along with the text.
struct CipherHeader {
    static constexpr std::size_t saltSize = 16;
    /// Without vector and name.
    static constexpr std::size_t fixedSize = 8 + 1 + 4 + saltSize;
    static constexpr std::size_t maxSize = fixedSize + 1 + 255 + 1 + 255;

    bool hasPassword = false;
    std::uint32_t iterations = 0;
    std::uint8_t salt[saltSize] = {};
    element iv;
    std::string cipher;

    /// \return the bytes.
    element write() const;
    /// From the start of a file. \return the length of the header, 0 when they are not one.
    std::size_t read(std::span<const std::uint8_t> bytes);
};

} // namespace ccrypto
