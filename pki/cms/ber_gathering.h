#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <span>

namespace ccrypto {

constexpr std::uint32_t maxMessageSize = 256u << 20; ///< bytes of one message
constexpr std::uint32_t maxMessageDepth = 128;       ///< levels of one message
/// Elements of one message, pieces of content not counted: each becomes a node of a tree.
constexpr std::uint32_t maxMessageElements = 2'000'000;

/// A message as DER has it: what is written in one pass has indefinite lengths, lengths of more octets than needed, and content
/// cut into pieces (X.690, 8.7.3), none of which the templates take. Each piece of an OCTET STRING is put after the one before.
///
/// Certificates and revocation lists of signed data are copied unchanged and must have definite lengths: what their issuers signed
/// is octets. Zeros after the message are ignored: a signature in a document fills a place of fixed size.
///
/// One pass; time and memory grow with the length of the input alone.
/// \return empty, logged, for what is not BER, for elements cut into pieces that are not OCTET STRINGs, for octets other than zero
/// after the message, and beyond the limits above.
[[nodiscard]] element GatherBer(std::span<const std::uint8_t> message);

} // namespace ccrypto
