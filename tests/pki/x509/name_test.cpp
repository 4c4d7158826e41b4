#include "asn1/parser/parser.h"
#include "pki/x509/name.h"
#include "tests/pki/keys/test_keys.h"
#include "tests/pki/test_der.h"
#include "tests/pki/x509/test_authority.h"

#include <gtest/gtest.h>

#include <string>

using namespace ccrypto;

namespace {

/// DER of template text.
element DerOfTemplateText(const std::string& text)
{
    CCryptoParser parser;
    EXPECT_TRUE(parser.Load_ASCII_Memory(text)) << text;
    return parser.ToDer();
}

/// A name of one common name.
element CommonNameOf(const std::string& typeAndValue)
{
    return DerOfTemplateText("SEQUENCE{SET{SEQUENCE{OBJECT_IDENTIFIER=\"2.5.4.3\"," + typeAndValue + "}}}");
}

struct SameNameCase {
    const char* name;
    const char* left;
    const char* right;
    bool isSame;
};

class ComparesNames : public ::testing::TestWithParam<SameNameCase> {};

} // namespace

TEST_P(ComparesNames, ByPreparedText)
{
    const auto left = ComparableName::Read(CommonNameOf(GetParam().left).bytes());
    const auto right = ComparableName::Read(CommonNameOf(GetParam().right).bytes());
    ASSERT_TRUE(left && right);
    EXPECT_EQ(*left == *right, GetParam().isSame);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ComparesNames,
    ::testing::Values(
        SameNameCase{"case", "PrintableString=\"Test CA\"", "PrintableString=\"tEST cA\"", true},
        SameNameCase{"types", "PrintableString=\"Test CA\"", "UTF8String=\"Test CA\"", true},
        SameNameCase{"two-byte characters", "BMPString=#00540065007300740020004300C4", "UTF8String=#746573742063C3A4", true},
        SameNameCase{"blanks at the ends and inside", "UTF8String=\"  a   b \"", "UTF8String=\"a b\"", true},
        SameNameCase{"a blank more", "UTF8String=\"a b\"", "UTF8String=\"ab\"", false},
        SameNameCase{"Cyrillic", "UTF8String=#D090D081", "UTF8String=#D0B0D191", true},
        SameNameCase{"Greek, final sigma", "UTF8String=#CE91CEA3", "UTF8String=#CEB1CF82", true},
        SameNameCase{"Latin Extended-A", "UTF8String=#C598C5B8", "UTF8String=#C599C3BF", true},
        SameNameCase{"sharp s", "UTF8String=#C39F", "UTF8String=\"SS\"", true},
        SameNameCase{"multiplication sign is no letter", "UTF8String=#C397", "UTF8String=#C3B7", false},
        SameNameCase{"soft hyphen and zero width", "UTF8String=#61C2AD62E2808B63", "UTF8String=\"abc\"", true},
        SameNameCase{"a separator is a blank", "UTF8String=#61E3808062", "UTF8String=\"a b\"", true},
        SameNameCase{"other letters", "UTF8String=\"a\"", "UTF8String=\"b\"", false},
        SameNameCase{"octets of no text", "UTF8String=#FF41", "UTF8String=#FF61", false},
        SameNameCase{"NumericString has no case but keeps its blanks", "NumericString=\"1 2\"", "NumericString=\"1  2\"", false}));

