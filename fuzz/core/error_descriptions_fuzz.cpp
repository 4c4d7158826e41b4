#include "core/diagnostics/error_descriptions.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace ccrypto;

/// Any document: it is read or refused, and what is read obeys the bounds.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count)
{
    ErrorDescriptions descriptions;
    const bool read = ParseErrorDescriptions({reinterpret_cast<const char*>(bytes), count}, descriptions);
    if (!read && !descriptions.empty())
        std::abort();
    for (const auto& [code, text] : descriptions) {
        if (text.empty() || text.size() > 255)
            std::abort();
    }
    return 0;
}
