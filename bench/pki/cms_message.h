#pragma once

#include <cstdint>
#include <vector>

namespace ccrypto {

/// DER: a signed message with its content and the certificates below the anchor, and the anchor.
struct CmsMessage {
    std::vector<std::uint8_t> message;
    std::vector<std::uint8_t> anchor;
};

/// \param name of a file of messages. Ends the program when the data is not there.
[[nodiscard]] CmsMessage ReadCmsMessage(const char* name);

} // namespace ccrypto
