#pragma once

#include "core/text/element.h"
#include "pki/x509/x509_value.h"

#include <cstdint>

namespace ccrypto {

/// The nonce of a request or response (RFC 9654).
struct OcspNonce {
    static constexpr std::uint32_t usualLength = 32;
    static constexpr std::uint32_t maxLength = 128;

    enum class State {
        absent,
        present,
        malformed, ///< it stands twice, or is not an OCTET STRING of 1 to 128 bytes
    };
    State state = State::absent;
    element octets; ///< without the inner OCTET STRING
};
[[nodiscard]] OcspNonce ReadOcspNonce(const CCrypto_X509_ValueList& extensions);
/// \return false, logged, for what is not 1 to 128 bytes.
[[nodiscard]] bool AddOcspNonce(CCrypto_X509_ValueList& extensions, const element& nonce);
/// Random octets for a nonce; empty, logged, when the random source fails.
[[nodiscard]] element NewOcspNonce(std::uint32_t length = OcspNonce::usualLength);

/// Whether an extension is there twice, which no request, response or part of one may have (RFC 5280, 4.2).
[[nodiscard]] bool HasDoubledOcspExtension(const CCrypto_X509_ValueList& extensions);
/// Whether an extension of a request or response is critical and means nothing to us: what it stands in must then not be used.
[[nodiscard]] bool HasUnknownCriticalOcspExtension(const CCrypto_X509_ValueList& extensions);

} // namespace ccrypto
