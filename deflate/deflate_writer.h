#pragma once

#include "deflate/bit_output.h"
#include "deflate/crc32.h"
#include "deflate/deflate_encoder.h"
#include "deflate/gzip_header.h"

#include <cstdint>
#include <span>

namespace ccrypto {

/// Packs a whole input that arrives in pieces of any size, into one Deflate stream or one GZIP member.
class DeflateWriter {
public:
    /// `level` is 1 to 9.
    DeflateWriter(DeflateFormat format, DeflateSink sink, int level);

    /// \return false when the header cannot be written or the sink stopped; nothing goes on then. Write and Finish fail likewise.
    bool Start(const CCryptoGZIPHeader& header);
    bool Write(std::span<const std::uint8_t> piece);
    bool Finish();

    const char* reason() const { return reason_; }

private:
    bool fail(const char* reason);
    bool checkSink();

    DeflateFormat format_;
    int level_;
    BitOutput output_;
    DeflateEncoder encoder_;
    CCryptoCRC32 checksum_;
    std::uint32_t length_ = 0; ///< modulo 2^32
    bool ended_ = false;
    const char* reason_ = "";
};

} // namespace ccrypto
