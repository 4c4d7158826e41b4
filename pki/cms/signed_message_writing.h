#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace ccrypto {

using OctetSpan = std::span<const std::uint8_t>;

/// What a SignerInfo of version 1 is written of; DER unless said otherwise.
struct SignerOctets {
    OctetSpan issuer;             ///< the SEQUENCE of the name
    OctetSpan serialNumber;       ///< the octets of the INTEGER
    OctetSpan digestAlgorithm;    ///< AlgorithmIdentifier
    OctetSpan signedAttributes;   ///< the SET
    OctetSpan signatureAlgorithm; ///< AlgorithmIdentifier
    OctetSpan signature;          ///< not DER
    OctetSpan unsignedAttributes; ///< the SET; empty for none
};

/// What SignedData of version 1, over content of the type data, is written of; DER unless said otherwise.
struct SignedDataOctets {
    OctetSpan digestAlgorithms;       ///< of AlgorithmIdentifier, one after the other
    std::optional<OctetSpan> content; ///< not DER; none when it is detached
    std::vector<OctetSpan> certificates;
    std::vector<OctetSpan> crls;
    OctetSpan signerInfos; ///< of SignerInfo, one after the other
};

/// SignerInfo. Empty, logged, when issuer or attributes are not what they should be.
[[nodiscard]] element WriteSigner(const SignerOctets& signer);

enum class SignedDataForm { bare, message };

/// SignedData, or a ContentInfo with it. Certificates and lists are sorted (X.690, 11.6) and otherwise unchanged: they are signed
/// as they are.
[[nodiscard]] element WriteSignedData(const SignedDataOctets& data, SignedDataForm form);

} // namespace ccrypto
