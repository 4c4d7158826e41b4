#include "asn1/parser/parser.h"
#include "asn1/parser/parser_search.h"
#include "tests/asn1/parser/text_forms.h"
#include "tests/support/captured_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

using namespace ccrypto;

namespace {

using testing::Contains;
using testing::HasSubstr;

TEST(Parser, WalksPathsAndEditsTrees)
{
    CCryptoParser parser;
    ASSERT_TRUE(parser.Load_ASCII_Memory("SEQUENCE { SEQUENCE { CONTEXT_SPECIFIC[0] { INTEGER { version } } name }, last }"));
    EXPECT_TRUE(parser.find_path("{{{=")->isNamed("version"));
    EXPECT_TRUE(parser.find_path("{{,")->isNamed("name"));
    EXPECT_EQ(parser.find_path("{{[")->type(), ElementType::integer);
    EXPECT_EQ(parser.find_path("{P"), parser.root());
    EXPECT_NE(parser.find_path("{|SEQUENCE{a}|{"), nullptr);
    EXPECT_EQ(parser.find_path("{|SET{a}|{"), nullptr);
    EXPECT_EQ(parser.find_path("{x"), nullptr);
    EXPECT_EQ(parser.find_path("{|open"), nullptr);

    CCryptoParser other;
    ASSERT_TRUE(other.Load_ASCII_Memory("INTEGER=7"));
    EXPECT_FALSE(parser.remove_node(other.root()));
    EXPECT_TRUE(parser.fill("version", element(2u)));
    EXPECT_TRUE(parser.fill_tree("name", other.root()));
    EXPECT_TRUE(parser.fill_word("last", "NULL"));
    EXPECT_FALSE(parser.fill("version", element(3u)));
    EXPECT_EQ(Hex(parser.ToDer()), "300c3008a0030201020201070500");
    EXPECT_TRUE(parser.remove_node(parser.find_path("{,")));
    EXPECT_NE(parser.replace_node(parser.find_path("{"), other.takeRoot()), nullptr);
    EXPECT_EQ(Hex(parser.ToDer()), "300b020107a003020102020107");
}

TEST(Parser, FindsNamesInTheOrderOfTheSlots)
{
    CCryptoParser parser;
    ASSERT_TRUE(parser.Load_ASCII_Memory("a (x, y {x}) [x] = x; + x, {x, b {x}}, c, x"));
    CCryptoParserSearch search(parser.root(), true, true);
    std::string found;
    while (elementNode* const node = search.find([](const elementNode& each) { return each.isNamed("x"); })) {
        // The slot, and the node that has it.
        found += std::to_string(static_cast<int>(node->first()->linkKind()));
        found += node->owner() != nullptr ? std::string(node->owner()->token().view()) + " " : "";
    }
    EXPECT_EQ(found, "1a 5y 2a 3a 5 5a 5b 0");
    EXPECT_EQ(CCryptoParser::find_name(parser.root(), "x", false, false), nullptr);
    EXPECT_EQ(CCryptoParser::find_name(parser.root(), "x", false, true), parser.root()->last());
    EXPECT_EQ(CCryptoParser::find_name(parser.root()->content(), "b", true, false), nullptr);
    EXPECT_NE(CCryptoParser::find_name(parser.root(), "b", true, false), nullptr);
}

TEST(Parser, GivesTheValueOfANameAndNothingElse)
{
    CCryptoParser parser;
    ASSERT_TRUE(parser.Load_ASCII_Memory("a[1], b=2, c { \"text\", 3 }, UTF8String { word }"));
    EXPECT_EQ(parser.get_text("a"), "");
    EXPECT_EQ(parser.get_tree("a"), nullptr);
    EXPECT_TRUE(parser.get_bytes("missing").isEmpty());
    EXPECT_EQ(parser.get_number("b"), 2u);
    EXPECT_EQ(parser.get_text("c"), "text");
    EXPECT_EQ(parser.get_tree("c")->next()->token().toWord32(), 3u);
    EXPECT_TRUE(parser.fill_word("word", "\xC3\xA4"));
    EXPECT_EQ(Hex(parser.ToDer()), "0c02c3a4");

    // A node that has a parent stays with it.
    CCryptoParser tree;
    ASSERT_TRUE(tree.Load_ASCII_Memory("SEQUENCE { INTEGER=1, NULL }"));
    EXPECT_EQ(tree.replace_node(tree.root(), ElementNodePtr(tree.find_path("{,"))), nullptr);
    EXPECT_EQ(Hex(tree.ToDer()), "30050201010500");
}

TEST(Parser, LoadsFromAPartOfItsOwnTree)
{
    CCryptoParser parser;
    const auto bytes = [&parser]() -> const element& { return parser.root()->value()->token(); };
    // Long enough that the bytes have storage of their own.
    ASSERT_TRUE(parser.Load_DER_Memory(FromHex("04220420041e0c1c" + std::string(56, '3'))));
    ASSERT_TRUE(parser.Load_DER_Memory(bytes()));
    ASSERT_TRUE(parser.Load_DER_Memory(bytes()));
    ASSERT_TRUE(parser.Load_DER_Memory(bytes()));
    EXPECT_EQ(parser.root()->type(), ElementType::utf8String);
    const struct {
        const char *text, *result;
        bool (CCryptoParser::*load)(std::string_view);
    } cases[] = {
        {"a = \"SEQUENCE { INTEGER = 5, OCTET_STRING = #00000000000000 }\"", "300c020105040700000000000000",
         &CCryptoParser::Load_ASCII_Memory},
        {"a = '{\"OCTET_STRING\": \"#000000000000000000000000000000\"}'", "040f000000000000000000000000000000",
         &CCryptoParser::Load_JSON_Memory},
        {"a = \"<OCTET_STRING xmlns='urn:x-asn1:template'>#00</OCTET_STRING>\"", "040100", &CCryptoParser::Load_XML_Memory},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.text);
        ASSERT_TRUE(parser.Load_ASCII_Memory(each.text));
        ASSERT_TRUE((parser.*each.load)(bytes().view()));
        EXPECT_EQ(Hex(parser.ToDer()), each.result);
        ASSERT_TRUE(parser.Load_ASCII_Memory("a = \"no longer than it has to be, and not a tree: {[<\""));
        EXPECT_FALSE((parser.*each.load)(bytes().view()));
        EXPECT_TRUE(parser.isEmpty());
    }
}

