#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace ccrypto {

/// A message authentication code of one message after another, under one key.
class StreamedMAC {
public:
    virtual ~StreamedMAC() = default;
    virtual void update(std::span<const std::uint8_t> bytes) = 0;
    /// The code of what was taken; nothing is taken yet afterwards.
    virtual element final() = 0;
};

/// A kind of code that the command line knows by name.
struct MACAlgorithm {
    bool (*isNamed)(std::string_view name);
    /// For a name of its own. \return null when the key is not right, with the reason.
    std::unique_ptr<StreamedMAC> (*create)(std::string_view name, std::span<const std::uint8_t> key, std::string& reason);
};

/// \return null when there is none of this name.
const MACAlgorithm* FindMACAlgorithm(std::string_view name);

} // namespace ccrypto
