#pragma once

#include "deflate/deflate_format.h"
#include "deflate/gzip_header.h"
#include "deflate/inflate_output.h"

#include <cstdint>
#include <memory>
#include <span>

class CCryptoAutoLogger;

namespace ccrypto {

class DeflateReader;
class DeflateWriter;

} // namespace ccrypto

/// Packs or unpacks Deflate data (RFC 1951), by itself or in GZIP members (RFC 1952), in constant memory.
///
/// Input comes in pieces of any size through Write, output goes to the sink in pieces of at most 96 KiB; neither depends on how the
/// other is cut, nor do the verdict, its reason and its offset. Unpacking delivers what each piece yields at once, before a GZIP
/// member's checksum is known: only a Finish that succeeds says that the whole is as it was packed. Zeros behind the last GZIP
/// member are passed over.
///
/// A sink may ask for the header. It must not destroy the stream; when it starts, feeds or finishes the stream that calls it, that
/// call does nothing and the one under way fails.
class CDeflateStream {
public:
    static constexpr int fastest = 1;
    static constexpr int best = 9;
    static constexpr int usual = 6;

    CDeflateStream();
    ~CDeflateStream();
    CDeflateStream(const CDeflateStream&) = delete;
    CDeflateStream& operator=(const CDeflateStream&) = delete;

    /// Unpacks from here on, within the limits: by default 1 GiB, and 256 times the input once there are 16 MiB. What was under way
    /// before is dropped.
    void StartInflate(ccrypto::DeflateFormat format, ccrypto::DeflateSink sink, const ccrypto::InflateLimits& limits = {});
    /// Packs from here on, at a level from 1 (fastest) to 9 (best). `header` is used with GZIP alone; where its extraFlags are 0
    /// they tell the level. \return false, logged, when there is no such level or the header cannot be written or delivered.
    bool StartDeflate(ccrypto::DeflateFormat format, ccrypto::DeflateSink sink, int level = usual,
                      const CCryptoGZIPHeader& header = {});

    /// \return false, logged, when the data is malformed, a limit is exceeded, the sink stopped, nothing was started, or Finish()
    /// was called. A stream that failed takes no more until it is started again.
    bool Write(std::span<const std::uint8_t> piece);
    /// Ends the input. \return true when everything is unpacked and matches, or packed and delivered; false is logged.
    bool Finish();

    /// Why the stream failed; empty when it did not.
    const char* reason() const { return reason_; }
    /// How many bytes of packed input stand before what failed.
    std::uint64_t reasonOffset() const { return reasonOffset_; }
    /// The header of the GZIP member unpacked last, valid until the next call; it is replaced when the next one has been read
    /// whole, and has no fields before the first. Null when nothing is being unpacked.
    const CCryptoGZIPHeader* header() const;

    /// A sink that appends to `output`, which must outlive it. It stops, and logs so, before that holds more than `most` bytes.
    static ccrypto::DeflateSink AppendTo(element& output, std::uint32_t most = UINT32_MAX);

    /// What is unpacked into memory, unless the caller knows better: 256 MiB, and 256 times the input once there are 16 MiB.
    static constexpr ccrypto::InflateLimits wholeLimits{.mostOutput = std::uint64_t{1} << 28};

    /// Unpacks, or packs, the whole of `input` and appends it to `output`. \return false, logged, and `output` as it was.
    ///
    /// `output` doubles as it grows and for a moment takes up to three times what it holds; without the memory the process ends, so
    /// hostile input needs a limit of the size that the process can afford. Whatever the limit, `output` ends at 4 GiB: what
    /// unpacks or packs to more fails. `input` may be a part of `output`; it is copied first.
    static bool Inflate(std::span<const std::uint8_t> input, ccrypto::DeflateFormat format, element& output,
                        const ccrypto::InflateLimits& limits = wholeLimits);
    static bool Deflate(std::span<const std::uint8_t> input, ccrypto::DeflateFormat format, element& output, int level = usual,
                        const CCryptoGZIPHeader& header = {});

private:
    class Call;

    void stop();
    bool fail(const char* reason);
    /// Has `give` hand a call on to the reader or the writer, whichever there is, and logs what became of it.
    template <typename Give>
    bool pass(CCryptoAutoLogger& logger, Give give);
    /// What became of a call to the reader or writer.
    bool settle(bool good);

    std::unique_ptr<ccrypto::DeflateReader> reader_;
    std::unique_ptr<ccrypto::DeflateWriter> writer_;
    const char* reason_ = "";
    std::uint64_t reasonOffset_ = 0;
    bool inCall_ = false;     ///< the sink may be running
    bool calledBack_ = false; ///< by the sink, which must not
};
