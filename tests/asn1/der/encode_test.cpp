#include "asn1/der/push_der_buffer.h"
#include "asn1/der/unfilled_items.h"
#include "asn1/parser/parser.h"
#include "core/text/hex.h"
#include "tests/support/captured_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

using namespace ccrypto;

namespace {

using testing::Contains;
using testing::HasSubstr;

struct EncodeCase {
    const char* text;
    std::string_view der; ///< in hexadecimal; empty when the tree cannot be written
    const char* reason = "";
};

TEST(Encode, WritesOrRefusesWhatATemplateAsksFor)
{
    const EncodeCase cases[] = {
        {"SEQUENCE{}", "3000"},
        {"SEQUENCE{a}", "3000"},
        {"SET{a,b}", "3100"},
        {"SEQUENCE[PRIMITIVE] = \"AB\"", "10024142"},
        {"UTF8String = 'a'", "0c0161"},
        {"UTF8String = '\xC3\xA4'", "0c02c3a4"},
        {"OBJECT_IDENTIFIER = 6.15", "0601ff"},
        {"OBJECT_IDENTIFIER = 6.16", "", "\"6.16\" is not an object identifier"},
        {"OBJECT_IDENTIFIER = 7.0", "", "\"7.0\" is not an object identifier"},
        {"BMPString = %utf8Text#ff", "", "is not valid UTF-8"},
        {"OBJECT_IDENTIFIER = 1.40", "", "\"1.40\" is not an object identifier"},
        {"OBJECT_IDENTIFIER = 1.3.18446744073709551615", "060b2b81ffffffffffffffff7f"},
        {"OBJECT_IDENTIFIER = 1.3.18446744073709551616", "", "is not an object identifier"},
        {"BIT_STRING[0] = 1", "030100"},
        {"BIT_STRING = 1", "030101"},
        {"BIT_STRING[7] = 128", "03020780"},
        {"BIT_STRING[255] = #80", "0302ff80"},
        {"BIT_STRING[256] = #80", "", "A BIT_STRING cannot have 256 unused bits"},
        {"CONTEXT_SPECIFIC[30]{NULL}", "be020500"},
        {"CONTEXT_SPECIFIC[31]{NULL}", "", "Tag number 31 cannot be written"},
        {"CONTEXT_SPECIFIC[-1]{NULL}", "", "Tag number -1 cannot be written"},
        {"CONTEXT_SPECIFIC[18446744073709551616]{NULL}", "", "Tag number 18446744073709551616 cannot be written"},
        {"CONTEXT_SPECIFIC{NULL}", "", "Token 'CONTEXT_SPECIFIC' has no enumerated definiton"},
    };
    for (const EncodeCase& each : cases) {
        SCOPED_TRACE(each.text);
        CapturedLog log;
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_ASCII_Memory(each.text));
        EXPECT_EQ(HexText(parser.ToDer().bytes()).view(), each.der);
        if (each.der.empty()) {
            EXPECT_THAT(log.texts(), Contains(HasSubstr(each.reason)));
        }
    }
}

// Arcs of ten octets and twenty digits meet every end of the buffers that they are collected in.
TEST(Encode, WritesAndReadsObjectIdentifiersOfAnyLength)
{
    std::string dotted = "1.3";
    std::string encoded = "2b";
    for (std::uint32_t arcs = 1; arcs <= 20; ++arcs) {
        SCOPED_TRACE(arcs);
        dotted += ".18446744073709551615";
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_ASCII_Memory("OBJECT_IDENTIFIER = \"" + dotted + "\""));
        const element der = parser.ToDer();
        encoded += "81ffffffffffffffff7f";
        EXPECT_TRUE(HexText(der.bytes()).view().ends_with(encoded));
        CCryptoParser again;
        ASSERT_TRUE(again.Load_DER_Memory(der));
        EXPECT_EQ(again.root()->value()->token().view(), dotted);
    }
}

TEST(Encode, TakesTheTypeOfATimeFromTheWordThatIsFilledIn)
{
    const struct {
        const char *word, *der;
    } cases[] = {
        {"UTCTime", "300717053236313233"},
        {"GeneralizedType", "300718053236313233"},
        {"GeneralizedTime", ""}, // no keyword: letters and not a type
    };
    for (const auto& [word, der] : cases) {
        SCOPED_TRACE(word);
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_ASCII_Memory("SEQUENCE { VALID_FROM_TAG { VALID_FROM }, VALID_TO_TAG ( OPTIONAL ) { VALID_TO } }"));
        EXPECT_TRUE(parser.fill_word("VALID_FROM_TAG", word));
        EXPECT_TRUE(parser.fill("VALID_FROM", element("26123")));
        EXPECT_EQ(HexText(parser.ToDer().bytes()), der);
    }
}

