#pragma once

#include "deflate/deflate_stream.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

inline std::span<const std::uint8_t> BytesOf(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Packed data, and why it is refused.
struct FaultCase {
    const char* reason;
    std::string packed;
};

/// What became of an input that was given in pieces.
struct Outcome {
    bool good = false;
    std::string output;
    std::string reason;
    std::uint64_t offset = 0;

    bool operator==(const Outcome&) const = default;
};

inline DeflateSink AppendTo(std::string& text)
{
    return [&text](std::span<const std::uint8_t> piece) {
        text.append(reinterpret_cast<const char*>(piece.data()), piece.size());
        return true;
    };
}

/// Gives `input` in pieces of `pieceSize` bytes, after one of `first` bytes.
inline Outcome Feed(CDeflateStream& stream, std::string_view input, std::size_t pieceSize, std::size_t first)
{
    Outcome outcome;
    outcome.good = true;
    for (std::size_t size = first; outcome.good && !input.empty(); size = pieceSize) {
        outcome.good = stream.Write(BytesOf(input.substr(0, size)));
        input.remove_prefix(std::min(size, input.size()));
    }
    outcome.good = outcome.good && stream.Finish();
    outcome.reason = stream.reason();
    outcome.offset = stream.reasonOffset();
    return outcome;
}

inline Outcome Unpacked(std::string_view packed, DeflateFormat format, std::size_t pieceSize = SIZE_MAX,
                        std::size_t first = SIZE_MAX, const InflateLimits& limits = {})
{
    std::string output;
    CDeflateStream stream;
    stream.StartInflate(format, AppendTo(output), limits);
    Outcome outcome = Feed(stream, packed, pieceSize, std::min(first, pieceSize));
    outcome.output = std::move(output);
    return outcome;
}

inline std::string Packed(std::string_view plain, DeflateFormat format, int level, std::size_t pieceSize = SIZE_MAX)
{
    std::string output;
    CDeflateStream stream;
    const bool started = stream.StartDeflate(format, AppendTo(output), level);
    return started && Feed(stream, plain, pieceSize, pieceSize).good ? output : std::string();
}

/// Bytes without a pattern, the same in every run.
inline std::string Noise(std::size_t length, std::uint32_t seed = 1)
{
    std::string bytes(length, '\0');
    for (char& byte : bytes) {
        seed = seed * 1664525U + 1013904223U;
        byte = static_cast<char>(seed >> 24);
    }
    return bytes;
}

/// Words in an order without a pattern, some changed.
inline std::string Prose(std::size_t length)
{
    static constexpr std::string_view words[] = {"the ",    "certificate ", "of ",     "a ",  "signer ",    "holds ", "key",
                                                 "reader ", "card, ",       "which. ", "is ", "verified\n", "by "};
    const std::string choices = Noise(length);
    std::string text;
    for (const char choice : choices) {
        text += words[static_cast<unsigned char>(choice) % std::size(words)];
        if (static_cast<unsigned char>(choice) > 250)
            text += std::to_string(text.size());
        if (text.size() >= length)
            break;
    }
    text.resize(length);
    return text;
}

/// `value` as bits, the least significant first, as Deflate writes everything but its codes.
inline std::string Number(std::uint32_t value, int bits)
{
    std::string text;
    for (int bit = 0; bit < bits; ++bit)
        text += static_cast<char>('0' + (value >> bit & 1));
    return text;
}

/// The bytes that these bits fill from the lowest up; blanks are ignored, the last byte is filled with zeros.
inline std::string FromBits(std::string_view bits)
{
    std::string bytes;
    int used = 0;
    for (const char bit : bits) {
        if (bit == ' ')
            continue;
        if (used % 8 == 0)
            bytes += '\0';
        if (bit == '1')
            bytes.back() = static_cast<char>(bytes.back() | 1 << used % 8);
        ++used;
    }
    return bytes;
}

/// The head of a last block with codes of these lengths, each of them 0 to 15 and written by itself.
inline std::string CodesOf(const std::vector<int>& literals, const std::vector<int>& distances)
{
    std::string bits = "1 01" + Number(static_cast<std::uint32_t>(literals.size()) - 257, 5) +
                       Number(static_cast<std::uint32_t>(distances.size()) - 1, 5) + Number(15, 4);
    // 16, 17 and 18 come first and stay without a code; the others have four bits each, which then are the length itself.
    bits += "000 000 000";
    for (int code = 0; code < 16; ++code)
        bits += Number(4, 3);
    for (const auto& lengths : {literals, distances}) {
        for (const int length : lengths) {
            for (int bit = 3; bit >= 0; --bit)
                bits += static_cast<char>('0' + (length >> bit & 1));
        }
    }
    return bits;
}

/// 257 or more code lengths that are zero but for those of the symbols given.
inline std::vector<int> Lengths(std::initializer_list<std::pair<std::size_t, int>> given, std::size_t count = 257)
{
    std::vector<int> lengths(count);
    for (const auto& [symbol, length] : given)
        lengths[symbol] = length;
    return lengths;
}

} // namespace ccrypto
