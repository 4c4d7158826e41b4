#pragma once

namespace ccrypto {

/// A text that may be missing.
constexpr const char* OrEmpty(const char* text)
{
    return text != nullptr ? text : "";
}

} // namespace ccrypto