TEST(ComparableName, ComparesRelativeNames)
{
    const auto read = [](const Bytes& der) { return *ComparableName::Read(der); };
    const Bytes country = Tlv(der::sequence, {OidTlv("2.5.4.6"), Tlv(der::printableString, TextBytes("FI"))});
    const Bytes common = Tlv(der::sequence, {OidTlv("2.5.4.3"), Tlv(der::utf8String, TextBytes("x"))});
    const auto joined = read(Tlv(der::sequence, Tlv(der::set, {country, common})));
    const auto turned = read(Tlv(der::sequence, Tlv(der::set, {common, country})));
    const auto apart = read(Tlv(der::sequence, {Tlv(der::set, country), Tlv(der::set, common)}));
    const auto turnedApart = read(Tlv(der::sequence, {Tlv(der::set, common), Tlv(der::set, country)}));
    const auto base = read(Tlv(der::sequence, Tlv(der::set, country)));
    const auto empty = read(Tlv(der::sequence, Bytes()));
    EXPECT_EQ(joined, turned);
    EXPECT_NE(joined, apart);
    EXPECT_NE(apart, turnedApart);
    EXPECT_TRUE(empty.isEmpty() && !base.isEmpty());
    EXPECT_TRUE(apart.isWithin(base) && apart.isWithin(apart) && apart.isWithin(empty));
    EXPECT_FALSE(base.isWithin(apart) || turnedApart.isWithin(base) || joined.isWithin(base));
    // Where one value ends and the next begins counts.
    EXPECT_NE(read(TestName("CN=ab,CN=c")), read(TestName("CN=a,CN=bc")));
    EXPECT_NE(read(TestName("CN=a")), read(TestName("O=a")));
}

TEST(ComparableName, RefusesWhatIsNoName)
{
    const Bytes common = Tlv(der::sequence, {OidTlv("2.5.4.3"), Tlv(der::utf8String, TextBytes("x"))});
    const Bytes name = Tlv(der::sequence, Tlv(der::set, common));
    EXPECT_TRUE(ComparableName::Read(name));
    for (const Bytes& der :
         {Bytes(), Tlv(der::set, Tlv(der::set, common)), Tlv(der::sequence, common), Tlv(der::sequence, Tlv(der::set, Bytes())),
          Joined({name, name}), Tlv(der::sequence, Tlv(der::set, Tlv(der::sequence, OidTlv("2.5.4.3")))),
          Tlv(der::sequence, Tlv(der::set, Tlv(der::sequence, {OidTlv("2.5.4.3"), NumberTlv(1), NumberTlv(1)}))),
          Tlv(der::sequence, Tlv(der::set, Tlv(der::sequence, {Tlv(der::oid, Bytes()), NumberTlv(1)}))), Bytes{0x30, 0x80, 0, 0}}) {
        EXPECT_FALSE(ComparableName::Read(der)) << Hex(der);
        EXPECT_TRUE(NameText(std::span<const std::uint8_t>(der)).isEmpty());
    }
}

namespace {

struct ShownNameCase {
    const char* name;
    std::uint8_t identifier;
    std::string octets;
    const char* text;
};

class PrintsNames : public ::testing::TestWithParam<ShownNameCase> {};

constexpr std::uint8_t teletexStringTag = 0x14;
constexpr std::uint8_t ia5StringTag = 0x16;
constexpr std::uint8_t universalStringTag = 0x1C;
constexpr std::uint8_t bmpStringTag = 0x1E;

} // namespace

TEST_P(PrintsNames, AsRfc4514Says)
{
    const Bytes value = Tlv(GetParam().identifier, TextBytes(GetParam().octets));
    const Bytes name = Tlv(der::sequence, Tlv(der::set, Tlv(der::sequence, {OidTlv("2.5.4.3"), value})));
    EXPECT_EQ(NameText(std::span<const std::uint8_t>(name)), (std::string("CN=") + GetParam().text).c_str());
    CCryptoParser parser;
    ASSERT_TRUE(parser.Load_DER_Memory(ElementOf(name)));
    CCrypto_X509_ValueList list;
    ASSERT_TRUE(list.Parse(parser.root()->content(), true));
    EXPECT_EQ(NameText(list), (std::string("CN=") + GetParam().text).c_str());
}

