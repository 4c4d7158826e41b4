#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <span>

namespace ccrypto {

/// How the two numbers of a signature of ECDSA or DSA are written.
enum class SignatureForm {
    pair, ///< r and s, big-endian, each as long as the order
    der,  ///< SEQUENCE { r INTEGER, s INTEGER } (RFC 3279, 2.2.3)
};

/// The DER form of a pair of two big-endian numbers of one length, 1 to 72 bytes each. \return empty, logged, for anything else.
[[nodiscard]] element EcdsaPairToDer(std::span<const std::uint8_t> pair);

/// The pair of two numbers of `length` bytes of a signature in DER. \return empty, logged, when it is not exactly the DER of two
/// numbers that are positive and fit.
[[nodiscard]] element EcdsaDerToPair(std::span<const std::uint8_t> der, std::uint32_t length);

/// The pair of two numbers of `length` bytes of a signature in that form. \return empty, logged, when it is not one.
[[nodiscard]] element SignaturePair(std::span<const std::uint8_t> signature, SignatureForm form, std::uint32_t length);

} // namespace ccrypto
