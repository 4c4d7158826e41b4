#pragma once

#include "asn1/template/lexical_analyzer.h"
#include "asn1/tree/element_node.h"
#include "core/text/element_type.h"
#include "core/text/string.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string_view>

/// The tokens at which a nested parse stops.
class CCryptoGENClosure {
public:
    constexpr CCryptoGENClosure(std::initializer_list<ccrypto::ElementType> types)
    {
        for (const ccrypto::ElementType type : types)
            bits_[wordOf(type)] |= bitOf(type);
    }

    constexpr bool contains(ccrypto::ElementType type) const
    {
        return static_cast<std::uint32_t>(type) < 128 && (bits_[wordOf(type)] & bitOf(type)) != 0;
    }

private:
    static constexpr std::size_t wordOf(ccrypto::ElementType type) { return static_cast<std::uint32_t>(type) / 64 % 2; }
    static constexpr std::uint64_t bitOf(ccrypto::ElementType type)
    {
        return std::uint64_t{1} << static_cast<std::uint32_t>(type) % 64;
    }

    std::uint64_t bits_[2] = {};
};

/// The source of the text of included files.
class ICryptoIncludeLoader {
public:
    virtual ~ICryptoIncludeLoader() = default;
    /// \return false when there is no such text.
    [[nodiscard]] virtual bool Load(const CCryptoString& name, element& text) = 0;
};

namespace ccrypto {

/// For text from outside: every "include" fails.
class NoIncludes : public ICryptoIncludeLoader {
public:
    [[nodiscard]] bool Load(const CCryptoString&, element&) override { return false; }
};

} // namespace ccrypto

/// Parses template text into the tree that DER of the same structure decodes to. docs/template-language.md describes the language.
///
/// An item is a word followed, in any order, by at most one each of a bracket list, a modifier list, a value after "=", a content
/// block in braces, and an operator with its operand. Separators are optional: a new item starts when a word or a part arrives that
/// the current item already has.
class CCryptoGENParser {
public:
    static constexpr std::uint32_t maxNesting = 128;
    static constexpr std::uint32_t maxIncludeDepth = 16;
    static constexpr std::uint32_t maxIncludes = 256;
    static constexpr std::uint32_t maxIncludeBytes = 64 << 20; ///< bytes of all included files together

    /// \param loader null to read included files from disk; not owned. \param includeFolder the folder of names without "/".
    explicit CCryptoGENParser(ICryptoIncludeLoader* loader = nullptr, CCryptoString includeFolder = {});
    /// Included files are read from disk; the folder is asked for when the first name without "/" is met.
    explicit CCryptoGENParser(std::function<CCryptoString()> includeFolder);

    /// \return the first item with the others as its siblings, an empty node for text without items; null, logged, on failure.
    [[nodiscard]] ccrypto::ElementNodePtr Parse(std::string_view text);
    /// The same for text that may not be a template: nothing is logged.
    [[nodiscard]] ccrypto::ElementNodePtr TryParse(std::string_view text);
    /// The same for a text inside another one, which shares the limit on items: `itemsLeft` is counted down.
    [[nodiscard]] ccrypto::ElementNodePtr TryParse(std::string_view text, std::uint32_t& itemsLeft);

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
    std::uint32_t includeBytesLeft_ = maxIncludeBytes;
    std::uint32_t itemsLeft_ = 0;
    CCryptoString reason_;
    CCryptoString innerReason_; ///< why an included file does not parse
};
