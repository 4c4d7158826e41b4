#pragma once

#include "asn1/deflate_format.h"
#include "asn1/gzip_header.h"
#include "asn1/inflate_output.h"

#include <cstdint>
#include <memory>
#include <span>

class DeflateReader;
class DeflateWriter;

/// Packs or unpacks Deflate data (RFC 1951), by itself or in GZIP members (RFC 1952), in constant memory.
///
/// Input comes in pieces of any size through Write, output goes to the sink in pieces of at most 96 KiB; neither depends on how the
/// other is cut. Unpacking delivers what each piece yields at once, before a GZIP member's checksum is known: only a Finish that
/// succeeds says that the whole is as it was packed.
class CDeflateStream {
public:
    static constexpr int fastest = 1;
    static constexpr int best = 9;
    static constexpr int usual = 6;

    CDeflateStream();
    ~CDeflateStream();
    CDeflateStream(const CDeflateStream&) = delete;
    CDeflateStream& operator=(const CDeflateStream&) = delete;

    /// Unpacks from here on. What was under way before is dropped.
    void StartInflate(DeflateFormat format, DeflateSink sink, const InflateLimits& limits = {});
    /// Packs from here on, at a level from 1 (fastest) to 9 (best). `header` is used with GZIP alone; where its extraFlags are 0
    /// they tell the level. \return false, logged, when there is no such level or the header cannot be written or delivered.
    bool StartDeflate(DeflateFormat format, DeflateSink sink, int level = usual, const CCryptoGZIPHeader& header = {});

    /// \return false, logged, when the data is malformed, a limit is exceeded, the sink stopped, or nothing was started. A stream
    /// that failed takes no more until it is started again.
    bool Write(std::span<const std::uint8_t> piece);
    /// Ends the input. \return true when everything is unpacked and matches, or packed and delivered; false is logged.
    bool Finish();

    /// Why the stream failed; empty when it did not.
    const char* reason() const { return reason_; }
    /// How many bytes of packed input stand before what failed.
    std::uint64_t reasonOffset() const { return reasonOffset_; }
    /// The header of the GZIP member unpacked last, valid until the next call; null when nothing is being unpacked.
    const CCryptoGZIPHeader* header() const;

    /// Unpacks, or packs, the whole of `input` and appends it to `output`. \return false, logged, and `output` as it was.
    static bool Inflate(std::span<const std::uint8_t> input, DeflateFormat format, element& output,
                        const InflateLimits& limits = {});
    static bool Deflate(std::span<const std::uint8_t> input, DeflateFormat format, element& output, int level = usual,
                        const CCryptoGZIPHeader& header = {});

private:
    void stop();
    bool fail(const char* reason);

    std::unique_ptr<DeflateReader> reader_;
    std::unique_ptr<DeflateWriter> writer_;
    const char* reason_ = "";
    std::uint64_t reasonOffset_ = 0;
};
