#include "asn1/der/pem.h"
#include "asn1/der/push_der_buffer.h"
#include "asn1/parser/parser.h"
#include "tests/asn1/parser/text_forms.h"
#include "tests/support/captured_log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

using namespace ccrypto;

namespace {

using std::string_literals::operator""s;
using std::string_view_literals::operator""sv;

constexpr const char* systemCertificates = "/etc/ssl/certs";

constexpr DerOptions strict;
constexpr DerOptions lenient{.lenient = true};
constexpr DerOptions inside{.insideOctetStrings = true, .insideBitStrings = true};

/// The tree on one line, without blanks: what the decoder made of the bytes.
std::string Shown(const CCryptoParser& parser)
{
    const CCryptoString layout = parser.ToText();
    std::string text;
    for (const char character : layout.view()) {
        if (character != ' ' && character != '\n')
            text += character;
    }
    return text;
}

struct DecodeCase {
    const char* name;
    std::string_view der;
    std::string_view tree; ///< empty when the bytes are refused
    DerOptions options = strict;
};

TEST(DerDecode, BuildsTheTreeOfATemplate)
{
    const DecodeCase cases[] = {
        {"integer", "\x02\x01\x05", "INTEGER=5"},
        {"negative integer", "\x02\x01\x80", "INTEGER=%-integer#80"},
        {"integer with a sign octet", "\x02\x02\x00\x80"sv, "INTEGER=128"},
        {"integer of eight octets and a sign octet", "\x02\x09\x00\x80\x00\x00\x00\x00\x00\x00\x01"sv,
         "INTEGER=9223372036854775809"},
        {"integer of nine octets and a sign octet", "\x02\x0A\x00\xFF\x00\x00\x00\x00\x00\x00\x00\x01"sv,
         "INTEGER=%integer#00ff0000000000000001"},
        {"object identifier", "\x06\x03\x2B\x0E\x03", "OBJECT_IDENTIFIER=\"1.3.14.3\""},
        {"identifier of the largest first octet", "\x06\x01\xFF", "OBJECT_IDENTIFIER=\"6.15\""},
        {"arc of 64 bits", "\x06\x0B\x2B\x81\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F",
         "OBJECT_IDENTIFIER=\"1.3.18446744073709551615\""},
        {"arc of 65 bits", "\x06\x0B\x2B\x82\x80\x80\x80\x80\x80\x80\x80\x80\x00"sv, "OBJECT_IDENTIFIER=#2b82808080808080808000"},
        {"arc with a leading zero group", "\x06\x03\x2B\x80\x01", "OBJECT_IDENTIFIER=#2b8001"},
        {"identifier cut inside an arc", "\x06\x02\x2B\x8E", "OBJECT_IDENTIFIER=#2b8e"},
        {"sequence of two", "\x30\x05\x02\x01\x05\x05\x00"sv, "SEQUENCE{INTEGER=5,NULL}"},
        {"empty sequence", "\x30\x00"sv, "SEQUENCE[CONSTRUCTED]"},
        {"tagged", "\xA3\x03\x02\x01\x05", "CONTEXT_SPECIFIC[3]{INTEGER=5}"},
        {"bits", "\x03\x02\x05\xA0", "BIT_STRING[5]=#a0"},
        {"no bits", "\x03\x01\x00"sv, "BIT_STRING[0]=1"},
        {"text in octets", "\x04\x02hi", "OCTET_STRING=\"hi\""},
        {"octets inside octets", "\x04\x05\x30\x03\x02\x01\x05", "OCTET_STRING[PRIMITIVE]{SEQUENCE{INTEGER=5}}", inside},
        {"inside, a length DER does not write", "\x04\x04\x02\x81\x01\x05", "OCTET_STRING=#02810105", inside},
        {"inside, padding", "\x04\x05\x02\x01\x05\x00\x00"sv, "OCTET_STRING=#0201050000", inside},
        {"inside, padding in an element", "\x04\x07\x30\x05\x02\x01\x05\x00\x00"sv, "OCTET_STRING=#30050201050000", inside},
        {"zero padding after", "\x02\x01\x05\x00\x00\x00"sv, "INTEGER=5"},
        {"other padding after", "\x02\x01\x05\xFF\x02", "INTEGER=5"},
        {"indefinite, then more", "\x30\x80\x02\x01\x05\x00\x00\x05\x00"sv, "SEQUENCE{INTEGER=5},NULL"},
        {"indefinite, ended by the input", "\x30\x80\x02\x01\x05", "SEQUENCE{INTEGER=5}"},
        {"indefinite, ended by half its end", "\x30\x80\x02\x01\x05\x00"sv, "SEQUENCE{INTEGER=5}"},
        {"indefinite, ended by the element around it", "\x30\x05\x31\x80\x02\x01\x05\x05\x00"sv, "SEQUENCE{SET{INTEGER=5}},NULL"},
        {"indefinite inside indefinite, ended once", "\x30\x80\x31\x80\x02\x01\x05\x00\x00"sv, "SEQUENCE{SET{INTEGER=5}}"},
        {"indefinite, ended by padding of its own", "\x30\x80\x02\x01\x05\x00\x01\x05\x00"sv, "SEQUENCE{INTEGER=5}"},
        {"nothing", "", ""},
        {"identifier alone", "\x02", ""},
        {"identifier alone, lenient", "\x02", "INTEGER", lenient},
        {"a NULL with a value", "\x05\x01\x41", "NULL=#41"},
        {"a NULL of elements", "\x25\x03\x02\x01\x05", "NULL{INTEGER=5}"},
        {"inside, a NULL with a value", "\x04\x03\x05\x01\x41", "OCTET_STRING=#050141", inside},
        {"a primitive SEQUENCE", "\x10\x02\x41\x42", "SEQUENCE[PRIMITIVE]=\"AB\""},
        {"length past the end", "\x04\x03hi", ""},
        {"five length octets", "\x04\x85\x00\x00\x00\x00\x01x"sv, ""},
        {"a length that would wrap", "\x30\x84\xFF\xFF\xFF\xFF\x02\x01\x05", ""},
        {"unknown universal tag", "\x0B\x01\x05", ""},
        {"long universal tag number", "\x1F\x01\x05", ""},
        {"tag number 31 of a class", "\x7F\x01\x05\xBF\x00"sv, "APPLICATION[31]{NULL},CONTEXT_SPECIFIC[31,CONSTRUCTED]", lenient},
        {"the same, primitive", "\x9F\x01\x05\xDF\x00"sv, "CONTEXT_SPECIFIC[31]=#05,PRIVATE[31]"},
        {"inside, tag number 31", "\x04\x03\x9F\x01\x05", "OCTET_STRING=#9f0105", inside},
        {"constructed, no elements inside", "\xA0\x02\x05\x01", ""},
        {"the same, lenient", "\xA0\x02\x05\x01", "CONTEXT_SPECIFIC[0,IMPLICIT]=#0501", lenient},
    };
    for (const DecodeCase& each : cases) {
        SCOPED_TRACE(each.name);
        CCryptoParser parser;
        EXPECT_EQ(parser.Load_DER_Memory(Der(each.der), each.options), !each.tree.empty());
        EXPECT_EQ(Shown(parser), each.tree);
    }
}

struct SameOctetsCase {
    const char* name;
    std::string_view der;
    bool isDer;
    DerOptions options = strict;
};

TEST(DerDecode, SaysWhetherTheTreeEncodesToTheSameOctets)
{
    const SameOctetsCase cases[] = {
        {"ordinary", "\x30\x05\x02\x01\x05\x05\x00"sv, true},
        {"values that DER would write otherwise", "\x01\x01\x05\x02\x02\x00\x05\x06\x02\x2B\x80"sv, true},
        {"a length of more octets than it needs", "\x02\x81\x01\x05", false},
        {"an indefinite length", "\x30\x80\x02\x01\x05\x00\x00"sv, false},
        {"zero padding", "\x02\x01\x05\x00"sv, false},
        {"other padding", "\x02\x01\x05\xFF", false},
        {"end-of-contents octets that hide an element", "\x30\x08\x02\x01\x05\x00\x00\x02\x01\x06"sv, false},
        {"a NULL with a value", "\x05\x01\x41", false},
        {"a tag that cannot be written", "\x9F\x00"sv, false},
        {"a string that is not DER", "\x04\x04\x02\x81\x01\x05", true, inside},
        {"a string that is padded", "\x04\x05\x02\x01\x05\x00\x00"sv, true, inside},
        {"a string of elements", "\x04\x03\x02\x01\x05", true, inside},
        {"an unknown tag", "\x0B\x01\x05", false, lenient},
        {"a tag of bytes", "\xA0\x02\x05\x01", false, lenient},
        {"an identifier alone", "\x02", false, lenient},
        {"nothing decoded", "\x02", false},
    };
    for (const SameOctetsCase& each : cases) {
        SCOPED_TRACE(each.name);
        CCryptoDERParser parser(each.options);
        // What an earlier input was does not matter.
        EXPECT_NE(parser.Decode(Der("\x05\x00"sv).bytes()), nullptr);
        EXPECT_TRUE(parser.isDer());
        const element der = Der(each.der);
        const ElementNodePtr tree = parser.Decode(der.bytes());
        EXPECT_EQ(parser.isDer(), each.isDer);
        EXPECT_EQ(tree != nullptr && CCryptoParser::ToDer(tree.get()) == der, each.isDer);
    }
}

TEST(DerDecode, WarnsOfABrokenElementWhenItIsNotOnlyLooked)
{
    constexpr const char* warning = "Invalid TLV found inside constructed element; Forced to 'IMPLICIT'";
    for (const auto& [options, warned] : {std::pair{strict, true}, {lenient, false}, {inside, false}}) {
        const CapturedLog log;
        (void)CCryptoParser().Load_DER_Memory(Der("\xA0\x02\x05\x01"), options);
        EXPECT_EQ(std::ranges::count(log.texts(), warning), warned ? 1 : 0);
    }
}

struct LimitCase {
    const char* name;
    std::string value; ///< of an OCTET STRING
    ElementType kind;
    DerOptions options = strict;
};

TEST(DerDecode, TakesForTextWhatIsInTheLimitsOfText)
{
    const auto decoded = [](std::string_view identifier, const std::string& value, const DerOptions& options) {
        std::string der(identifier);
        if (value.size() >= 0x80)
            der += {'\x82', static_cast<char>(value.size() >> 8)};
        der += static_cast<char>(value.size());
        return CCryptoDERParser(options).Decode(Der(der + value).bytes());
    };
    const LimitCase cases[] = {
        {"one byte", "A", ElementType::bytes},
        {"two", "AB", ElementType::text},
        {"511", std::string(511, 'A'), ElementType::text},
        {"512", std::string(512, 'A'), ElementType::bytes},
        {"a blank", "A ", ElementType::text},
        {"below the blank", "A\x1F", ElementType::bytes},
        {"a tilde", "A~", ElementType::text},
        {"after the tilde", "A\x7F", ElementType::bytes},
        {"the last control", "A\x9F", ElementType::bytes},
        {"the first after them", "A\xA0", ElementType::text},
        {"the last byte", "A\xFF", ElementType::text},
        {"C2", "A\xC2\xA4", ElementType::text},
        {"C3", "A\xC3\xA4", ElementType::utf8Text},
        {"C3 alone", "\xC3\xC3", ElementType::utf8Text},
        {"C4", "A\xC4\xA4", ElementType::text},
        {"two bytes of DER", "\x05\x00"s, ElementType::bytes, inside},
        {"three", "\x02\x01\x05", ElementType::asn1Integer, inside},
    };
    for (const LimitCase& each : cases) {
        SCOPED_TRACE(each.name);
        const ElementNodePtr tree = decoded("\x04", each.value, each.options);
        ASSERT_NE(tree, nullptr);
        EXPECT_EQ(tree->value()->type(), each.kind);
    }
    const std::pair<std::string, ElementType> bits[] = {
        {"\x00\x05\x00"s, ElementType::bytes},
        {"\x00\x02\x01\x05"s, ElementType::asn1Integer},
        {"\x00\x31\x32"s, ElementType::bytes},
    };
    for (const auto& [value, kind] : bits)
        EXPECT_EQ(decoded("\x03", value, inside)->value()->type(), kind) << testing::PrintToString(value);
}

TEST(DerDecode, KnowsTheUniversalTags)
{
    constexpr std::string_view names[] = {
        "",
        "BOOLEAN",
        "INTEGER",
        "BIT_STRING",
        "OCTET_STRING",
        "NULL",
        "OBJECT_IDENTIFIER",
        "ObjectDescriptor",
        "EXTERNAL",
        "REAL",
        "ENUMERATED",
        "",
        "UTF8String",
        "",
        "",
        "",
        "SEQUENCE",
        "SET",
        "NumericString",
        "PrintableString",
        "TeletexString",
        "VideotexString",
        "IA5String",
        "UTCTime",
        "GeneralizedType",
        "GraphicsString",
        "VisibleString",
        "GeneralString",
        "UniversalString",
        "",
        "BMPString",
        "",
    };
    static_assert(std::size(names) == 32);
    for (std::uint8_t tag = 1; tag < std::size(names); ++tag) {
        SCOPED_TRACE(static_cast<int>(tag));
        const element der(std::array<std::uint8_t, 2>{tag, 0}.data(), 2);
        CCryptoParser parser;
        EXPECT_EQ(parser.Load_DER_Memory(der), !names[tag].empty());
        const std::string shown = Shown(parser);
        EXPECT_EQ(shown.substr(0, shown.find('[')), names[tag]);
        if (!names[tag].empty()) {
            EXPECT_EQ(parser.ToDer(), der);
            CCryptoParser written;
            ASSERT_TRUE(written.Load_ASCII_Memory(shown));
            EXPECT_EQ(written.ToDer(), der);
        }
    }
}

TEST(DerDecode, PutsValuesOf40BytesIntoTheContent)
{
    for (const std::uint32_t length : {39u, 40u}) {
        element der("\x04", 1);
        der.append(static_cast<std::uint8_t>(length));
        der.resize(2 + length);
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_DER_Memory(der));
        EXPECT_EQ(parser.root()->content() != nullptr, length == 40);
        EXPECT_EQ(parser.root()->shortValue() != nullptr, length == 39);
    }
}

