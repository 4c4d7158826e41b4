#pragma once

#include "asn1/json/json_lexer.h"
#include "asn1/template/token_reader.h"
#include "asn1/tree/element_node.h"
#include "asn1/tree/item_list.h"
#include "core/text/string.h"

#include <cstdint>
#include <string_view>

/// Parses JSON (RFC 8259) into the tree that templates and DER give.
///
/// A document that is an object of one member with the head of an item as its name ("SEQUENCE", "CONTEXT_SPECIFIC[0]"), all the way
/// down, and is written as such trees are printed, gives the tree of that template; any other is an ordinary document.
/// docs/template-language.md describes both. A document that starts with "{" is read up to its closing "}", any other to the end of
/// input.
class CCryptoJSONParser : private ccrypto::CTokenReader<ccrypto::internal::JsonLexer> {
public:
    static constexpr std::uint32_t deepestNesting = 128;

    /// \return the first item or member with the others as its siblings; null, logged, on failure.
    ccrypto::ElementNodePtr Parse(std::string_view text);
    /// Whether a document is one of items.
    bool IsItems(std::string_view text);

private:
    ccrypto::ElementNodePtr parseItems(std::string_view text);
    ccrypto::ElementNodePtr parseOrdinary(std::string_view text);

    bool parseItemsRoot(ccrypto::ItemList& list);
    bool parseItemArray(ccrypto::ItemList& list, const elementNode* owner, std::uint32_t depth);
    bool parseItem(ccrypto::ItemList& list, const elementNode* owner, std::uint32_t depth);
    bool parseItemBehindBrace(ccrypto::ItemList& list, std::uint32_t depth);
    bool parseItemValue(elementNode& item, std::uint32_t depth);
    bool takeItemScalar(const elementNode* owner, element& value);

    bool parseMembers(elementNode& object, std::uint32_t depth);
    bool parseArray(elementNode& array, std::uint32_t depth);
    bool parseValue(elementNode& node, std::uint32_t depth);

    elementNode* add(ccrypto::ItemList& list, ccrypto::ElementNodePtr node);
    bool expect(ccrypto::ElementType type);
    bool tooDeep();

    CCryptoString refusal_; ///< why a document of items is none that DER can hold
};
