#pragma once

#include "asn1/template/gen_closure.h"
#include "asn1/template/lexical_analyzer.h"
#include "asn1/tree/element_node.h"
#include "core/text/string.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

/// Where the text of an included file comes from.
class ICryptoIncludeLoader {
public:
    virtual ~ICryptoIncludeLoader() = default;
    /// \return false when there is no such text.
    virtual bool Load(const CCryptoString& name, element& text) = 0;
};

namespace ccrypto {

/// For text from outside, in which "include" has no meaning.
class NoIncludes : public ICryptoIncludeLoader {
public:
    bool Load(const CCryptoString&, element&) override { return false; }
};

} // namespace ccrypto

/// Parses template text into the tree that DER of the same structure decodes to. docs/template-language.md describes the language.
///
/// An item is a word followed, in any order, by at most one each of a bracket list, a modifier list, a value behind "=", a content
/// block in braces, and an operator with its operand. Separators are optional: a new item starts when a word or a part arrives that
/// the current item already has.
class CCryptoGENParser {
public:
    static constexpr std::uint32_t deepestNesting = 128;
    static constexpr std::uint32_t deepestInclude = 16;
    static constexpr std::uint32_t mostIncludes = 256;
    static constexpr std::uint32_t longestIncludes = 64 << 20; ///< bytes of all included files together

    /// \param loader null to read included files from disk; not owned. \param includeFolder the folder of names without "/".
    explicit CCryptoGENParser(ICryptoIncludeLoader* loader = nullptr, CCryptoString includeFolder = {});
    /// Included files are read from disk; the folder is asked for when the first name without "/" is met.
    explicit CCryptoGENParser(std::function<CCryptoString()> includeFolder);

    /// \return the first item with the others as its siblings, an empty node for text without items; null, logged, on failure.
    ccrypto::ElementNodePtr Parse(std::string_view text);
    /// The same for text that may not be a template: nothing is logged.
    ccrypto::ElementNodePtr TryParse(std::string_view text);
    /// The same for a text inside another one, which shares the limit on items: `itemsLeft` is counted down.
    ccrypto::ElementNodePtr TryParse(std::string_view text, std::uint32_t& itemsLeft);

private:
    struct List;

    ccrypto::ElementNodePtr parseText(std::string_view text);
    bool parseInto(std::string_view text, List& list);
    bool isClosed(const CCryptoGENClosure& closure, const List& list) const;
    bool parseNested(const CCryptoGENClosure& closure, List& list);
    bool parseToken(List& list);
    bool parseSurplusBrace();
    bool parsePart(List& list, ccrypto::LinkKind kind);
    bool parseBlock(ccrypto::ElementType closer, elementNode& owner, ccrypto::LinkKind kind);
    bool parseOperation(List& list);
    bool parseInclude(List& list);
    bool parseIncluded(const CCryptoString& name, List& list);
    const CCryptoString& includeFolder();
    bool readInclude(const CCryptoString& name, element& text);
    bool advance();
    bool unexpected();
    bool fail(const CCryptoString& message);

    ICryptoIncludeLoader* loader_;
    std::function<CCryptoString()> folderSource_;
    std::optional<CCryptoString> includeFolder_; ///< with a "/" at its end
    CCryptoLexicalAnalyzer* lexer_ = nullptr;
    element lookAhead_;
    std::uint32_t nesting_ = 0;
    std::uint32_t including_ = 0;
    std::uint32_t included_ = 0;
    std::uint32_t includeRoom_ = longestIncludes;
    std::uint32_t itemsLeft_ = 0;
    CCryptoString reason_;
    CCryptoString innerReason_; ///< why an included file does not parse
};
