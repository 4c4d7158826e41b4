#include "asn1/der/ber_tlv.h"
#include "asn1/parser/parser.h"
#include "asn1/template/template_match.h"
#include "tests/asn1/parser/text_forms.h"
#include "tests/support/captured_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace ccrypto;

namespace {

using testing::Contains;
using testing::HasSubstr;

using Names = std::vector<std::pair<const char*, const char*>>;

/// What the names of a template are given, and the octets it then writes; the same octets give the names back.
struct ObjectCase {
    const char* text;
    Names names;
    const char* octets;
};

const ObjectCase cardTemplates[] = {
    {"#80{algRef},#81{FID}#84{#00}", {{"algRef", "12"}, {"FID", "4b01"}}, "80011281024b01840100"},
    {"#80{algRef}#84{keyRef}}", {{"algRef", "42"}, {"keyRef", "01"}}, "800142840101"},
    {"#90{digest}", {{"digest", "aabbcc"}}, "9003aabbcc"},
    {"#84{keyID},#80{algID}", {{"keyID", "02"}, {"algID", "1a"}}, "84010280011a"},
    {"#A0{#83{pinRef}}", {{"pinRef", "11"}}, "a003830111"},
    {"keyType{#83{keyRef}},#7F49{tags}}", {{"keyType", "b6"}, {"keyRef", "01"}, {"tags", "8600"}}, "b6038301017f49028600"},
    {"#7B{#80{seRef}}", {{"seRef", "03"}}, "7b03800103"},
    {"#80{#04007F00070202040204},#83{#02}}", {}, "800a04007f00070202040204830102"},
    {"#80{#04007F00070202040204},#83{#03}}", {}, "800a04007f00070202040204830103"},
    {"#62 { #82{FDB} #83{FID} #A1{ACL} #88{SFI} }",
     {{"FDB", "01"}, {"FID", "5031"}, {"ACL", "8c0100"}, {"SFI", "08"}},
     "620f82010183025031a1038c0100880108"},
    {"#70{ #BF81,id, { #7F41 { #80 { MAX_LEN } }}}", {{"id", "01"}, {"MAX_LEN", "08"}}, "700abf8101067f4103800108"},
};

TEST(DataObjects, AreWrittenAndMatchedByTheTemplatesOfCards)
{
    for (const ObjectCase& each : cardTemplates) {
        SCOPED_TRACE(each.text);
        CCryptoParser pattern;
        ASSERT_TRUE(pattern.Load_ASCII_Memory(each.text));
        CCryptoParser filled(pattern.root()->clone(true));
        for (const auto& [name, value] : each.names)
            ASSERT_TRUE(filled.fill(name, FromHex(value)));
        EXPECT_EQ(Hex(filled.ToDer()), each.octets);

        const ElementNodePtr data = DecodeBerTlv(FromHex(each.octets).bytes());
        ASSERT_NE(data, nullptr);
        CCryptoTemplateMatch match;
        EXPECT_TRUE(match.Match(pattern.root(), data.get())) << match.failedStep().c_str();
        for (const auto& [name, value] : each.names) {
            const TemplateBinding* const binding = match.find(name);
            ASSERT_NE(binding, nullptr) << name;
            // Of a name that stands for the tag, what it stands for is a whole object.
            EXPECT_EQ(binding->withSiblings ? Hex(CCryptoParser::ToDer(binding->node)) : Hex(binding->node->token()), value)
                << name;
        }
    }
}

TEST(DataObjects, AreWrittenWithTheLengthsOfWhatTheyHold)
{
    const std::pair<const char*, const char*> cases[] = {
        {"#84{#}", "8400"},
        {"#84", "84"},
        {"#84{name}", "8400"},
        {"name{#84{#01}}", ""},
        {"#A0(OPTIONAL){#83{name}}, #84(OPTIONAL){#00}", "840100"},
        {"#84 = #3f00, #84 = \"text\", #84 = 5", "84023f00840474657874840105"},
        {"#A5[EXCLUDE]{#84{#01}}", "840101"},
        {"#A5{SEQUENCE{INTEGER=5}}", "a5053003020105"},
        {"OCTET_STRING{#84{#01}}", "0403840101"},
    };
    for (const auto& [text, octets] : cases) {
        SCOPED_TRACE(text);
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_ASCII_Memory(text));
        EXPECT_EQ(Hex(parser.ToDer()), octets);
    }
    for (const std::uint32_t length : {127U, 128U, 255U, 256U, 65536U}) {
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_ASCII_Memory("#5F25{value}"));
        element value;
        value.resize(length);
        ASSERT_TRUE(parser.fill("value", value));
        const ElementNodePtr data = DecodeBerTlv(parser.ToDer().bytes());
        ASSERT_NE(data, nullptr) << length;
        EXPECT_EQ(data->value()->token().length(), length);
    }
}

