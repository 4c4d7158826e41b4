#pragma once

#include "asn1/json/json_lexer.h"
#include "asn1/text/token_reader.h"
#include "asn1/tree/element_node.h"
#include "asn1/tree/item_list.h"
#include "core/text/string.h"

#include <cstdint>
#include <string_view>

/// Parses JSON (RFC 8259) into the tree that templates and DER give.
///
/// A document of items, in which every object has one member named by the head of an item ("SEQUENCE", "CONTEXT_SPECIFIC[0]"),
/// gives the tree of that template; any other is an ordinary document. docs/template-language.md describes both. A document that
/// starts with "{" is read up to its closing "}", any other to the end of input.
///
/// Work and memory are linear in the text: a document that is not one of items is read twice.
class CCryptoJSONParser : private ccrypto::TokenReader<ccrypto::internal::JsonLexer> {
public:
    static constexpr std::uint32_t maxNesting = 128; ///< levels of objects and arrays

    /// \return the first item or member with the others as its siblings; null, logged, on failure.
    [[nodiscard]] ccrypto::ElementNodePtr Parse(std::string_view text);
    /// Whether a document is one of items. Nothing is logged.
    [[nodiscard]] bool IsItems(std::string_view text);

private:
    ccrypto::ElementNodePtr parseItems(std::string_view text);
    ccrypto::ElementNodePtr parseOrdinary(std::string_view text);

    bool parseItemsRoot(ccrypto::ItemList& list);
    bool parseItemArray(ccrypto::ItemList& list, const elementNode* owner, std::uint32_t depth);
    bool parseItem(ccrypto::ItemList& list, const elementNode* owner, std::uint32_t depth);
    bool parseItemAfterBrace(ccrypto::ItemList& list, std::uint32_t depth);
    bool parseItemValue(elementNode& item, std::uint32_t depth);
    bool takeItemScalar(const elementNode* owner, element& value);

    bool parseMembers(elementNode& object, std::uint32_t depth);
    bool parseArray(elementNode& array, std::uint32_t depth);
    bool parseValue(elementNode& node, std::uint32_t depth);

    elementNode* add(ccrypto::ItemList& list, ccrypto::ElementNodePtr node);
    bool expect(ccrypto::ElementType type);
    bool tooDeep();

    CCryptoString refusal_; ///< why DER cannot hold a document of items
};
