#pragma once

#include "crypto/mac/mac.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace ccrypto {

/// A kind of code that the command line knows by name.
struct MACAlgorithm {
    bool (*isNamed)(std::string_view name);
    /// For a name of its own. \return null when the key is not right, with the reason.
    std::unique_ptr<ICryptoMAC> (*create)(std::string_view name, std::span<const std::uint8_t> key, std::string& reason);
};

/// \return null when there is none of this name.
const MACAlgorithm* FindMACAlgorithm(std::string_view name);

} // namespace ccrypto
