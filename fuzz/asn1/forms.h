#pragma once

#include "asn1/parser/parser.h"
#include "asn1/template/gen_parser.h"
#include "fuzz/require.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace ccrypto {

inline std::string_view TextOf(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

/// The text before the first line feed, and the text after it.
inline std::pair<std::string_view, std::string_view> SplitLine(std::string_view input)
{
    const std::size_t end = input.find('\n');
    return {input.substr(0, end), end != std::string_view::npos ? input.substr(end + 1) : std::string_view()};
}

/// The tree of a template that may not read files.
inline ElementNodePtr ParseTemplate(std::string_view text)
{
    NoIncludes loader;
    return CCryptoGENParser(&loader).TryParse(text);
}

/// JSON of the tree is read again, and then prints the same.
inline void RequireStableJson(const CCryptoParser& tree)
{
    const CCryptoString json = tree.ToJson();
    CCryptoParser again;
    Require(again.Load_JSON_Memory(json.view()));
    Require(again.ToJson() == json);
}

/// Template text of the tree gives the same tree: seen in its JSON. \param size of the input; a longer one may be nested deeper
/// than template text goes.
inline void RequireSameInText(const CCryptoParser& tree, std::size_t size)
{
    const CCryptoParser again(ParseTemplate(tree.ToText().view()));
    Require(again.isEmpty() ? size >= CCryptoGENParser::maxNesting : again.ToJson() == tree.ToJson());
}

inline void RequireStableXml(const CCryptoParser& tree)
{
    const CCryptoString xml = tree.ToXml();
    CCryptoParser again;
    Require(again.Load_XML_Memory(xml.view()));
    Require(again.ToXml() == xml);
}

/// Any text: what `load` reads of it prints, and the print is read and prints the same; so does its template text.
inline void RequireStableDocument(std::string_view text, bool (CCryptoParser::*load)(std::string_view))
{
    CCryptoParser tree;
    if (!(tree.*load)(text)) {
        Require(tree.isEmpty());
        return;
    }
    RequireStableJson(tree);
    RequireStableXml(tree);
    RequireSameInText(tree, text.size());
}

} // namespace ccrypto