TEST(Parser, SaysWhatItCannotDo)
{
    CCryptoParser parser;
    ASSERT_TRUE(parser.Load_ASCII_Memory("SEQUENCE { a, INTEGER = b }"));
    CCryptoParser other(elementNode::Make(ElementType::asn1Null));
    const std::string missing = (std::filesystem::path(testing::TempDir()) / "asn1_no_such_file").string();
    const std::string large = (std::filesystem::path(testing::TempDir()) / "asn1_large_file").string();
    std::ofstream(large) << "";
    std::filesystem::resize_file(large, (std::uintmax_t{256} << 20) + 1);
    const struct {
        std::string reason;
        std::function<bool()> act;
    } cases[] = {
        {"This is not our tree!", [&] { return parser.remove_node(other.root()); }},
        {"This is not our tree!",
         [&] { return parser.replace_node(other.root(), elementNode::Make(ElementType::asn1Null)) != nullptr; }},
        {"This is not our tree!", [&] { return parser.replace_node(parser.root(), nullptr) != nullptr; }},
        {"replace_node; newNode has parent",
         [&] { return parser.replace_node(parser.root(), ElementNodePtr(parser.root()->content())) != nullptr; }},
        {"replace_node; newNode has parent",
         [&] { return parser.replace_node(other.root(), ElementNodePtr(parser.root()->content())) != nullptr; }},
        {"Index node not found: c", [&] { return parser.fill("c", element(1u)); }},
        {"Index node has no value: a", [&] { return parser.get_tree("a") != nullptr; }},
        {missing + " cannot be opened", [&] { return parser.Load_JSON_File(missing.c_str()); }},
        {large + " is longer than 256 MiB", [&] { return CCryptoParser::SLoad_RAW_Element(large.c_str()) != nullptr; }},
        {missing + "/x cannot be written", [&] { return other.Save_ASCII_File((missing + "/x").c_str()); }},
        {"There is no tree to save", [&] { return CCryptoParser().Save_XML_File(missing.c_str()); }},
    };
    for (const auto& each : cases) {
        const CapturedLog log;
        EXPECT_FALSE(each.act()) << each.reason;
        EXPECT_THAT(log.texts(), Contains(HasSubstr(each.reason)));
    }
    std::filesystem::remove(large);
}

} // namespace
