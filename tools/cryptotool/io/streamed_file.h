#pragma once

#include "tools/cryptotool/cli/console.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace ccrypto {

/// Hands a file, or standard input for "-", to `take` piece by piece, with a progress bar where it takes long. \return false with
/// `reason`.
bool StreamFile(Console& console, const std::string& name, const std::function<void(std::span<const std::uint8_t>)>& take,
                std::string& reason);

} // namespace ccrypto
