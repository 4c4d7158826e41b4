#pragma once

#include "asn1/text/text_cursor.h"
#include "core/text/element.h"

#include <string_view>

namespace ccrypto::internal {

/// Tokens that only markup has, numbered after those of the tree.
namespace markup {
constexpr auto startTag = static_cast<ccrypto::ElementType>(91);    ///< "<name"; the token's bytes are the name
constexpr auto emptyTagEnd = static_cast<ccrypto::ElementType>(92); ///< "/>"
constexpr auto endTag = static_cast<ccrypto::ElementType>(93);      ///< "</name>"; the bytes are the name
} // namespace markup

/// Splits XML 1.0 (fifth edition) into tokens: startTag, then for each attribute an identifier, "=" and text, then ">" or
/// emptyTagEnd; endTag; and characterData with its references resolved, a CDATA section as one of its own.
///
/// Comments, processing instructions, declarations and the document type are ignored. No entity but the five of XML is known, and
/// nothing external is read.
class XmlLexer {
public:
    explicit XmlLexer(std::string_view text) : cursor_(text) {}

    /// The next token; of type `endOfInput` at the end. \return false for text that is not a token, with the reason in the cursor.
    [[nodiscard]] bool scan(element& token);

    /// The place of the last token, and why a scan failed.
    const TextCursor& cursor() const { return cursor_; }

private:
    bool atIgnoredMarkup() const;
    bool skipIgnoredMarkup();
    bool skipComment();
    bool skipInstruction();
    bool skipDocumentType();
    bool scanTag(element& token);
    bool scanInsideTag(element& token);
    bool scanAttributeValue(element& token);
    bool scanText(element& token);
    bool scanSection(element& token);
    bool scanCharacters(std::size_t length, bool isAttribute, element& text);
    bool scanReference(element& text);

    TextCursor cursor_;
    bool insideTag_ = false; ///< attributes follow
};

} // namespace ccrypto::internal
