#pragma once

#include "asn1/text/token_reader.h"
#include "asn1/tree/element_node.h"
#include "asn1/tree/item_list.h"
#include "asn1/xml/xml_lexer.h"
#include "core/text/string.h"

#include <cstdint>
#include <string_view>

/// Parses XML 1.0 into the tree that templates and DER give.
///
/// A document whose root declares the namespace of templates gives the tree of that template; any other is an ordinary document,
/// whose text is kept to the last blank. docs/template-language.md describes both. Comments, processing instructions and the
/// document type are ignored; entities that a document declares are refused.
///
/// Work and memory are linear in the text, but for the sort of one element's attributes.
class CCryptoXMLParser : private ccrypto::TokenReader<ccrypto::internal::XmlLexer> {
public:
    static constexpr std::uint32_t maxNesting = 128;                    ///< levels of elements
    static constexpr std::uint32_t maxTemplateNesting = maxNesting + 2; ///< a <list> around the items, an <item> inside

    /// \return the root, or the items of a template as siblings; null, logged, on failure.
    [[nodiscard]] ccrypto::ElementNodePtr Parse(std::string_view text);

private:
    ccrypto::ElementNodePtr parseDocument(std::string_view text);
    ccrypto::ElementNodePtr parseElement(const elementNode* owner, std::uint32_t depth);
    bool parseAttributes(ccrypto::ItemList& attributes);
    bool parseAttribute(ccrypto::ItemList& attributes);
    ccrypto::ElementNodePtr makeElement(std::string_view name, ccrypto::ItemList& attributes, std::uint32_t depth);
    /// The item of an element of the template namespace, without its content; a value's token is still to come.
    ccrypto::ElementNodePtr makeItem(std::string_view tag, const elementNode* attributes);
    bool makePart(elementNode& item, const elementNode& attribute);
    bool parseContent(std::string_view name, elementNode& node, const elementNode* owner, std::uint32_t depth);
    bool takeText(elementNode& item, std::string_view text, const elementNode* owner);
    bool skipBlankText();

    bool isTemplate_ = false;
};
