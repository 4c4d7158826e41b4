#pragma once

#include "asn1/parser/parser.h"
#include "core/text/hex.h"

#include <gtest/gtest.h>

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

} // namespace ccrypto
