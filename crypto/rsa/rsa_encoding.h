#pragma once

#include "core/base/algorithm.h"
#include "crypto/base/constant_time.h"
#include "crypto/random/random.h"
#include "crypto/rsa/rsa.h"

#include <cstdint>
#include <span>

/// The encodings of RFC 8017, 7 and 9: bytes that are raised to a power, from a digest or a message, and back. An encoded block is
/// as long as the modulus; where an encoding is one byte shorter, the first byte is zero.
namespace ccrypto::rsa_encoding {

/// Fills `block`. \return false, logged, for a hash without a prefix, a digest of another length than the hash's, or a block
/// too short for them.
[[nodiscard]] bool EncodePKCS1Signature(std::span<std::uint8_t> block, algorithm::Id hash, std::span<const std::uint8_t> digest);

/// The same for a DigestInfo that is ready. \return false, logged, for none and for one that is too long for the block.
[[nodiscard]] bool EncodeDigestInfo(std::span<std::uint8_t> block, std::span<const std::uint8_t> digestInfo);

/// `bits` are those of the modulus. \return false, logged.
[[nodiscard]] bool EncodePSS(std::span<std::uint8_t> block, std::uint32_t bits, const CCryptoRSAPadding& padding,
                             std::span<const std::uint8_t> digest, ICryptoRandom& random);
/// Changes the block. Nothing here is secret.
[[nodiscard]] bool VerifyPSS(std::span<std::uint8_t> block, std::uint32_t bits, const CCryptoRSAPadding& padding,
                             std::span<const std::uint8_t> digest);

constexpr std::uint32_t overheadOfPKCS1 = 11;

/// \return false, logged, when the message is too long or there are no random bytes.
[[nodiscard]] bool EncodePKCS1Message(std::span<std::uint8_t> block, std::span<const std::uint8_t> message, ICryptoRandom& random);
/// Whether the block, whose content is secret, is a padded message. `length` is that of the message at the end of the block, 0 when
/// the padding is wrong.
[[nodiscard]] constant_time::Mask DecodePKCS1Message(std::span<const std::uint8_t> block, std::uint64_t& length);

[[nodiscard]] bool EncodeOAEP(std::span<std::uint8_t> block, const CCryptoRSAPadding& padding,
                              std::span<const std::uint8_t> message, ICryptoRandom& random);
/// Changes the block. `good` and `length` are those of DecodePKCS1Message. \return false, logged, and neither is set, when the
/// parameters do not suit the block.
[[nodiscard]] bool DecodeOAEP(std::span<std::uint8_t> block, const CCryptoRSAPadding& padding, constant_time::Mask& good,
                              std::uint64_t& length);

} // namespace ccrypto::rsa_encoding
