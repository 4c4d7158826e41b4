#include "asn1/parser/parser.h"
#include "tests/asn1/parser/text_forms.h"

#include <gtest/gtest.h>

#include <string>

using namespace ccrypto;

namespace {

using std::string_view_literals::operator""sv;

TEST(Json, AnOrdinaryDocumentIsPrintedAsItWas)
{
    const std::string_view documents[] = {
        R"({})",
        R"([])",
        R"(5)",
        R"("")",
        R"(null)",
        R"([null,true,false,-5,0,{},[],[[]],{"a":{}},[{}]])",
        R"({"name":"x","list":[1,2,{"deep":[{"a":1},{"a":1,"b":2}]}],"empty":{},"none":null,"flag":true})",
        R"({"a":1,"a":2})",
        R"({"":{"":""}," ":"'quoted'","#00":"#00","a[0]":"\\#00","{}":[]})",
        R"([1.5,-0,1E+3,0.0001,-0.5e-10,123456789012345678901234567890,-123456789012345678901234567890,-200,-128,-129,-256])",
        R"({"text":"\"\\\b\f\n\r\t\u0000\u001f\u007f/"})",
        "{\"\xC3\xA4\":\"\xE2\x82\xAC\xF0\x9F\x98\x80\"}",
        // Names of types whose values are not items.
        R"({"SEQUENCE":{"a":1}})",
        R"({"SET":[{"a":1,"b":2}]})",
        R"({"ASN.1":[]})",
        R"({"INTEGER":1,"NULL":null,"include":"include /etc/hostname","INTEGER = 5":[]})",
        // What reads as items, and is not written as items are.
        R"({"SET -- v1":5})",
        R"({"SET":"text#41"})",
        R"({"SEQUENCE = 1":null})",
        R"({"INTEGER":"integer#05"})",
        R"({"SEQUENCE":{"a":1.5}})",
    };
    for (const std::string_view document : documents)
        EXPECT_EQ(JsonOf(document), document);
}

TEST(Json, ReadsEveryNotationAndStopsAfterTheClosingBrace)
{
    const std::pair<std::string_view, const char*> cases[] = {
        {" { \"a\" : [ 1 ,2 ] } after", R"({"a":[1,2]})"},
        {"\xEF\xBB\xBF[1]", "[1]"},
        {"\xFF\xFE[\0"
         "1\0]\0"sv,
         "[1]"},
        {"\xFF\xFE[\0]\0 "sv, "[]"},
        {R"(["\u00e4\uD83D\uDE00\uDBFF\uDFFF\/"])", "[\"\xC3\xA4\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF/\"]"},
        {R"({"INTEGER": 128})", R"({"INTEGER":128})"},
        {R"({"SEQUENCE": []})", R"({"SEQUENCE":[]})"},
        {R"json({"SET(OPTIONAL)": [{"SEQUENCE": null}]})json", R"json({"SET (OPTIONAL)":[{"SEQUENCE":[]}]})json"},
        {R"({"SEQUENCE[CONSTRUCTED]": [], "x": 1})", R"({"SEQUENCE[CONSTRUCTED]":[],"x":1})"},
    };
    for (const auto& [text, printed] : cases)
        EXPECT_EQ(JsonOf(text), printed) << text;
    CCryptoParser parser;
    ASSERT_TRUE(parser.Load_JSON_Memory(R"({"name": "x", "list": [1, [2, 3]], "inner": {"n": -7}})"));
    EXPECT_EQ(parser.get_text("name"), "x");
    EXPECT_EQ(parser.find_name(parser.root(), "n", true, true)->shortValue()->token().toInt(), -7);
    EXPECT_EQ(parser.find_path(",[,[,")->token().toWord32(), 3u);
    ASSERT_TRUE(parser.Load_JSON_Memory(R"({"SEQUENCE": [{"INTEGER": -129}, {"BOOLEAN": true}, {"NULL": null}]})"));
    EXPECT_EQ(parser.ToDer().toString(), element("\x30\x09\x02\x02\xFF\x7F\x01\x01\xFF\x05\x00", 11).toString());
}

