#pragma once

#include "core/text/element.h"

#include <cstdint>

class CCryptoString;

/// Text conversions that belong to no one string.
class CCryptoConvert {
public:
    CCryptoConvert() = delete;

    /// Writes `source` with the characters that HTML gives a meaning to as character references, and blanks and control bytes as
    /// "&#x%02x;". With `keepQuotes` quotes, blanks and control bytes pass unchanged. The target, which must not overlap the
    /// source, is always terminated.
    ///
    /// \param target null to ask for the size that is needed, terminator included.
    /// \return the number of bytes written without the terminator; 0, reported on the debug channel, when `size`, or 32 bits, are
    /// too small.
    [[nodiscard]] static std::uint32_t html_encode(const char* source, char* target, std::uint32_t size, bool keepQuotes);

    /// The bytes that base64url text (RFC 4648, 5), with or without padding, encodes. A length that no bytes have is logged, and
    /// decoding goes on with the whole bytes that are there.
    [[nodiscard]] static element base64url_decode(const CCryptoString& text);
};
