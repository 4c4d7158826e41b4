#pragma once

#include "crypto/base/cpu_features.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ccrypto {

/// One line of the table of speeds: an algorithm as one variant of its code computes it.
struct SpeedRow {
    /// What is done once.
    using Call = std::function<void()>;

    std::string algorithm; ///< "SHA-256", "RSA-2048 sign"
    std::string variant;   ///< "portable"
    bool isUsed;           ///< the library uses it here
    bool countsBytes;      ///< a call takes a text; otherwise it is one operation
    /// Gives the call for a text of `size` bytes; what it needs is made now. Empty when that failed.
    std::function<Call(std::size_t size)> prepare;
};

using SpeedRows = std::vector<SpeedRow>;

/// What is signed.
constexpr std::array<std::uint8_t, 32> digestToSign = {1, 2, 3};

void AddHashRows(SpeedRows& rows);
void AddCipherRows(SpeedRows& rows);
void AddRsaRows(SpeedRows& rows);
void AddCurveRows(SpeedRows& rows);

/// Calls add(variant, isUsed) with each variant that this process may use.
template <typename Calls, typename Add>
void ForEachUsable(std::span<const Variant<Calls>> variants, const Add& add)
{
    const Variant<Calls>* const used = &ChooseVariant<Calls>(variants);
    for (const Variant<Calls>& variant : variants)
        if ((variant.needs & ~cpu::AllowedFeatures()) == 0)
            add(variant, &variant == used);
}

} // namespace ccrypto