/// `count` elements of this type, each inside the one before.
ElementNodePtr Nest(std::uint32_t count, bool excluded)
{
    ElementNodePtr nest = elementNode::Make(ElementType::asn1Null);
    for (std::uint32_t level = 0; level < count; ++level) {
        ElementNodePtr outer = elementNode::Make(ElementType::sequence);
        if (excluded)
            outer->set(LinkKind::brackets, elementNode::Make(element("EXCLUDE")));
        outer->set(LinkKind::content, std::move(nest));
        nest = std::move(outer);
    }
    return nest;
}

TEST(Encode, WritesNoTreeThatItCouldNotReadBack)
{
    const struct {
        std::uint32_t levels;
        bool excluded;
        bool written;
    } cases[] = {{127, false, true}, {128, false, false}, {100000, false, false}, {200, true, true}, {100000, true, false}};
    for (const auto& [levels, excluded, written] : cases) {
        SCOPED_TRACE(testing::Message() << levels << (excluded ? " left out" : ""));
        const ElementNodePtr tree = Nest(levels, excluded);
        const element der = CCryptoParser::ToDer(tree.get());
        EXPECT_EQ(!der.isEmpty(), written);
        CCryptoParser again;
        EXPECT_EQ(written && again.Load_DER_Memory(der), written);
    }
    // Nothing of it is filled, which is not found out by going down without end.
    ElementNodePtr optional = Nest(100000, false);
    optional->set(LinkKind::modifiers, elementNode::Make(ElementType::optional));
    EXPECT_TRUE(CCryptoParser::ToDer(optional.get()).isEmpty());
}

TEST(Encode, DropsWhatWritesNothing)
{
    const std::pair<const char*, const char*> cases[] = {
        {"SEQUENCE { a, INTEGER(OPTIONAL) = b, INTEGER = 5 }", "SEQUENCE {\n    INTEGER = 5\n}\n"},
        {"SEQUENCE { NULL(OPTIONAL), SET(OPTIONAL) { a }, NULL }", "SEQUENCE {\n    NULL\n}\n"},
        {"SET(OPTIONAL) { SEQUENCE { a } }, NULL", "NULL\n"},
        {"SET(OPTIONAL) { NULL }", "SET (OPTIONAL) {\n    NULL\n}\n"},
        {"#A0(OPTIONAL) { #83 { a } }, #84 { #85(OPTIONAL) = b, #01 }", "#84 {\n    #01\n}\n"},
        {"#84(OPTIONAL), #85(OPTIONAL) { #01 }", "#84 (OPTIONAL),\n#85 (OPTIONAL) {\n    #01\n}\n"},
    };
    for (const auto& [text, left] : cases) {
        SCOPED_TRACE(text);
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_ASCII_Memory(text));
        const element der = parser.ToDer();
        ElementNodePtr tree = parser.takeRoot();
        DropUnfilledItems(tree);
        EXPECT_EQ(CCryptoParser::ToText(tree.get()), left);
        EXPECT_EQ(CCryptoParser::ToDer(tree.get()), der);
    }
}

TEST(Encode, WarnsOfWhatItWritesAsItIs)
{
    const struct {
        const char *text, *der, *warning;
    } cases[] = {
        {"INTEGER = -5", "020105", "WARNING: Negative INTEGER coded as positive INTEGER!"},
        {"INTEGER = %-integer#fb", "0201fb", ""},
        {"INTEGER = 251", "020200fb", ""},
        {"#0102", "0102", "WARNING: Pushing unknown value to output; token=9, len=2?"},
        {"\"AB\"", "4142", "WARNING: Pushing unknown value to output; token=4, len=2?"},
        {"OCTET_STRING = #0102", "04020102", ""},
    };
    for (const auto& [text, der, warning] : cases) {
        SCOPED_TRACE(text);
        const CapturedLog log;
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_ASCII_Memory(text));
        EXPECT_EQ(HexText(parser.ToDer().bytes()), der);
        const auto isWarning = [](const std::string& line) { return line.starts_with("WARNING"); };
        const std::vector<std::string> lines = log.texts();
        EXPECT_EQ(std::ranges::count_if(lines, isWarning), *warning != '\0');
        EXPECT_EQ(std::ranges::count(lines, warning), *warning != '\0');
    }
}

TEST(PushBuffer, SaysWhenItHoldsLessThanWasPromised)
{
    CapturedLog log;
    CPushDerBuffer buffer;
    buffer.PushText("abc");
    EXPECT_TRUE(buffer.CheckLength(3));
    EXPECT_FALSE(buffer.CheckLength(4));
    EXPECT_THAT(log.texts(), Contains(HasSubstr("expected length 4 > buffer length3")));
}

} // namespace
