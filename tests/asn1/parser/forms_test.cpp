#include "asn1/parser/parser.h"
#include "core/diagnostics/error_handler.h"
#include "tests/asn1/parser/text_forms.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <random>
#include <string>

using namespace ccrypto;

namespace {

using std::string_view_literals::operator""sv;

// The tree of a template keeps all its parts in both forms.
TEST(Forms, ATemplateReadsBackFromJsonAndXml)
{
    const struct {
        const char *text, *json, *xml;
    } cases[] = {
        {"SEQUENCE { OBJECT_IDENTIFIER = algorithmOID, parameters(OPTIONAL) }",
         R"json({"SEQUENCE":[{"OBJECT_IDENTIFIER = algorithmOID":null},{"parameters (OPTIONAL)":null}]})json",
         "<SEQUENCE xmlns=\"urn:x-asn1:template\">\n"
         "    <OBJECT_IDENTIFIER value=\"algorithmOID\"/>\n"
         "    <parameters modifiers=\"OPTIONAL\"/>\n"
         "</SEQUENCE>\n"},
        {"CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL){INTEGER=5,OCTET_STRING=#00ff,UTF8String=\"\xC3\xA4\"}",
         "{\"CONTEXT_SPECIFIC[0,CONSTRUCTED] (OPTIONAL)\":[{\"INTEGER\":5},{\"OCTET_STRING\":\"#00ff\"},"
         "{\"UTF8String\":\"\xC3\xA4\"}]}",
         "<CONTEXT_SPECIFIC xmlns=\"urn:x-asn1:template\" brackets=\"0,CONSTRUCTED\" modifiers=\"OPTIONAL\">\n"
         "    <INTEGER>5</INTEGER>\n"
         "    <OCTET_STRING>#00ff</OCTET_STRING>\n"
         "    <UTF8String>\xC3\xA4</UTF8String>\n"
         "</CONTEXT_SPECIFIC>\n"},
        {"BIT_STRING[PRIMITIVE]{#00,key,'quoted',\"#00\",NULL, null, 5 (a) = b}",
         R"({"BIT_STRING[PRIMITIVE]":["#00",{"key":null},"'quoted'","\\#00",{"NULL":null},null,{"5 (a) = b":null}]})",
         "<BIT_STRING xmlns=\"urn:x-asn1:template\" brackets=\"PRIMITIVE\">\n"
         "    <item>#00</item>\n"
         "    <key/>\n"
         "    <item>'quoted'</item>\n"
         "    <item>\\#00</item>\n"
         "    <NULL/>\n"
         "    <null/>\n"
         "    <item token=\"5\" modifiers=\"a\" value=\"b\"/>\n"
         "</BIT_STRING>\n"},
        {"INTEGER=1, INTEGER{2} = -3", R"({"ASN.1":[{"INTEGER":1},{"INTEGER = -3":[2]}]})",
         "<list xmlns=\"urn:x-asn1:template\">\n"
         "    <INTEGER>1</INTEGER>\n"
         "    <INTEGER value=\"-3\">\n"
         "        <item>2</item>\n"
         "    </INTEGER>\n"
         "</list>\n"},
        {"SET { count {items} + 1 * 2 }", R"({"SET":[{"count + 1 * 2":[{"items":null}]}]})",
         "<SET xmlns=\"urn:x-asn1:template\">\n"
         "    <count operation=\"+ 1 * 2\">\n"
         "        <items/>\n"
         "    </count>\n"
         "</SET>\n"},
        // Names that the form has a use for, and a value as the root.
        {"SET { `a:b`, list, item }", R"({"SET":[{"`a:b`":null},{"list":null},{"item":null}]})",
         "<SET xmlns=\"urn:x-asn1:template\">\n"
         "    <item token=\"`a:b`\"/>\n"
         "    <item token=\"list\"/>\n"
         "    <item token=\"item\"/>\n"
         "</SET>\n"},
        {"'quoted'", R"({"ASN.1":["'quoted'"]})",
         "<list xmlns=\"urn:x-asn1:template\">\n"
         "    <item>'quoted'</item>\n"
         "</list>\n"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.text);
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_ASCII_Memory(each.text));
        EXPECT_EQ(Json(parser), each.json);
        EXPECT_EQ(Xml(parser), each.xml);
        ExpectReadsBack(parser, templateForm, {jsonForm, xmlForm});
    }
}

