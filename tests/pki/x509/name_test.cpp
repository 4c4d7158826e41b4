#include "asn1/parser/parser.h"
#include "pki/x509/name.h"

#include <gtest/gtest.h>

#include <string>

using namespace ccrypto;

namespace {

/// DER of template text.
element DerOfTemplate(const std::string& text)
{
    CCryptoParser parser;
    EXPECT_TRUE(parser.Load_ASCII_Memory(text)) << text;
    return parser.ToDer();
}

/// A name of one common name.
element CommonNameOf(const std::string& typeAndValue)
{
    return DerOfTemplate("SEQUENCE{SET{SEQUENCE{OBJECT_IDENTIFIER=\"2.5.4.3\"," + typeAndValue + "}}}");
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
