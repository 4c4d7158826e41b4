#pragma once

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
/// Input is given to Write in pieces of any size, output goes to the sink in pieces of at most 96 KiB. How the input is divided
/// changes neither the pieces of the output nor the verdict, its reason and its offset. Unpacking delivers what each piece yields
/// at once, before a GZIP member's checksum is known: only a Finish that succeeds confirms the data. Zeros after the last GZIP
/// member are ignored.
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

    /// Starts to unpack, within the limits: by default 1 GiB, and 256 times the input once there are 16 MiB. An operation
    /// that was not finished is dropped.
    void StartInflate(ccrypto::DeflateFormat format, ccrypto::DeflateSink sink, const ccrypto::InflateLimits& limits = {});
    /// Starts to pack, at a level from 1 (fastest) to 9 (best). `header` is used with GZIP alone; where its extraFlags are 0
    /// they are set from the level. \return false, logged, when there is no such level or the header cannot be written or
    /// delivered.
    [[nodiscard]] bool StartDeflate(ccrypto::DeflateFormat format, ccrypto::DeflateSink sink, int level = usual,
                                    const CCryptoGZIPHeader& header = {});

    /// \return false, logged, when the data is malformed, a limit is exceeded, the sink stopped, nothing was started, or Finish()
    /// was called. A stream that failed takes no more until it is started again.
    bool Write(std::span<const std::uint8_t> piece);
    /// Ends the input. \return true when everything is unpacked and matches, or packed and delivered; false is logged.
    [[nodiscard]] bool Finish();

    /// Why the stream failed; empty when it did not.
    const char* reason() const { return reason_; }
    /// The number of bytes of packed input before the fault.
    std::uint64_t reasonOffset() const { return reasonOffset_; }
    /// The header of the GZIP member unpacked last, valid until the next call; it is replaced when the next one has been read
    /// whole, and has no fields before the first. Null when nothing is being unpacked.
    const CCryptoGZIPHeader* header() const;

    /// A sink that appends to `output`, which must outlive it. It stops, and logs so, before that holds more than `most` bytes.
    [[nodiscard]] static ccrypto::DeflateSink AppendTo(element& output, std::uint32_t most = UINT32_MAX);

    /// What is unpacked into memory, unless the caller knows better: 256 MiB, and 256 times the input once there are 16 MiB.
    static constexpr ccrypto::InflateLimits wholeLimits{.maxOutput = std::uint64_t{1} << 28};

    /// Unpacks, or packs, the whole of `input` and appends it to `output`. \return false, logged, and `output` as it was.
    ///
    /// `output` doubles as it grows and for a moment takes up to three times what it holds; without the memory the process ends, so
    /// hostile input needs a limit of the size that the process can afford. Whatever the limit, `output` ends at 4 GiB: what
    /// unpacks or packs to more fails. `input` may be a part of `output`; it is copied first.
    [[nodiscard]] static bool Inflate(std::span<const std::uint8_t> input, ccrypto::DeflateFormat format, element& output,
                                      const ccrypto::InflateLimits& limits = wholeLimits);
    [[nodiscard]] static bool Deflate(std::span<const std::uint8_t> input, ccrypto::DeflateFormat format, element& output,
                                      int level = usual, const CCryptoGZIPHeader& header = {});

private:
    class Call;

    void stop();
    bool fail(const char* reason);
    /// Has `give` call the reader or the writer, whichever exists, and logs the result.
    template <typename Give>
    bool pass(CCryptoAutoLogger& logger, Give give);
    /// Ends a call to the reader or writer.
    bool settle(bool good);

    std::unique_ptr<ccrypto::DeflateReader> reader_;
    std::unique_ptr<ccrypto::DeflateWriter> writer_;
    const char* reason_ = "";
    std::uint64_t reasonOffset_ = 0;
    bool inCall_ = false;     ///< the sink may be running
    bool calledBack_ = false; ///< by the sink, which must not
};