// All but one part of these trees could be written as an ordinary document, which would lose or change that part.
TEST(Forms, KeepTreesThatAreNearlyOrdinary)
{
    const char* const trees[] = {
        "a = 1 2",
        "a = %utf8Text#ff",
        "a = %truth#02",
        "a [1] { b = 2 }",
        "a [b = \"x\" \"y\"]",
        "`\\xff` = 1",
        "a { %characterData\"x\", %characterData\"y\" }",
    };
    for (const char* const tree : trees) {
        SCOPED_TRACE(tree);
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_ASCII_Memory(tree));
        ExpectReadsBack(parser, templateForm, {jsonForm, xmlForm});
    }
}

// A decimal number in an INTEGER or ENUMERATED is a number in both forms, quoted or not. From 2^53 on it is a JSON string, as other
// programs would round it.
TEST(Forms, WriteNumbersInDecimal)
{
    const struct {
        const char *json, *printed, *xml, *der;
    } cases[] = {
        {R"({"INTEGER": "200"})", R"({"INTEGER":200})", "<INTEGER>200</INTEGER>", "020200c8"},
        {R"({"INTEGER": "-129"})", R"({"INTEGER":-129})", "<INTEGER>-129</INTEGER>", "0202ff7f"},
        {R"({"ENUMERATED": "0"})", R"({"ENUMERATED":0})", "<ENUMERATED>0</ENUMERATED>", "0a0100"},
        {R"({"INTEGER": ["7"]})", R"({"INTEGER":[7]})", "<INTEGER><item>7</item></INTEGER>", "020107"},
        {R"({"INTEGER": 9007199254740991})", R"({"INTEGER":9007199254740991})", "<INTEGER>9007199254740991</INTEGER>",
         "02071fffffffffffff"},
        {R"({"INTEGER": 9007199254740992})", R"({"INTEGER":"9007199254740992"})", "<INTEGER>9007199254740992</INTEGER>",
         "020720000000000000"},
        {R"({"INTEGER": -9007199254740991})", R"({"INTEGER":-9007199254740991})", "<INTEGER>-9007199254740991</INTEGER>",
         "0207e0000000000001"},
        {R"({"INTEGER": "-9007199254740992"})", R"({"INTEGER":"-9007199254740992"})", "<INTEGER>-9007199254740992</INTEGER>",
         "0207e0000000000000"},
        {R"({"ENUMERATED": "18446744073709551616"})", R"({"ENUMERATED":"18446744073709551616"})",
         "<ENUMERATED>18446744073709551616</ENUMERATED>", "0a09010000000000000000"},
        // Elsewhere digits are text, and a number that is a string needs its kind.
        {R"({"PrintableString": "200"})", R"({"PrintableString":"200"})", "<PrintableString>200</PrintableString>", "1303323030"},
        {R"({"OCTET_STRING": 9007199254740992})", R"({"OCTET_STRING":"integer#20000000000000"})",
         "<OCTET_STRING>integer#20000000000000</OCTET_STRING>", "040720000000000000"},
        {R"({"INTEGER": "text#323030"})", R"({"INTEGER":"text#323030"})", "<INTEGER>text#323030</INTEGER>", "0203323030"},
        {R"({"INTEGER": "0200"})", R"({"INTEGER":"0200"})", "<INTEGER>0200</INTEGER>", "020430323030"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.json);
        CCryptoParser json, xml;
        ASSERT_TRUE(json.Load_JSON_Memory(each.json));
        EXPECT_EQ(Json(json), each.printed);
        EXPECT_EQ(Hex(json.ToDer()), each.der);
        std::string text = each.xml;
        text.insert(text.find('>'), " xmlns='urn:x-asn1:template'");
        ASSERT_TRUE(xml.Load_XML_Memory(text));
        EXPECT_EQ(Json(xml), each.printed);
        EXPECT_EQ(Hex(xml.ToDer()), each.der);
        ExpectReadsBack(json, jsonForm, {jsonForm, xmlForm});
    }
}

TEST(Forms, TakeForTextWhatIsNotQuiteMarked)
{
    const std::pair<const char*, const char*> cases[] = {
        {"'", "040127"},
        {"characterData'", "040e6368617261637465724461746127"},
        {"#0", "04022330"},
        {"#AB", "0403234142"},
    };
    for (const auto& [text, der] : cases) {
        SCOPED_TRACE(text);
        CCryptoParser json, xml;
        EXPECT_TRUE(json.Load_JSON_Memory(std::string("{\"OCTET_STRING\":\"") + text + "\"}"));
        EXPECT_TRUE(xml.Load_XML_Memory(std::string("<OCTET_STRING xmlns='urn:x-asn1:template'>") + text + "</OCTET_STRING>"));
        EXPECT_EQ(Hex(json.ToDer()), der);
        EXPECT_EQ(Hex(xml.ToDer()), der);
    }
}

// The zero octet that DER puts before a magnitude with its top bit set is not part of the number.
TEST(Forms, WriteANumberOfDerWithoutItsSignOctet)
{
    const struct {
        std::string_view der;
        const char *text, *json, *xml;
    } cases[] = {
        {"\x02\x02\0\xC8"sv, "INTEGER = 200\n", "200", "200"},
        {"\x02\x03\0\x80\0"sv, "INTEGER = 32768\n", "32768", "32768"},
        {"\x02\x09\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"sv, "INTEGER = 18446744073709551615\n", "\"18446744073709551615\"",
         "18446744073709551615"},
        // Not as DER has it: only the bytes give it back.
        {"\x02\x02\0\x7F"sv, "INTEGER = %integer#007f\n", "\"integer#007f\"", "integer#007f"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.text);
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_DER_Memory(Der(each.der)));
        EXPECT_EQ(parser.ToText(), each.text);
        EXPECT_EQ(Json(parser), std::string("{\"INTEGER\":") + each.json + "}");
        EXPECT_EQ(Xml(parser), std::string("<INTEGER xmlns=\"urn:x-asn1:template\">") + each.xml + "</INTEGER>\n");
        ExpectReadsBack(parser, jsonForm, {templateForm, jsonForm, xmlForm});
    }
}

