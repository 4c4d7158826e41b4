#include "deflate/deflate_stream.h"
#include "fuzz/require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

using namespace ccrypto;

// Input: one byte (the level in its low half, bit 4 repeats the data beyond the window, bit 5 packs it in pieces), then the data.

namespace {

constexpr std::size_t repeatedSize = 70000;
constexpr std::size_t pieceSize = 61;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size)
{
    if (size == 0)
        return 0;
    const int level = input[0] % 16 % 9 + 1;
    std::vector<std::uint8_t> plain(input + 1, input + size);
    if ((input[0] & 16) != 0 && !plain.empty()) {
        for (std::uint8_t round = 1; plain.size() < repeatedSize; ++round) {
            // Not quite the same each time.
            for (std::size_t index = 0; index + 1 < size; ++index)
                plain.push_back(index % 64 == round % 64 ? static_cast<std::uint8_t>(plain[index] + round) : plain[index]);
        }
    }

    std::vector<std::uint8_t> packed;
    CDeflateStream stream;
    const auto append = [&](std::span<const std::uint8_t> piece) {
        packed.insert(packed.end(), piece.begin(), piece.end());
        return true;
    };
    Require(stream.StartDeflate(DeflateFormat::gzip, append, level));
    const std::size_t step = (input[0] & 32) != 0 ? pieceSize : plain.size() + 1;
    for (std::size_t start = 0; start < plain.size(); start += step)
        Require(stream.Write(std::span(plain).subspan(start, std::min(step, plain.size() - start))));
    Require(stream.Finish());

    element unpacked;
    Require(CDeflateStream::Inflate(packed, DeflateFormat::gzip, unpacked, {.maxRatio = 0}));
    Require(std::equal(plain.begin(), plain.end(), unpacked.data(), unpacked.data() + unpacked.length()));
    return 0;
}
