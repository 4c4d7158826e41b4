#include "deflate/deflate_stream.h"
#include "fuzz/require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

using namespace ccrypto;

// Input: one byte (bit 0 chooses GZIP, the others the size of the pieces), then the packed data.

namespace {

constexpr InflateLimits sizeAlone{.maxOutput = 1 << 20, .maxRatio = 0};
constexpr InflateLimits sizeAndRatio{.maxOutput = 300000, .maxRatio = 20, .freeOutput = 100000};

struct Outcome {
    bool good = true;
    const char* reason = "";
    std::uint64_t offset = 0;
    std::vector<std::uint8_t> output;
};

Outcome Unpack(std::span<const std::uint8_t> packed, DeflateFormat format, const InflateLimits& limits, std::size_t pieceSize)
{
    Outcome outcome;
    CDeflateStream stream;
    const auto append = [&](std::span<const std::uint8_t> piece) {
        outcome.output.insert(outcome.output.end(), piece.begin(), piece.end());
        return true;
    };
    stream.StartInflate(format, append, limits);
    while (outcome.good && !packed.empty()) {
        const std::size_t count = std::min(pieceSize, packed.size());
        outcome.good = stream.Write(packed.first(count));
        packed = packed.subspan(count);
    }
    outcome.good = outcome.good && stream.Finish();
    outcome.reason = stream.reason();
    outcome.offset = stream.reasonOffset();
    return outcome;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::span<const std::uint8_t> packed(input + 1, size - 1);
    const DeflateFormat format = (input[0] & 1) != 0 ? DeflateFormat::gzip : DeflateFormat::raw;

    // How the input is cut changes neither the verdict nor the output, good or not.
    for (const InflateLimits& limits : {sizeAlone, sizeAndRatio}) {
        const Outcome whole = Unpack(packed, format, limits, SIZE_MAX);
        const Outcome pieces = Unpack(packed, format, limits, input[0] / 2U + 1);
        Require(whole.good == (whole.reason[0] == '\0') && whole.offset <= packed.size());
        Require(whole.output.size() <= limits.maxOutput);
        Require(whole.good == pieces.good && std::string_view(whole.reason) == pieces.reason && whole.offset == pieces.offset);
        Require(whole.output == pieces.output);
    }
    return 0;
}