TEST(Forms, RefuseNestingBeyond128Levels)
{
    const struct {
        const char *open, *inside, *close, *reason;
        bool (CCryptoParser::*load)(std::string_view);
    } cases[] = {
        {"[", "1", "]", "Parsing failed; More than 128 levels of nesting; row=1,col=130", &CCryptoParser::Load_JSON_Memory},
        {"{\"a\":", "1", "}", "Parsing failed; More than 128 levels of nesting; row=1,col=642", &CCryptoParser::Load_JSON_Memory},
        {"{\"SET\":[", "", "]}", "Parsing failed; More than 128 levels of nesting; row=1,col=514",
         &CCryptoParser::Load_JSON_Memory},
        {"<a>", "", "</a>", "Parsing failed; More than 128 levels of nesting; row=1,col=385", &CCryptoParser::Load_XML_Memory},
        {"a{", "b", "}", "Parsing failed; More than 128 levels of nesting; row=1,col=259", &CCryptoParser::Load_ASCII_Memory},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.open);
        CCryptoParser parser;
        const auto nested = [&](int levels) { return Repeated(each.open, levels) + each.inside + Repeated(each.close, levels); };
        EXPECT_TRUE((parser.*each.load)(nested(128)));
        for (const int levels : {129, 100000})
            EXPECT_EQ(Reason([&] { return (parser.*each.load)(nested(levels)); }), each.reason);
    }
}

// The deepest tree that DER decodes to, a long value at its bottom, is not too deep for the other forms.
TEST(Forms, HoldTheDeepestDer)
{
    element der("\x04\x28", 2);
    der.resize(42);
    for (int level = 0; level < 127; ++level) {
        element outer("\x30\x82", 2);
        outer.append(static_cast<std::uint8_t>(der.length() >> 8));
        outer.append(static_cast<std::uint8_t>(der.length()));
        outer.append(der.data(), der.length());
        der = outer;
    }
    element twoRoots = der;
    twoRoots.append("\x05\0"sv);
    for (const element& each : {der, twoRoots}) {
        SCOPED_TRACE(each.length());
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_DER_Memory(each));
        ExpectReadsBack(parser, templateForm, {jsonForm, xmlForm, templateForm});
    }
}