INSTANTIATE_TEST_SUITE_P(
    Values, PrintsNames,
    ::testing::Values(ShownNameCase{"plain", der::utf8String, "Root CA", "Root CA"},
                      ShownNameCase{"empty", der::utf8String, "", ""},
                      ShownNameCase{"specials", der::utf8String, "a,b+c\"d;e<f>g\\h=#", "a\\,b\\+c\\\"d\\;e\\<f\\>g\\\\h=#"},
                      ShownNameCase{"number sign first", der::utf8String, "#0A", "\\#0A"},
                      ShownNameCase{"blanks at the ends", der::utf8String, "  a  ", "\\  a \\ "},
                      ShownNameCase{"one blank", der::utf8String, " ", "\\ "},
                      ShownNameCase{"zero", der::utf8String, std::string("a\0b", 3), "a\\00b"},
                      ShownNameCase{"a terminal's escape", der::utf8String, "\x1b[31m\r\n", "\\1b[31m\\0d\\0a"},
                      ShownNameCase{"controls of Latin-1", teletexStringTag, "\x9b\xe4", "\\c2\\9b\xc3\xa4"},
                      ShownNameCase{"direction and width", der::utf8String, "\xE2\x80\xAE\xE2\x80\x8B\xD8\x9C",
                                    "\\e2\\80\\ae\\e2\\80\\8b\\d8\\9c"},
                      ShownNameCase{"letters of others", der::utf8String, "\xC3\xA4\xE4\xB8\xAD", "\xC3\xA4\xE4\xB8\xAD"},
                      ShownNameCase{"two octets", bmpStringTag, std::string("\0A\xD8\x3D\xDE\x00", 6), "A\xF0\x9F\x98\x80"},
                      ShownNameCase{"four octets", universalStringTag, std::string("\0\0\0A\0\x01\xF6\0", 8), "A\xF0\x9F\x98\x80"},
                      ShownNameCase{"half a character", bmpStringTag, std::string("\0A\0", 3), "#1e03004100"},
                      ShownNameCase{"half a pair", bmpStringTag, "\xD8\x3D", "#1e02d83d"},
                      ShownNameCase{"a pair turned round", bmpStringTag, "\xDE\x01\xD8\x3D", "#1e04de01d83d"},
                      ShownNameCase{"beyond Unicode", universalStringTag, std::string("\0\x11\0\0", 4), "#1c0400110000"},
                      ShownNameCase{"no UTF-8", der::utf8String, "\xFF", "#0c01ff"},
                      ShownNameCase{"Latin-1 in an IA5String", ia5StringTag, "\xE4", "#1601e4"},
                      ShownNameCase{"no text", der::octetString, "a", "#040161"}));

TEST(NameText, JoinsRelativeNames)
{
    EXPECT_EQ(NameText(std::span<const std::uint8_t>(TestName("C=FI,DC=example,CN=Signer"))), "CN=Signer, DC=example, C=FI");
    const Bytes attribute = Tlv(der::sequence, {OidTlv("1.2.3.4"), Tlv(der::utf8String, TextBytes("x"))});
    const Bytes name = Tlv(der::sequence, Tlv(der::set, {attribute, attribute}));
    EXPECT_EQ(NameText(std::span<const std::uint8_t>(name)), "1.2.3.4=x+1.2.3.4=x");
}

TEST(BuildName, WritesTheTwelveInTheirOrder)
{
    CCrypto_X509_ValueList name;
    ASSERT_TRUE(BuildName({.country = "FI",
                           .state = "state",
                           .locality = "locality",
                           .serialNumber = "serial",
                           .organisation = "organisation",
                           .organisationalUnit = "unit",
                           .surname = "surname",
                           .givenName = "given",
                           .email = "a@example",
                           .commonName = "common",
                           .title = "title",
                           .pseudonym = "pseudonym"},
                          name));
    EXPECT_EQ(NameText(name), "CN=common, emailAddress=a@example, SN=surname, GN=given, serialNumber=serial, title=title, "
                              "pseudonym=pseudonym, OU=unit, O=organisation, L=locality, ST=state, C=FI");
    // Written and read.
    EXPECT_EQ(NameText(name.GetDerEncodedElement().bytes()), NameText(name));
    ASSERT_TRUE(BuildName({.commonName = "one"}, name));
    EXPECT_EQ(name.values().size(), 1u);
    EXPECT_FALSE(BuildName({.country = "FI", .email = "\xC3\xA4@example"}, name));
    EXPECT_TRUE(name.isEmpty());
}

