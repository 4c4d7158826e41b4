#pragma once

#include "core/memory/wiped.h"
#include "deflate/bit_input.h"
#include "deflate/deflate_tables.h"
#include "deflate/huffman.h"
#include "deflate/inflate_output.h"

#include <array>
#include <cstdint>
#include <span>

namespace ccrypto {

/// Unpacks one Deflate stream (RFC 1951) that arrives in pieces of any size. Memory is constant: a window and three tables, about
/// 130 KiB.
class InflateDecoder {
public:
    enum class Result { needsInput, done, failed };

    /// `output` must outlive the decoder.
    explicit InflateDecoder(InflateOutput& output);

    /// Unpacks from the front of `input`, which is cut to what follows the end of the stream. What the input yields, up to a
    /// fault if there is one, has been delivered on return. After `done` or `failed` only Restart() goes on.
    ///
    /// How the stream was cut changes nothing: not where it fails, nor for what reason, nor what is delivered in all.
    Result Decode(std::span<const std::uint8_t>& input);
    /// Another stream follows, in which nothing of the last may be referred to.
    void Restart();

    /// Why decoding failed, or where a stream that ends now is cut short.
    const char* reason() const { return reason_; }
    const char* cutShort() const;
    /// Bytes taken from the input ahead of what is decoded.
    std::uint32_t heldBytes() const { return input_.heldBytes(); }

private:
    enum class Step { blockHeader, storedLength, storedBytes, counts, codeLengthLengths, codeLengths, symbols, done };
    enum class Progress { goesOn, needsInput, failed };

    Progress step();
    Progress fail(const char* reason);

    Progress readBlockHeader();
    Progress readStoredLength();
    Progress copyStored();
    void endBlock();

    Progress readCounts();
    Progress readCodeLengthLengths();
    Progress readCodeLengths();
    /// `code` takes 16 to 18 of the code length codes.
    Progress repeatCodeLength(std::uint32_t code);
    Progress buildCodes();
    void buildFixedCodes();

    Progress readSymbols();
    Progress readOneSymbol();
    /// Goes through symbols while there is plenty of input and room.
    Progress readManySymbols();

    /// After each symbol or run of stored bytes: makes sure that another one may start.
    bool keepRoom() { return position_ <= lastStart_ || makeRoom(); }
    /// Delivers, judges, and keeps the window's worth of history.
    bool makeRoom();
    void placeLastStart();
    bool deliver();
    bool judge();

    /// History, then output; a symbol that starts in time fits whole.
    static constexpr std::size_t capacity = std::size_t{96} * 1024;
    static constexpr std::size_t latestStart = capacity - deflate::maxMatch;
    /// What the fast loop may write in one round: two literals, and a match with up to 15 bytes after it.
    static constexpr std::size_t roundOutput = 2 + deflate::maxMatch + 15;

    InflateOutput& output_;
    BitInput input_;
    Step step_ = Step::blockHeader;
    bool lastBlock_ = false;
    const char* reason_ = "";

    WipedArray<std::uint8_t> window_;
    std::size_t position_ = 0;  ///< where the next byte goes; all before it is history of this stream
    std::size_t delivered_ = 0; ///< up to where the sink has it
    /// Where a symbol starts at the latest: earlier than the window asks for when the limit of the size is near, so that it is
    /// exceeded by the same symbol however the input is cut.
    std::size_t lastStart_ = 0;

    std::uint32_t storedLeft_ = 0;

    std::uint32_t literalCount_ = 0;
    std::uint32_t distanceCount_ = 0;
    std::uint32_t codeLengthCount_ = 0;
    std::uint32_t lengthsRead_ = 0;
    bool codesAreFixed_ = false;
    Wiped<std::array<std::uint8_t, deflate::literalCodes + deflate::distanceCodes>> lengths_{};
    CCryptoHuffman codeLengths_{CCryptoHuffman::Alphabet::codeLengths};
    CCryptoHuffman literals_{CCryptoHuffman::Alphabet::literals};
    CCryptoHuffman distances_{CCryptoHuffman::Alphabet::distances};
};

} // namespace ccrypto
