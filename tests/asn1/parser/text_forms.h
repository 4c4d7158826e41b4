#pragma once

#include "asn1/parser/parser.h"
#include "core/diagnostics/error_handler.h"
#include "core/text/hex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>

namespace ccrypto {

inline element Der(std::string_view bytes)
{
    return element(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

inline element FromHex(std::string_view digits)
{
    element bytes;
    EXPECT_TRUE(BytesFromHex(digits, bytes)) << digits;
    return bytes;
}

inline std::string Hex(const element& bytes)
{
    return std::string(element(bytes.data(), bytes.length()).toString().view());
}

/// A form in which a tree is written and read.
struct TextForm {
    CCryptoString (CCryptoParser::*print)() const;
    bool (CCryptoParser::*load)(std::string_view);
};

inline constexpr TextForm templateForm{&CCryptoParser::ToText, &CCryptoParser::Load_ASCII_Memory};
inline constexpr TextForm jsonForm{&CCryptoParser::ToJson, &CCryptoParser::Load_JSON_Memory};
inline constexpr TextForm xmlForm{&CCryptoParser::ToXml, &CCryptoParser::Load_XML_Memory};

/// Written in each of the forms and read back, the tree is the same: seen in one form, which shows every part in its place.
inline void ExpectReadsBack(const CCryptoParser& tree, const TextForm& seen, std::initializer_list<TextForm> forms)
{
    for (const TextForm& form : forms) {
        const CCryptoString text = (tree.*form.print)();
        CCryptoParser again;
        EXPECT_TRUE((again.*form.load)(text.view())) << text.c_str();
        EXPECT_EQ((again.*seen.print)(), (tree.*seen.print)()) << text.c_str();
    }
}

inline constexpr std::string_view xmlHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

/// A JSON text without the blanks between its tokens; an XML text without its declaration.
inline std::string Json(const CCryptoParser& parser)
{
    const CCryptoString layout = parser.ToJson();
    std::string text;
    bool inString = false;
    for (std::size_t index = 0; index < layout.view().size(); ++index) {
        const char character = layout.view()[index];
        if (inString && character == '\\')
            text += layout.view()[index++];
        else if (character == '"')
            inString = !inString;
        if (inString || (character != ' ' && character != '\n'))
            text += layout.view()[index];
    }
    return text;
}

inline std::string Xml(const CCryptoParser& parser)
{
    const std::string text(parser.ToXml().view());
    EXPECT_TRUE(text.starts_with(xmlHead));
    return text.substr(std::min(xmlHead.size(), text.size()));
}

/// What a text prints as when it was read.
inline std::string JsonOf(std::string_view text)
{
    CCryptoParser parser;
    return parser.Load_JSON_Memory(text) ? Json(parser) : "refused";
}

inline std::string XmlOf(std::string_view text)
{
    CCryptoParser parser;
    return parser.Load_XML_Memory(text) ? Xml(parser) : "refused";
}

/// The reason of the parse alone, as the process keeps it after the name of the operation.
template <typename Load>
std::string Reason(Load&& load)
{
    CCryptoErrorHandler::ClearLastErrorText();
    if (load())
        return "";
    const std::string text(CCryptoErrorHandler::LastErrorText().view());
    const std::size_t afterName = text.find("::Parse:");
    return afterName != std::string::npos ? text.substr(afterName + 8) : text;
}

inline std::string Repeated(std::string_view text, int count)
{
    std::string repeated;
    for (int index = 0; index < count; ++index)
        repeated += text;
    return repeated;
}

} // namespace ccrypto