TEST(DerDecode, RefusesNestingBeyond128LevelsHoweverItIsWritten)
{
    for (const std::string_view level : {"\x30\x80"sv, "\xA0\x80"sv}) {
        std::string deep;
        for (int depth = 0; depth < 100000; ++depth)
            deep += level;
        EXPECT_FALSE(CCryptoParser().Load_DER_Memory(Der(deep)));
    }
    element nested("\x05\x00"sv);
    for (int depth = 0; depth < 200; ++depth) {
        element outer("\x04\x82", 2);
        outer.append(static_cast<std::uint8_t>(nested.length() >> 8));
        outer.append(static_cast<std::uint8_t>(nested.length()));
        outer.append(nested.data(), nested.length());
        nested = outer;
    }
    CCryptoParser parser;
    EXPECT_TRUE(parser.Load_DER_Memory(nested, inside));
    EXPECT_EQ(parser.ToDer().view(), nested.view());
}

TEST(DerDecode, TakesAMillionSiblingsInConstantStack)
{
    constexpr std::uint32_t count = 1000000;
    element der("\x30\x83\x2D\xC6\xC0", 5);
    for (std::uint32_t item = 0; item < count; ++item)
        der.append("\x02\x01\x07", 3);
    CCryptoParser parser;
    ASSERT_TRUE(parser.Load_DER_Memory(der));
    const CCryptoParser copy(parser.root()->clone());
    EXPECT_TRUE(copy.ToDer().view() == der.view());
}