// A number of any length would take more time than its length, a list any length of memory.
TEST(Forms, RefuseLongNumbersAndTooManyItems)
{
    const std::string digits(1000001, '9');
    const std::string tooLong = "A number has more than 1000000 digits";
    const std::string tooMany = "Parsing failed; More than 2000000 items";
    // Up to what 800 members come to with two items each, and not with three.
    const std::string nulls = Repeated("null,", 1998000);
    const std::string sets = nulls + Repeated("{\"SET[0,0]\":\"\"},", 800) + "null]}";
    const struct {
        std::string text, reason;
        bool (CCryptoParser::*load)(std::string_view);
    } cases[] = {
        {"INTEGER=" + digits, tooLong, &CCryptoParser::Load_ASCII_Memory},
        {"INTEGER=-" + digits, tooLong, &CCryptoParser::Load_ASCII_Memory},
        {"<a xmlns='urn:x-asn1:template' value='" + digits + "'/>", "not expected or not understood: value",
         &CCryptoParser::Load_XML_Memory},
        // The items that are read the fastest.
        {std::string(2000001, '\\'), tooMany, &CCryptoParser::Load_ASCII_Memory},
        {"[" + Repeated("{},", 2000000) + "{}]", tooMany, &CCryptoParser::Load_JSON_Memory},
        // Fewer items than that as an ordinary document.
        {"{\"SEQUENCE\":[" + sets, tooMany, &CCryptoParser::Load_JSON_Memory},
        {"{\"ASN.1\":[" + sets, tooMany, &CCryptoParser::Load_JSON_Memory},
        {"<a>" + Repeated("<b/>", 2000000) + "</a>", tooMany, &CCryptoParser::Load_XML_Memory},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.reason);
        CCryptoErrorHandler::ClearLastErrorText();
        CCryptoParser parser;
        EXPECT_FALSE((parser.*each.load)(each.text));
        EXPECT_NE(CCryptoErrorHandler::LastErrorText().view().find(each.reason), std::string_view::npos)
            << CCryptoErrorHandler::LastErrorText().c_str();
    }
    CCryptoParser parser;
    EXPECT_TRUE(parser.Load_ASCII_Memory("INTEGER=" + digits.substr(1)));
    EXPECT_TRUE(parser.Load_JSON_Memory("{\"SEQUENCE\":[" + nulls + Repeated("{\"CONTEXT_SPECIFIC[0]\":\"\"},", 800) + "null]}"));
    EXPECT_EQ(parser.root()->type(), ElementType::sequence);
    EXPECT_TRUE(parser.Load_JSON_Memory("{\"other\":[" + sets));
    // The name of a member is not an item then.
    EXPECT_TRUE(parser.Load_JSON_Memory("{\"" + digits + "\":1}"));
}

/// Runs `body` on a thread that has no stack for a call for each of many siblings, were it of a few bytes.
void OnSmallStack(std::function<void()> body)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
    const auto run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &body), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(Forms, TakeManySiblingsOnASmallStack)
{
    const std::string json = "[\n" + Repeated("    7,\n", 249999) + "    7\n]\n";
    const std::string xml = std::string(xmlHead) + "<a>" + Repeated("<b/>", 250000) + "</a>\n";
    OnSmallStack([&] {
        CCryptoParser parser;
        EXPECT_TRUE(parser.Load_JSON_Memory(json));
        EXPECT_TRUE(parser.ToJson().view() == json);
        EXPECT_TRUE(parser.Load_XML_Memory(xml));
        EXPECT_TRUE(parser.ToXml().view() == xml);
    });
}

TEST(Forms, AreSavedAndLoaded)
{
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("asn1_forms_test_" + std::to_string(std::random_device()()));
    std::filesystem::create_directories(folder);
    const CCryptoString json((folder / "tree.json").string().c_str());
    const CCryptoString xml((folder / "tree.xml").string().c_str());
    CCryptoParser parser;
    ASSERT_TRUE(parser.Load_ASCII_Memory("SEQUENCE { INTEGER = 5, NULL }"));
    CCryptoParser again;
    EXPECT_TRUE(parser.Save_JSON_File(json) && again.Load_JSON_File(json));
    EXPECT_EQ(again.ToText(), parser.ToText());
    EXPECT_TRUE(parser.Save_XML_File(xml) && again.Load_XML_File(xml));
    EXPECT_EQ(again.ToText(), parser.ToText());
    EXPECT_FALSE(again.Load_XML_File(json));
    EXPECT_FALSE(again.Save_JSON_File(json));
    std::filesystem::remove_all(folder);
}

} // namespace
