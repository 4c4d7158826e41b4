#pragma once

#include "core/base/algorithm.h"
#include "core/text/element.h"

#include <cstdint>
#include <span>
#include <string_view>

/// Keys from passwords and from other keys. Hash functions are named by their ids, or by those of the HMACs over them: MD5, SHA-1
/// and SHA-2, and for PBKDF2, HKDF and X9.63 also SHA-3.
///
/// Each gives raw bytes, or none, with the reason logged: for any other hash function, for 0 or too many iterations,
/// and for texts and keys whose length is out of bounds. What they compute with is wiped; their time depends on lengths and
/// iterations only.
class CCryptoKeyDerivation {
public:
    /// Iterations of one key, those of all its digests together.
    static constexpr std::uint32_t maxIterations = 50'000'000;
    /// Of a password, a salt or other input, in bytes.
    static constexpr std::uint32_t maxInput = 65536;
    /// Of a key from a password, in bytes.
    static constexpr std::uint32_t maxKey = 4096;

    /// What a key is for (RFC 7292, B.3).
    enum class PKCS12Use : std::uint8_t { key = 1, initializationVector = 2, mac = 3 };

    using Bytes = std::span<const std::uint8_t>;

    /// Whether PBKDF2 or PKCS12 would give a key of `length` bytes for a password within the bounds. The reason is logged when not.
    [[nodiscard]] static bool Allows(ccrypto::algorithm::Id hashId, Bytes salt, std::uint32_t iterations, std::uint32_t length);

    /// RFC 8018, 5.1. \param length at most the digest's.
    [[nodiscard]] static element PBKDF1(ccrypto::algorithm::Id hashId, Bytes password, Bytes salt, std::uint32_t iterations,
                                        std::uint32_t length);

    /// RFC 8018, 5.2, with the HMAC over the hash.
    [[nodiscard]] static element PBKDF2(ccrypto::algorithm::Id hashId, Bytes password, Bytes salt, std::uint32_t iterations,
                                        std::uint32_t length);

    /// RFC 7292, appendix B. \param password as PKCS12Password() gives it; may be empty.
    [[nodiscard]] static element PKCS12(ccrypto::algorithm::Id hashId, PKCS12Use use, Bytes password, Bytes salt,
                                        std::uint32_t iterations, std::uint32_t length);
    /// UTF-8 text as UTF-16, big-endian, followed by two zero bytes (RFC 7292, B.1). \return empty, logged, for text that is
    /// not valid.
    [[nodiscard]] static element PKCS12Password(std::string_view text);

    /// RFC 5869, 2.2: a key as long as the digest. An empty `salt` is the same as a digest of zeros.
    [[nodiscard]] static element HKDFExtract(ccrypto::algorithm::Id hashId, Bytes salt, Bytes secret);
    /// RFC 5869, 2.3. \param key at least as long as the digest. \param length 1 to 255 digests.
    [[nodiscard]] static element HKDFExpand(ccrypto::algorithm::Id hashId, Bytes key, Bytes info, std::uint32_t length);
    /// Extract, then expand.
    [[nodiscard]] static element HKDF(ccrypto::algorithm::Id hashId, Bytes salt, Bytes secret, Bytes info, std::uint32_t length);

    /// ANSI X9.63, 5.6.3 (SEC 1, 3.6.1; BSI TR-03111, 4.3.3): digests of the secret, a counter from 1 and `info`. \param length 1
    /// to maxKey bytes.
    [[nodiscard]] static element X963(ccrypto::algorithm::Id hashId, Bytes secret, Bytes info, std::uint32_t length);
};