namespace {

struct TextAttributeCase {
    std::string text;
    std::uint8_t identifier; ///< 0 for a text that is refused
    std::string_view typeWord = "";
};

class WritesTextAttribute : public ::testing::TestWithParam<TextAttributeCase> {};

} // namespace

TEST_P(WritesTextAttribute, AsTheSameText)
{
    CCrypto_X509_ValueList name;
    const CCryptoString text{std::string_view(GetParam().text)};
    ForgetFailure();
    const bool isAdded = AddTextAttribute(name, Oid::FromDotted("2.5.4.3"), text, GetParam().typeWord);
    ASSERT_EQ(isAdded, GetParam().identifier != 0);
    EXPECT_EQ(ReasonOfFailure().empty(), isAdded);
    EXPECT_EQ(name.isEmpty(), !isAdded);
    if (!isAdded)
        return;
    const bool isTwoByte = GetParam().identifier == bmpStringTag;
    const element der = name.GetDerEncodedElement();
    if (!isTwoByte) {
        const Bytes value = Tlv(GetParam().identifier, TextBytes(GetParam().text));
        EXPECT_EQ(BytesOf(der), Tlv(der::sequence, Tlv(der::set, Tlv(der::sequence, {OidTlv("2.5.4.3"), value}))));
    }
    CCryptoParser parser;
    CCrypto_X509_ValueList again;
    ASSERT_TRUE(parser.Load_DER_Memory(der) && again.Parse(parser.root()->content(), true));
    EXPECT_EQ(again.values()[0]->text(), text);
    EXPECT_EQ(again.values()[0]->value()->type() == ElementType::bmpString, isTwoByte);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, WritesTextAttribute,
    ::testing::Values(
        TextAttributeCase{"Test", der::printableString}, TextAttributeCase{"a@example", ia5StringTag},
        TextAttributeCase{"\xC3\xA4", der::utf8String}, TextAttributeCase{"under_score", der::utf8String},
        TextAttributeCase{" '()+,-./:=?09AZaz", der::printableString}, TextAttributeCase{"a*b", der::utf8String},
        TextAttributeCase{"x\"},SET{SEQUENCE{OBJECT_IDENTIFIER=\"2.5.4.10\",UTF8String{\"y\"}}", der::utf8String},
        TextAttributeCase{"x@\"},NULL{\"", ia5StringTag}, TextAttributeCase{"\\", der::utf8String},
        TextAttributeCase{"\\\"", der::utf8String}, TextAttributeCase{"\\x41", der::utf8String},
        TextAttributeCase{"`$name`%text\"a\"#00", der::utf8String}, TextAttributeCase{"'", der::printableString},
        TextAttributeCase{"\n\r\t\x01\x7f", der::utf8String}, TextAttributeCase{std::string("a\0b", 3), der::utf8String},
        TextAttributeCase{"include \"/etc/passwd\"", der::utf8String},
        // Looks like eight-bit characters to whoever does not know its kind.
        TextAttributeCase{"\xC2\x80\xDF\xBF", der::utf8String}, TextAttributeCase{"\xF0\x9F\x98\x80", der::utf8String},
        TextAttributeCase{"\xF0\x9F\x98\x80 A", bmpStringTag, "BMPString"}, TextAttributeCase{"plain", bmpStringTag, "BMPString"},
        TextAttributeCase{"Test", der::utf8String, "UTF8String"}, TextAttributeCase{"12 3", 0x12, "NumericString"},
        TextAttributeCase{"1a", 0, "NumericString"}, TextAttributeCase{"a b", 0x1A, "VisibleString"},
        TextAttributeCase{"a\nb", 0, "VisibleString"}, TextAttributeCase{"a@b", 0, "PrintableString"},
        TextAttributeCase{"\xC3\xA4@b", 0}, TextAttributeCase{"\xFF", 0}, TextAttributeCase{"\xC3", 0},
        TextAttributeCase{"\xED\xA0\x80", 0}, TextAttributeCase{"", 0}, TextAttributeCase{"a", 0, "OCTET_STRING"},
        TextAttributeCase{"a", 0, "SEQUENCE{UTF8String"}));