TEST(DataObjects, RefuseContentOfWhatIsNotATag)
{
    const std::pair<const char*, const char*> cases[] = {
        {"\"GeneralizedTime\"{\"20260101000000Z\"}", "\"GeneralizedTime\" is not a tag and cannot hold content"},
        {"#{#00}", "\"\" is not a tag and cannot hold content"},
        {"SEQUENCE{'x'=5}", "\"x\" is not a tag and cannot hold content"},
    };
    for (const auto& [text, reason] : cases) {
        SCOPED_TRACE(text);
        const CapturedLog log;
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_ASCII_Memory(text));
        EXPECT_TRUE(parser.ToDer().isEmpty());
        EXPECT_THAT(log.texts(), Contains(HasSubstr(reason)));
    }
}

TEST(DataObjects, MayEndInOneClosingBraceTooMany)
{
    for (const char* text : {"#84{a}}}", "#84{a}} #85{b}", "#84}", "#84{a} b}", "}"})
        EXPECT_FALSE(CCryptoParser().Load_ASCII_Memory(text)) << text;
    EXPECT_TRUE(CCryptoParser().Load_ASCII_Memory("#84{a}} -- comment"));
}

struct DecodeObjectCase {
    const char* name;
    const char* octets;
    const char* written; ///< empty when the octets are refused
};

constexpr DecodeObjectCase decodeCases[] = {
    {"tags of one, two and three octets", "8000 5f2001aa bf81010380017f", "80005f2001aabf81010380017f"},
    {"a certificate", "7f210a7f4e035f29005f3701aa", "7f210a7f4e035f29005f3701aa"},
    {"the first number of two octets", "9f1f00", "9f1f00"},
    {"a number of two octets that fits one", "9f1e00", ""},
    {"the last number of two octets", "9f7f00", "9f7f00"},
    {"a leading zero in a number", "9f801f00", ""},
    {"a tag of four octets", "9f81818100", ""},
    {"a tag cut short", "7f", ""},
    {"a tag cut short inside an object", "a0017f00", ""},
    {"a tag without a length", "7f49", ""},
    {"an indefinite length", "a080840101 0000", ""},
    {"lengths of more octets than they need", "81810101 818400000001ff", "810101 8101ff"},
    {"a length of five octets", "81850000000001ff", ""},
    {"a length cut short", "8182ff", ""},
    {"a length past the end", "810201", ""},
    {"a length past the end of the object around it", "a0038102ff ff", ""},
    {"constructed without content", "a000", "a000"},
    {"constructed with bytes that are not objects", "a00104", ""},
    {"zeros between objects", "0000800105000081010600", "800105810106"},
    {"zeros inside an object", "a00500 80010500", "a003800105"},
    {"erased memory", "800105ffffff", "800105"},
    {"erased memory alone", "ffff", ""},
    {"erased memory inside an object", "a0058001 05ffff", ""},
    {"a tag that begins as erased memory does", "ff4903800105", "ff4903800105"},
    {"nothing", "", ""},
};

TEST(DataObjects, AreDecodedWithinTheirBounds)
{
    const auto withoutBlanks = [](std::string text) {
        std::erase(text, ' ');
        return text;
    };
    for (const DecodeObjectCase& each : decodeCases) {
        SCOPED_TRACE(each.name);
        const CCryptoParser tree(DecodeBerTlv(FromHex(withoutBlanks(each.octets)).bytes()));
        EXPECT_EQ(Hex(tree.ToDer()), withoutBlanks(each.written));
    }
}

