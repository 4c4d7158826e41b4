#include "asn1/template/lexical_analyzer.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace ccrypto;

namespace {

using std::string_view_literals::operator""sv;

/// The tokens as their codes, and in brackets their texts; then what was wrong.
std::string Tokens(std::string_view text)
{
    CCryptoLexicalAnalyzer lexer(text);
    std::string tokens;
    element token;
    while (lexer.scan(token)) {
        if (token.type() == ElementType::endOfInput)
            return tokens;
        tokens += tokens.empty() ? "" : " ";
        tokens += std::to_string(static_cast<int>(token.type()));
        if (!token.isEmpty())
            tokens += "(" + std::string(token.toString().view()) + ")";
    }
    return tokens + (tokens.empty() ? "" : " ") + std::string(lexer.cursor().reason().view());
}

// The codes are part of the format of trees, and the spelling of the words is that of stored templates.
TEST(Lexer, KnowsEveryKeyword)
{
    const std::pair<const char*, int> cases[] = {
        {"null", 1},
        {"OPTIONAL", 15},
        {"case", 18},
        {"APPLICATION", 58},
        {"CONTEXT_SPECIFIC", 59},
        {"PRIVATE", 60},
        {"BOOLEAN", 61},
        {"INTEGER", 62},
        {"BIT_STRING", 63},
        {"OCTET_STRING", 64},
        {"NULL", 65},
        {"OBJECT_IDENTIFIER", 66},
        {"ObjectDescriptor", 67},
        {"EXTERNAL", 68},
        {"REAL", 69},
        {"ENUMERATED", 70},
        {"UTF8String", 71},
        {"SEQUENCE", 72},
        {"SET", 73},
        {"NumericString", 74},
        {"PrintableString", 75},
        {"TeletexString", 76},
        {"VideoString", 77},
        {"VideotexString", 77},
        {"IA5String", 78},
        {"UTCTime", 79},
        {"GeneralizedType", 80},
        {"GraphicsString", 81},
        {"VisibleString", 82},
        {"GeneralString", 83},
        {"UniversalString", 84},
        {"BMPString", 85},
        {"PRIMITIVE", 86},
        {"IMPLICIT", 87},
        {"EXPLICIT", 88},
        {"CONSTRUCTED", 89},
        {"GeneralizedTime", 2},
        {"sequence", 2},
        {"SEQUENC", 2},
        {"SEQUENCES", 2},
    };
    for (const auto& [word, code] : cases)
        EXPECT_EQ(static_cast<int>(KeywordType(word)), code) << word;
}

TEST(Lexer, SplitsTemplateText)
{
    const std::pair<std::string_view, std::string_view> cases[] = {
        {", . ; : \\ / ! % = == != > >= < <= + ++ - -", "20 21 22 23 24 25 26 27 36 37 38 40 41 42 43 44 45 46 46"},
        {"* || && {}[]()", "48 50 51 52 53 54 55 56 57"},
        {"a.b-c_1 a. b -", "2(a.b-c_1) 2(a) 21 2(b) 46"},
        {"a--b\nc", "2(a) 2(c)"},
        {"-1 a-1 a -1 (2)-1 [2]-1 {2}-1 = -1 \"t\"-1",
         "13(-1) 2(a-1) 2(a) 46 13(1) 56 13(2) 57 46 13(1) 54 13(2) 55 46 13(1) 52 13(2) 53 46 13(1) 36 13(-1) 4(t) 46 13(1)"},
        {"0 007 1.2.3 1.", "13(0) 13(7) 4(1.2.3) 13(1) 21"},
        {R"("\n\r\t\"\`\\\x41")", "4(\n\r\t\"`\\A)"},
        {"`a b\\`` 'x\"' #00fF #", "2(a b`) 5(x\") 9(00ff) 9"},
        {"%text\"a\" %-integer#05 %truth#", "4(a) 13(-5) 12"},
        {"\xEF\xBB\xBF"
         "a",
         "2(a)"},
        {"\xFE\xFF\0a\0 \0b"sv, "2(a) 2(b)"},
        {"\xFF\xFE"
         "a\0 \0b\0"sv,
         "2(a) 2(b)"},
    };
    for (const auto& [text, tokens] : cases)
        EXPECT_EQ(Tokens(text), tokens) << text;
}

TEST(Lexer, SaysWhatIsWrongAndWhere)
{
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"\n\n  $", "CCryptoLexicalAnalyzer::scan; Unexpected character (row=3,col=3)"},
        {"\xC3\xA4\xE2\x82\xAC $", "2(\xC3\xA4\xE2\x82\xAC) CCryptoLexicalAnalyzer::scan; Unexpected character (row=1,col=4)"},
        {"5a", "CCryptoLexicalAnalyzer::scan; Unexpected character (row=1,col=2)"},
        {"#0", "CCryptoLexicalAnalyzer::scan; Unexpected character (row=1,col=3)"},
        {"#00g", "CCryptoLexicalAnalyzer::scan; Unexpected character (row=1,col=4)"},
        {"%kind\"a\"", "CCryptoLexicalAnalyzer::scan; Unexpected character (row=1,col=1)"},
        {"%text", "CCryptoLexicalAnalyzer::scan; Unexpected character (row=1,col=6)"},
        {"& |", "CCryptoLexicalAnalyzer::scan; Unexpected character (row=1,col=1)"},
        {"\"open", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=2)"},
        {"\"a\\q\"", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=5)"},
        {"\"\\x4\"", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=4)"},
        {"`open", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=2)"},
        {"'open", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=6)"},
        {"'a\x1F'", "CCryptoLexicalAnalyzer::scan; Invalid string (row=1,col=3)"},
        {"'a\0'"sv, "CCryptoLexicalAnalyzer::scan; Invalid string (row=1,col=3)"},
    };
    for (const auto& [text, tokens] : cases)
        EXPECT_EQ(Tokens(text), tokens) << text;
}

TEST(Lexer, ReadsTheNameOfAFile)
{
    const std::pair<std::string_view, std::string_view> cases[] = {
        {" a/b.txt c", "a/b.txt"}, {"a,b", "a"},     {"a;b", "a"},      {"a}b", "a"},
        {"'a, b'c", "a, b"},       {"\"a}\"", "a}"}, {"'open", "open"}, {"", ""},
    };
    for (const auto& [text, name] : cases) {
        CCryptoLexicalAnalyzer lexer(text);
        EXPECT_EQ(lexer.scanFileName(), name) << text;
    }
}

// Inside an expression "--" is an operator, but a comment where it begins a line.
TEST(Lexer, TakesTwoMinusSignsByTheirPlace)
{
    CCryptoLexicalAnalyzer lexer("a -- b\n-- c\nd");
    std::string tokens;
    element token;
    EXPECT_FALSE(lexer.setExpression(true));
    while (lexer.scan(token) && token.type() != ElementType::endOfInput)
        tokens += std::to_string(static_cast<int>(token.type())) + (lexer.beginsLine() ? "! " : " ");
    EXPECT_EQ(tokens, "2 47 2 2! ");
}

} // namespace