// Through each of the other forms, an ordinary document comes back as it was.
TEST(Json, AnOrdinaryDocumentKeepsItsValuesInEveryForm)
{
    const std::string_view documents[] = {
        R"({"a":[1,[2]]})",
        R"({"a":[1,{"b":2}]})",
        R"({"a":[]})",
        R"({"a":[{}]})",
        R"({"a":[{},[],{"b":[[],[]]}]})",
        R"([[],{}])",
        R"({"a":1.5})",
        R"({"a":true,"b":[false]})",
        R"({"a":-5,"b":[7,-5,-129]})",
        R"({"a":123456789012345678901234567890})",
        R"({"a":"'x'","b":"characterData'x'","c":"%text"})",
    };
    for (const std::string_view document : documents) {
        SCOPED_TRACE(document);
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_JSON_Memory(document));
        EXPECT_EQ(Json(parser), document);
        ExpectReadsBack(parser, jsonForm, {templateForm, xmlForm});
    }
}

TEST(Json, SaysWhyAndWhereTextIsRefused)
{
    const std::pair<std::string_view, const char*> cases[] = {
        {"", "Parsing failed; Token not expected?; row=1,col=1"},
        {"{\"a\":1", "Parsing failed; Token not expected?; row=1,col=7"},
        {"[1,]", "Parsing failed; Token not expected: ] (token=55); row=1,col=4"},
        {"{\"a\" 1}", "Parsing failed; Token not expected: 1 (token=13); row=1,col=6"},
        {"{\"a\" \"\\u001b\xC3\xA4\"}", "Parsing failed; Token not expected: ??? (token=6); row=1,col=6"},
        {"{1:2}", "Parsing failed; Token not expected: 1 (token=13); row=1,col=2"},
        {"[1] \"two\"", "Parsing failed; Token not expected: two (token=4); row=1,col=5"},
        {"[1] \"~\x7F"
         "abcdefghijklmnopqrstuvwxyz0123456789ABCDEFGHIJ\"",
         "Parsing failed; Token not expected: ~?abcdefghijklmnopqrstuvwxyz0123456789AB (token=4); row=1,col=5"},
        {"[\n 01]", "CCryptoLexicalAnalyzer::scan; Unexpected character (row=2,col=2)"},
        {"[nul]", "CCryptoLexicalAnalyzer::scan; Unexpected character (row=1,col=2)"},
        {"[1.]", "CCryptoLexicalAnalyzer::scan; Unexpected character (row=1,col=2)"},
        {"\"open", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=2)"},
        {"\"\\u12", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=4)"},
        {"\"\\x\"", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=4)"},
        {"\"\\uD800\"", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=8)"},
        {"\"\\uDC00\"", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=8)"},
        {"\"\\uD83D\\u0041\"", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=14)"},
        {"\"\xC1\x81\"", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=2)"},
        {"\"\xED\xA0\x80\"", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=2)"},
        {"\"\xF4\x90\x80\x80\"", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=2)"},
        {"\"\xC3\"", "CCryptoLexicalAnalyzer::scan; String parsing error (row=1,col=2)"},
        {"\"a\nb\"", "CCryptoLexicalAnalyzer::scan; Invalid string (row=1,col=3)"},
        {"\"a\0b\""sv, "CCryptoLexicalAnalyzer::scan; Invalid string (row=1,col=3)"},
        {"{\"INTEGER\": 1.5}", "Parsing failed; A number is not whole or has more than 9864 digits; row=1,col=13"},
        {"{\"SET\": [{\"ENUMERATED\": 1e3}]}", "Parsing failed; A number is not whole or has more than 9864 digits; row=1,col=25"},
    };
    for (const auto& each : cases) {
        const auto [text, reason] = each;
        SCOPED_TRACE(text);
        EXPECT_EQ(Reason([text = text] { return CCryptoParser().Load_JSON_Memory(text); }), reason);
    }
}

} // namespace