TEST(DataObjects, SayWhereTheyDoNotDecode)
{
    const std::pair<std::string, const char*> cases[] = {
        {"8001059f1e00", "A tag of more octets than it needs (offset 3)"},
        {"9f81818100", "A tag of more than three octets (offset 0)"},
        {"a0017f", "The data ends inside a tag (offset 2)"},
        {"80", "The data ends after a tag (offset 1)"},
        {"a080840101", "An indefinite length (offset 1)"},
        {"8185", "A length of more than four octets (offset 1)"},
        {"8182ff", "The data ends inside a length (offset 1)"},
        {"800105810201", "A length exceeds what remains of the data (offset 4)"},
        {"0000", "The data holds no data object"},
    };
    for (const auto& [octets, reason] : cases) {
        SCOPED_TRACE(octets);
        const CapturedLog log;
        EXPECT_EQ(DecodeBerTlv(FromHex(octets).bytes()), nullptr);
        EXPECT_THAT(log.texts(), Contains(HasSubstr(reason)));
    }
}

TEST(DataObjects, AreBoundedInDepthAndSize)
{
    for (const std::uint32_t depth : {BerTlv::maxDepth, BerTlv::maxDepth + 1}) {
        std::vector<std::uint8_t> nested = {0x80, 0x00};
        for (std::uint32_t level = 1; level < depth; ++level) {
            const auto length = static_cast<std::uint8_t>(nested.size());
            nested.insert(nested.begin(), {0xA0, length});
        }
        EXPECT_EQ(DecodeBerTlv(nested) != nullptr, depth == BerTlv::maxDepth) << depth;
    }
    for (const std::uint32_t size : {BerTlv::maxSize, BerTlv::maxSize + 1}) {
        std::vector<std::uint8_t> objects(size);
        objects[0] = 0x80;
        EXPECT_EQ(DecodeBerTlv(objects) != nullptr, size == BerTlv::maxSize);
    }
}

struct MatchObjectCase {
    const char* text;
    const char* octets;
    const char* step; ///< why it does not match; empty when it does
};

TEST(DataObjects, MatchByTheirWholeTag)
{
    const MatchObjectCase cases[] = {
        {"#7F49{a}", "7f4903810101", ""},
        {"#7F{a}", "7f4903810101", "#7f: the data holds #7f49"},
        {"#7F49{a}", "810101", "#7f49: the data holds #81"},
        {"#81{a}#82{b}", "810101", "#82: no data is left"},
        {"#81{a}#82(OPTIONAL){b}#83{c}", "810101830101", ""},
        {"#A5{#84(OPTIONAL){b}}", "a500", ""},
        {"#A5{#84(OPTIONAL){b}}", "a503850101", "#84: the data holds #85"},
        {"#A5{#84{b}}", "a500", "#84: no data is left"},
        {"#A5{#84{b}}", "8501ff", "#a5: the data holds #85"},
        {"#85{#84{b}}", "8501ff", "#84: the data holds a value of 1 bytes"},
        {"#84{#3F00}", "84023f00", ""},
        {"#84{#3F00}", "84023f01", "#84: the value differs"},
        {"#84{#}", "8400", ""},
        {"#BF81,id{a}", "bf8101028000", ""},
        {"#BF81,id{a}", "bf8201028000", "id: the data holds #bf8201"},
        {"#BF81#01{a}", "bf8101028000", ""},
        {"#BF8101,id{a}", "bf8101028000", "id: the data holds #bf8101"},
        {"any{a}", "bf8101028000", ""},
        {"OCTET_STRING{a}", "040101", "OCTET_STRING: the data holds #04"},
    };
    for (const MatchObjectCase& each : cases) {
        SCOPED_TRACE(std::string(each.text) + " on " + each.octets);
        CCryptoParser pattern;
        ASSERT_TRUE(pattern.Load_ASCII_Memory(each.text));
        const ElementNodePtr data = DecodeBerTlv(FromHex(each.octets).bytes());
        CCryptoTemplateMatch match;
        EXPECT_EQ(match.Match(pattern.root(), data.get()), *each.step == '\0');
        EXPECT_EQ(match.failedStep().view(), each.step);
    }
}

} // namespace
