#pragma once

#include "deflate/gzip_header.h"
#include "deflate/inflate_decoder.h"
#include "deflate/inflate_output.h"

#include <array>
#include <cstdint>
#include <span>

namespace ccrypto {

/// Unpacks a whole input that arrives in pieces of any size: one Deflate stream, or consecutive GZIP
/// members. Zeros after the last member, with which some media fill their last record, are ignored.
class DeflateReader {
public:
    DeflateReader(DeflateFormat format, DeflateSink sink, const InflateLimits& limits);

    /// \return false when the data is malformed, a limit is exceeded or the sink stopped; nothing goes on then.
    bool Write(std::span<const std::uint8_t> piece);
    /// Says that there is no more input. \return false when it is cut short, or failed before.
    bool Finish();

    const char* reason() const { return reason_; }
    /// How many bytes of input stand before the one that failed.
    std::uint64_t reasonOffset() const { return reasonOffset_; }
    /// Of the member whose header was read last; as it was made as long as there is none.
    const CCryptoGZIPHeader& header() const { return header_; }

private:
    enum class Step { start, header, body, trailer, afterMember, padding, finished, failed };

    bool fail(const char* reason);
    bool step(std::span<const std::uint8_t>& input);
    bool readHeader(std::span<const std::uint8_t>& input);
    bool readBody(std::span<const std::uint8_t>& input);
    bool readTrailer(std::span<const std::uint8_t>& input);
    bool readPadding(std::span<const std::uint8_t>& input);
    const char* cutShort() const;

    DeflateFormat format_;
    InflateOutput output_;
    InflateDecoder decoder_;
    CCryptoGZIPHeader header_;
    CCryptoGZIPHeader nextHeader_; ///< the one that is being read
    Step step_;
    std::array<std::uint8_t, 8> trailer_{};
    std::size_t trailerRead_ = 0;
    std::uint64_t given_ = 0; ///< bytes of all pieces, the present one included
    const char* reason_ = "";
    std::uint64_t reasonOffset_ = 0;
};

} // namespace ccrypto