/// DER, as template text, JSON and XML and back, and with what lies inside strings decoded: the same bytes each time.
void ExpectRoundTrips(const element& der)
{
    for (const DerOptions& options : {strict, inside, lenient}) {
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_DER_Memory(der, options));
        EXPECT_TRUE(parser.ToDer().view() == der.view());
        CCryptoParser again;
        ASSERT_TRUE(again.Load_ASCII_Memory(parser.ToText().view()));
        EXPECT_TRUE(again.ToDer().view() == der.view()) << parser.ToText().c_str();
        ASSERT_TRUE(again.Load_JSON_Memory(parser.ToJson().view())) << parser.ToJson().c_str();
        EXPECT_TRUE(again.ToDer().view() == der.view()) << parser.ToJson().c_str();
        ASSERT_TRUE(again.Load_XML_Memory(parser.ToXml().view())) << parser.ToXml().c_str();
        EXPECT_TRUE(again.ToDer().view() == der.view()) << parser.ToXml().c_str();
    }
}

TEST(DerRoundTrip, ValuesThatTextCouldChange)
{
    const std::string_view cases[] = {
        "\x02\x02\xFF\x7F",                 // -129, two's complement
        "\x02\x02\x00\x05"sv,               // not the shortest
        "\x02\x09\x00\x80\0\0\0\0\0\0\0"sv, // 2 to the 63rd
        "\x0C\x01\xE4",                     // not UTF-8 in a UTF8String
        "\x0C\x02\xC3\xA4",                 // UTF8String
        "\x1E\x02\xC3\xA4",                 // BMPString that looks like UTF-8
        "\x1E\x02\xC4\xA4",                 // and one that does once it stands in quotes
        "\x04\x04\"\\\x7E'",                // quotes and backslashes
        "\x04\x02\xA0\xA1",                 // Latin-1
        "\x04\x08\x05\x06secret",           // a NULL with a value, when looked into
        "\x03\x06\x00\x05\x03key"sv,        // the same in bits
        "\x10\x02\x41\x42\x11\x00"sv,       // primitive lists
        "\x80\x02ok",                       // a tagged primitive
        "\x24\x04\x04\x02ok",               // a constructed string
        "\x06\x02\x88\x37",                 // 2.999
        "\x01\x01\xFF",
        "\x30\x00\xA0\x00\x04\x00\x03\x00"sv,
        "\x02\x01\x01\x02\x01\x02", // two roots
        "\x04\x05#00ff",            // looks like bytes,
        "\x04\x07\\'text'",         // an escape and quotes,
        "\x04\x02  ",               // blanks,
        "\x04\x03]]>",              // the end of a section,
        "\x04\x02"
        "12",                     // a number,
        "\x04\x04null\x0C\x00"sv, // a word; empty text
        "\x04\x04\xE2\x82\xAC\r",
        "\x0C\x04\xF0\x9F\x98\x80\x0C\x02\xC3\x28\x0C\x03\xED\xA0\x80\x0C\x03\xEF\xBF\xBF",
    };
    for (const std::string_view each : cases) {
        SCOPED_TRACE(testing::PrintToString(each));
        ExpectRoundTrips(Der(each));
    }
}

// PEM files of the operating system's trust store; on a machine without it there is nothing to try.
TEST(DerRoundTrip, EveryCertificateOfTheTrustStore)
{
    const std::filesystem::path store = systemCertificates;
    if (!std::filesystem::is_directory(store))
        GTEST_SKIP() << "no " << store;
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(store)) {
        if (entry.path().extension() != ".pem" && entry.path().extension() != ".crt")
            continue;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        std::vector<DataBlock> blocks;
        if (!ReadPem(text, blocks))
            continue;
        SCOPED_TRACE(entry.path().string());
        ExpectRoundTrips(blocks.front().bytes);
        ++count;
    }
    if (count == 0)
        GTEST_SKIP() << "no certificates in " << store;
    RecordProperty("certificates", static_cast<int>(count));
}

} // namespace
