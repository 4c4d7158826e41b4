#pragma once

#include "asn1/text/text_cursor.h"
#include "core/text/element.h"

#include <string_view>

namespace ccrypto::internal {

/// Splits JSON (RFC 8259) into tokens: punctuation, strings as text or utf8Text, integers (negative ones in two's complement),
/// other numbers as characterData, truth and null.
class JsonLexer {
public:
    explicit JsonLexer(std::string_view text) : cursor_(text) {}

    /// The next token; of type `endOfInput` at the end. \return false for text that is not a token, with the reason in the cursor.
    [[nodiscard]] bool scan(element& token);

    /// The place of the last token, and why a scan failed.
    const TextCursor& cursor() const { return cursor_; }

private:
    bool scanWord(element& token);
    bool scanNumber(element& token);
    bool scanString(element& token);
    bool scanEscape(element& text);
    bool scanUnit(std::uint32_t& unit);

    TextCursor cursor_;
};

/// Whether all of the text is one JSON number.
bool IsJsonNumber(std::string_view text);

} // namespace ccrypto::internal
