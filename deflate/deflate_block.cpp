#include "deflate/deflate_block.h"

#include "deflate/code_lengths_text.h"
#include "deflate/huffman.h"

#include <algorithm>

namespace ccrypto::deflate {
namespace {

/// The codes that a block is written with.
struct Codes {
    Wiped<std::array<std::uint8_t, literalCodes>> literalLengths{};
    Wiped<std::array<std::uint16_t, literalCodes>> literalWords{};
    Wiped<std::array<std::uint8_t, distanceCodes>> distanceLengths{};
    Wiped<std::array<std::uint16_t, distanceCodes>> distanceWords{};

    void makeWords()
    {
        MakeCodeWords(literalLengths, literalWords);
        MakeCodeWords(distanceLengths, distanceWords);
    }
    std::uint64_t bits(const Frequencies& frequencies) const
    {
        std::uint64_t total = 0;
        for (std::size_t code = 0; code < usedLiteralCodes; ++code)
            total += std::uint64_t{frequencies.literals[code]} * literalLengths[code];
        for (std::size_t code = 0; code < lengthRuns.size(); ++code)
            total += std::uint64_t{frequencies.literals[firstLengthCode + code]} * lengthRuns[code].extraBits;
        for (std::size_t code = 0; code < usedDistanceCodes; ++code)
            total += std::uint64_t{frequencies.distances[code]} * (distanceLengths[code] + distanceRuns[code].extraBits);
        return total;
    }
};

Codes FixedCodes()
{
    Codes codes;
    codes.literalLengths = {fixedLiteralLengths};
    codes.distanceLengths = {fixedDistanceLengths};
    return codes;
}

Codes OwnCodes(const Frequencies& frequencies)
{
    Codes codes;
    MakeCodeLengths(frequencies.literals, maxCode, std::span(codes.literalLengths).first(usedLiteralCodes));
    MakeCodeLengths(frequencies.distances, maxCode, std::span(codes.distanceLengths).first(usedDistanceCodes));
    return codes;
}

/// The words for all lengths, extra bits included.
struct LengthWords {
    Wiped<std::array<std::uint32_t, maxMatch + 1>> words{};
    Wiped<std::array<std::uint8_t, maxMatch + 1>> bits{};

    explicit LengthWords(const Codes& codes)
    {
        for (std::uint32_t length = minMatch; length <= maxMatch; ++length) {
            const std::uint32_t code = lengthCodeOf[length];
            const ValueRun& run = lengthRuns[code];
            const std::uint8_t codeBits = codes.literalLengths[firstLengthCode + code];
            words[length] = codes.literalWords[firstLengthCode + code] | (length - run.base) << codeBits;
            bits[length] = static_cast<std::uint8_t>(codeBits + run.extraBits);
        }
    }
};

void WriteSymbols(const Block& block, const Codes& codes, BitOutput& output)
{
    const LengthWords lengths(codes);
    for (const Symbol symbol : block.symbols) {
        if (!symbol.isMatch()) {
            output.put(codes.literalWords[symbol.literal()], codes.literalLengths[symbol.literal()]);
            continue;
        }
        const std::uint32_t length = symbol.length();
        const std::uint32_t code = DistanceCodeOf(symbol.distance());
        const ValueRun& run = distanceRuns[code];
        const std::uint64_t far = codes.distanceWords[code] | std::uint64_t{symbol.distance() - run.base}
                                                                  << codes.distanceLengths[code];
        output.put(lengths.words[length] | far << lengths.bits[length],
                   std::uint32_t{lengths.bits[length]} + codes.distanceLengths[code] + run.extraBits);
    }
    output.put(codes.literalWords[endOfBlock], codes.literalLengths[endOfBlock]);
}

void WriteHeader(bool last, BlockType type, BitOutput& output)
{
    output.put((last ? 1U : 0U) | static_cast<std::uint32_t>(type) << 1, 3);
}

/// In as many blocks as the length asks for; one for no bytes.
void WriteStored(const Block& block, BitOutput& output)
{
    std::size_t written = 0;
    do {
        const std::size_t count = std::min<std::size_t>(block.length - written, maxStored);
        const bool ends = written + count == block.length;
        WriteHeader(block.last && ends, BlockType::stored, output);
        output.alignToByte();
        output.put(count | (count ^ 0xFFFF) << 16, 32);
        output.putBytes({block.bytes + written, count});
        written += count;
    } while (written < block.length);
}

std::uint64_t StoredBits(const Block& block, std::uint32_t pendingBits)
{
    const std::uint64_t blocks = std::max<std::uint64_t>(1, (block.length + maxStored - 1) / maxStored);
    const std::uint32_t toByte = (8 - (pendingBits + 3) % 8) % 8;
    return toByte + blocks * 40 - 5 + std::uint64_t{block.length} * 8;
}

} // namespace

void Frequencies::add(const Frequencies& other)
{
    for (std::size_t code = 0; code < literals.size(); ++code)
        literals[code] += other.literals[code];
    for (std::size_t code = 0; code < distances.size(); ++code)
        distances[code] += other.distances[code];
}

void WriteBlock(const Block& block, BitOutput& output)
{
    Frequencies frequencies = block.frequencies;
    ++frequencies.literals[endOfBlock];
    Codes own = OwnCodes(frequencies);
    const CodeLengthsText text(std::span(own.literalLengths).first(usedLiteralCodes),
                               std::span(own.distanceLengths).first(usedDistanceCodes));
    Codes fixed = FixedCodes();
    const std::uint64_t ownBits = text.bits() + own.bits(frequencies);
    const std::uint64_t fixedBits = fixed.bits(frequencies);
    const std::uint64_t coded = std::min(ownBits, fixedBits);

    if (block.bytes != nullptr && StoredBits(block, output.pendingBits()) <= coded) {
        WriteStored(block, output);
    } else if (fixedBits <= ownBits) {
        WriteHeader(block.last, BlockType::fixed, output);
        fixed.makeWords();
        WriteSymbols(block, fixed, output);
    } else {
        WriteHeader(block.last, BlockType::dynamic, output);
        text.write(output);
        own.makeWords();
        WriteSymbols(block, own, output);
    }
}

} // namespace ccrypto::deflate
