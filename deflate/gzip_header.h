#pragma once

#include "core/text/element.h"
#include "deflate/crc32.h"

#include <cstdint>
#include <optional>

namespace ccrypto {

/// How Deflate data is framed.
enum class DeflateFormat {
    raw,  ///< not at all: the data alone
    gzip, ///< as one or more GZIP members, each with a header and a checksum
};

} // namespace ccrypto

/// The header of one GZIP member (RFC 1952, 2.3): read a byte at a time, or filled and written.
class CCryptoGZIPHeader {
public:
    enum class Result { more, complete, failed };

    /// Bytes of a file name or a comment without the terminator. The format has no limit; this one bounds the memory.
    static constexpr std::uint32_t maxTextLength = 1 << 20;
    static constexpr std::uint32_t maxExtraLength = 65535;
    static constexpr std::uint8_t unknownSystem = 255;
    static constexpr std::uint8_t firstMark = 0x1F; ///< the first byte of every header

    bool isText = false;                ///< FTEXT
    bool hasChecksum = false;           ///< FHCRC: the header carries a checksum of itself
    std::uint32_t modificationTime = 0; ///< MTIME, seconds since 1970 in UTC; 0 is unknown
    std::uint8_t extraFlags = 0;        ///< XFL: 2 for the best compression, 4 for the fastest
    std::uint8_t operatingSystem = unknownSystem;
    std::optional<element> extra;   ///< FEXTRA, subfields included
    std::optional<element> name;    ///< FNAME, Latin-1
    std::optional<element> comment; ///< FCOMMENT, Latin-1

    /// Takes the next byte of a header; after `complete` or `failed` the next one begins another header, whose fields replace
    /// these.
    [[nodiscard]] Result Read(std::uint8_t byte);
    /// Why the last header failed.
    const char* reason() const { return reason_; }

    /// Appends the header to `target`. \return null, or why the fields cannot be written; nothing is appended then.
    [[nodiscard]] const char* Write(element& target) const;

private:
    enum class Step { idle, fixedPart, extraLength, extraBytes, name, comment, checksum };

    Result fail(const char* reason);
    Result readFixedPart(std::uint8_t byte);
    Result readText(std::uint8_t byte, element& text, const char* tooLong);
    Result readChecksum(std::uint8_t byte);
    /// Starts the part after `step`, of those that the flags announce.
    Result openNext(Step step);

    Step step_ = Step::idle;
    std::uint32_t position_ = 0; ///< bytes of the part read
    std::uint8_t flags_ = 0;
    std::uint32_t number_ = 0; ///< the number that is being read
    CCryptoCRC32 checksum_;
    const char* reason_ = "";
};
