#include "asn1/parser/parser.h"
#include "asn1/template/template_cache.h"
#include "asn1/template/template_match.h"
#include "tests/asn1/parser/text_forms.h"

#include <gtest/gtest.h>

#include <span>
#include <string>

using namespace ccrypto;

namespace {

/// Each name and what it stands for, elements as the hexadecimal of their DER; or "! " and why the match failed.
std::string Matched(std::string_view text, const elementNode* data)
{
    const ElementNodePtr pattern = ParseInlineTemplate(text);
    CCryptoTemplateMatch match;
    if (!match.Match(pattern.get(), data))
        return "! " + std::string(match.failedStep().view());
    EXPECT_TRUE(match.failedStep().isEmpty());
    std::string bound;
    for (const TemplateBinding& binding : match.bindings()) {
        bound += (bound.empty() ? "" : " ") + std::string(binding.name) + "=";
        if (binding.node == nullptr)
            continue;
        const bool isValue = binding.node->type() < ElementType::application;
        const ElementNodePtr part = binding.node->clone(binding.withSiblings);
        bound += isValue ? std::string(part->token().toString().view()) : Hex(CCryptoParser::ToDer(part.get()));
    }
    return bound;
}

struct MatchCase {
    const char* text;
    const char* der;
    const char* result;
    bool insideStrings = false;
};

constexpr const char* algorithm = "SEQUENCE { OBJECT_IDENTIFIER = oid, parameters(OPTIONAL) }";
constexpr const char* choice = "SEQUENCE{CONTEXT_SPECIFIC(OPTIONAL)[0]{first}CONTEXT_SPECIFIC(OPTIONAL)[1]{second}, INTEGER = n}";
constexpr const char* extensions = "SEQUENCE{INTEGER=v,CONTEXT_SPECIFIC[3](OPTIONAL){SEQUENCE{e}}}";
constexpr const char* revocation = "SEQUENCE{CONTEXT_SPECIFIC(OPTIONAL)[0]{SEQUENCE[CONSTRUCTED]{CRL}}"
                                   "CONTEXT_SPECIFIC(OPTIONAL)[1]{SEQUENCE[CONSTRUCTED]{ocspResponse}}}";
constexpr const char* signerInfo =
    "SEQUENCE {INTEGER = version;signerIdentifier,digestAlgorithm,"
    "CONTEXT_SPECIFIC[0, CONSTRUCTED](OPTIONAL){authenticatedAttributes}signatureAlgorithm,OCTET_STRING { signature }"
    "CONTEXT_SPECIFIC[1, CONSTRUCTED](OPTIONAL){unAuthenticatedAttributes}}";
constexpr const char* certStatus = "CONTEXT_SPECIFIC(OPTIONAL)[0]{NULL},CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED]"
                                   "{SEQUENCE[CONSTRUCTED,EXCLUDE]{time,CONTEXT_SPECIFIC[0,CONSTRUCTED]{ENUMERATED=reason}}},"
                                   "CONTEXT_SPECIFIC(OPTIONAL)[2,CONSTRUCTED]{unknown}";

constexpr MatchCase bindingCases[] = {
    {algorithm, "300706035504030500", "oid=2.5.4.3 parameters=0500"},
    {algorithm, "30050603550403", "oid=2.5.4.3"},
    {choice, "3008a003020101020109", "first=020101 n=9"},
    {choice, "3008a103020101020109", "second=020101 n=9"},
    {"CONTEXT_SPECIFIC[context] { data }", "a303020105", "context=3 data=020105"},
    {"CONTEXT_SPECIFIC[CONSTRUCTED,context]{data}", "a303020105", "context=3 data=020105"},
    {"OCTET_STRING { data }", "0400", "data="},
    {"SEQUENCE[EXCLUDE]{INTEGER = a, INTEGER = b}", "020101020102", "a=1 b=2"},
    {"CONTEXT_SPECIFIC[0]{OCTET_STRING[EXCLUDE]=path}", "80023f00", "path=3f00"},
    {"SEQUENCE{TIME{from},END(OPTIONAL){to}}", "3003020105", "TIME=020105 from=5"},
    {"SEQUENCE{INTEGER=a}", "3006020101020102", "a=1"},
    {"SEQUENCE{OCTET_STRING=a}", "3003020101", "! OCTET_STRING: the data holds INTEGER"},
    {"SEQUENCE{INTEGER=a,INTEGER=b}", "3003020101", "! INTEGER: no data is left"},
};

constexpr MatchCase optionalCases[] = {
    {extensions, "3003020101", "v=1"},
    {extensions, "300a020101a30530030101ff", "v=1 e=0101ff"},
    {extensions, "3008020101a303020105", "! SEQUENCE: the data holds INTEGER"},
    {extensions, "30050201018500", "v=1"},
    {revocation, "3006a10430020500", "ocspResponse=0500"},
    {revocation, "30028500", "! CONTEXT_SPECIFIC[0]: the data holds CONTEXT_SPECIFIC[5]"},
    {revocation, "3000", ""},
    {certStatus, "8000", ""},
    {certStatus, "8200", "unknown="},
    {certStatus, "a2020500", "unknown=0500"},
    {certStatus, "820141", "! CONTEXT_SPECIFIC[2]: the data holds a primitive CONTEXT_SPECIFIC[2]"},
    {certStatus, "a10302010c", "! CONTEXT_SPECIFIC[0]: no data is left"},
    {certStatus, "8300", "! CONTEXT_SPECIFIC[0]: the data holds CONTEXT_SPECIFIC[3]"},
    {certStatus, "a0020500", ""},
    {certStatus, "a10702010ca0020500", "! ENUMERATED: the data holds NULL"},
    {certStatus, "a10802010ca0030a0101", "time=02010c reason=01"},
    {"SEQUENCE{SEQUENCE[EXCLUDE](OPTIONAL){INTEGER=a}}", "3000", ""},
    {"SEQUENCE{SEQUENCE[EXCLUDE](OPTIONAL){INTEGER=a,NULL},OCTET_STRING=b}", "3003040141", "b=41"},
    {"SEQUENCE{SEQUENCE[EXCLUDE](OPTIONAL){INTEGER=a,NULL},OCTET_STRING=b}", "3006020101040141",
     "! NULL: the data holds OCTET_STRING"},
};

constexpr MatchCase failureCases[] = {
    {signerInfo, "3009020101300030003000", "! OCTET_STRING: no data is left"},
    {"SEQUENCE{INTEGER(OPTIONAL)=a,OCTET_STRING=b,OCTET_STRING=c}", "3003040141", "! OCTET_STRING: no data is left"},
    {"SEQUENCE[EXCLUDE]{OBJECT_IDENTIFIER=oid}", "3000", "! OBJECT_IDENTIFIER: the data holds SEQUENCE"},
    {"SEQUENCE{CONTEXT_SPECIFIC[number]{data}}", "30020500", "! CONTEXT_SPECIFIC[number]: the data holds NULL"},
    {"SEQUENCE{a,b}", "30020500", "! b: no data is left"},
    // The bytes of a key do not show.
    {"OCTET_STRING[PRIMITIVE]{SEQUENCE{a}}", "04050102030405", "! SEQUENCE: the data holds a value of 5 bytes"},
    // 2^64, of which 64 bits are those of 0.
    {"CONTEXT_SPECIFIC[18446744073709551616]{a}", "a0020500",
     "! CONTEXT_SPECIFIC[18446744073709551616]: the data holds CONTEXT_SPECIFIC[0]"},
};

constexpr MatchCase constantCases[] = {
    {"SEQUENCE{INTEGER=0,value}", "30050201000500", "value=0500"},
    {"SEQUENCE{INTEGER=0,value}", "30050201010500", "! INTEGER: the value differs"},
    {"OCTET_STRING{#00,r}", "0403004142", "r=4142"},
    {"OCTET_STRING{#00,r}", "0403014142", "! OCTET_STRING: the value differs"},
    {"OCTET_STRING{#00,r}", "040100", "r="},
    {"OCTET_STRING{#00,r(OPTIONAL)}", "040100", ""},
    {"OCTET_STRING{#00,r(OPTIONAL)}", "04020041", "r=41"},
    {"OCTET_STRING{#00,#41}", "0403004142", "! OCTET_STRING: the value differs"},
    {"OCTET_STRING{#00,#41}", "04020041", ""},
    {"OCTET_STRING=\"A\"", "0400", "! OCTET_STRING: the value differs"},
};

constexpr MatchCase formCases[] = {
    {"CONTEXT_SPECIFIC[0]{a}", "80024142", "a=AB"},
    {"CONTEXT_SPECIFIC[0]{a}", "a003020105", "a=020105"},
    {"CONTEXT_SPECIFIC[0]{a,b}", "80024142", "! CONTEXT_SPECIFIC[0]: the data holds a primitive CONTEXT_SPECIFIC[0]"},
    {"CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL){a}", "80024142",
     "! CONTEXT_SPECIFIC[0]: the data holds a primitive CONTEXT_SPECIFIC[0]"},
    {"CONTEXT_SPECIFIC[0,CONSTRUCTED]{a}", "a000", "a="},
    {"CONTEXT_SPECIFIC[0,IMPLICIT]=a", "a003020105", "! CONTEXT_SPECIFIC[0]: the data holds a constructed CONTEXT_SPECIFIC[0]"},
    {"SEQUENCE{a}", "10024142", "! SEQUENCE: the data holds a primitive SEQUENCE"},
    {"OCTET_STRING[PRIMITIVE]{data}", "240404020102", "! OCTET_STRING: the data holds a constructed OCTET_STRING"},
    {"GeneralString=text", "3b061b01611b0162", "! GeneralString: the data holds a constructed GeneralString"},
    {"SEQUENCE{OBJECT_IDENTIFIER=oid}", "300726050603550403",
     "! OBJECT_IDENTIFIER: the data holds a constructed OBJECT_IDENTIFIER"},
    {"OCTET_STRING[PRIMITIVE]{data}", "0403020105", "data=020105", true},
    {"OCTET_STRING{SEQUENCE{a}}", "04053003020105", "a=020105", true},
};

constexpr MatchCase bitStringCases[] = {
    {"BIT_STRING{ unusedBits, value }", "030205a0", "unusedBits=5 value=a0"},
    {"BIT_STRING[PRIMITIVE]{#00,key}", "030200a0", "key=a0"},
    {"BIT_STRING[PRIMITIVE]{#00,key}", "030205a0", "! BIT_STRING: the value differs"},
    {"BIT_STRING[PRIMITIVE]{#00,SEQUENCE{a}}", "0306003003020105", "a=020105", true},
    {"BIT_STRING{sig}", "030100", "sig="},
    {"BIT_STRING{u,sig}", "030100", "u=0 sig="},
    {"BIT_STRING{u,sig(OPTIONAL)}", "030100", "u=0"},
    {"BIT_STRING[u]{sig}", "030205a0", "u=5 sig=a0"},
    {"BIT_STRING[4]{sig}", "030205a0", "! BIT_STRING: the value differs"},
    {"BIT_STRING[5]{sig}", "030205a0", "sig=a0"},
    {"BIT_STRING[-5]{sig}", "030205a0", "! BIT_STRING: the value differs"},
    {"BIT_STRING=#05a0", "030205a0", ""},
    {"BIT_STRING{u,sig}", "0300", "! BIT_STRING: no data is left"},
};

void ExpectMatches(std::span<const MatchCase> cases)
{
    for (const MatchCase& each : cases) {
        SCOPED_TRACE(std::string(each.text) + " on " + each.der);
        CCryptoParser data;
        ASSERT_TRUE(data.Load_DER_Memory(FromHex(each.der), {false, each.insideStrings, each.insideStrings}));
        EXPECT_EQ(Matched(each.text, data.root()), each.result);
    }
}

TEST(TemplateMatch, BindsWhatStandsAtEachPlace)
{
    ExpectMatches(bindingCases);
}

TEST(TemplateMatch, LeavesOutOptionalItemsThatDoNotAgreeAndNoOthers)
{
    ExpectMatches(optionalCases);
}

TEST(TemplateMatch, NamesTheStepThatFailed)
{
    ExpectMatches(failureCases);
    CCryptoParser data;
    ASSERT_TRUE(data.Load_DER_Memory(FromHex("30070201013002a000")));
    CCryptoTemplateMatch match;
    const ElementNodePtr pattern = ParseInlineTemplate("SEQUENCE{v,SEQUENCE{CONTEXT_SPECIFIC[0]{a},b}}");
    EXPECT_FALSE(match.Match(pattern.get(), data.root()));
    EXPECT_EQ(match.failedPlace(), "SEQUENCE / SEQUENCE / item 2");
}

TEST(TemplateMatch, ComparesConstantsAsTheyAreWritten)
{
    ExpectMatches(constantCases);
    for (const char* text : {"OCTET_STRING=\"\"", "UTF8String=\"\\xe4\"", "BMPString=\"\xC3\xA4\"", "INTEGER=-5", "INTEGER=-128",
                             "INTEGER=128", "BOOLEAN=#ff", "ENUMERATED=10", "OBJECT_IDENTIFIER=\"2.5.4.3\"", "BIT_STRING{#00,#a0}",
                             "CONTEXT_SPECIFIC[1,CONSTRUCTED]=#0500", "NULL=\"NULL\""}) {
        CCryptoParser built;
        CCryptoParser read;
        ASSERT_TRUE(built.Load_ASCII_Memory(text));
        ASSERT_TRUE(read.Load_DER_Memory(built.ToDer())) << text;
        EXPECT_EQ(Matched(text, read.root()), "") << text;
        EXPECT_EQ(Matched(text, built.root()), "") << text;
    }
}

TEST(TemplateMatch, DistinguishesPrimitiveFromConstructed)
{
    ExpectMatches(formCases);
}

TEST(TemplateMatch, SplitsTheUnusedBitsFromABitString)
{
    ExpectMatches(bitStringCases);
}

TEST(TemplateMatch, ReportsWhatFollowsTheLastItem)
{
    const struct {
        const char *text, *der, *following, *surplus; ///< elements in hexadecimal
    } cases[] = {
        {"SEQUENCE{a}", "3003020101", "", ""},
        {"SEQUENCE{a}", "30030201010500", "0500", ""},
        {"INTEGER=a,NULL(OPTIONAL)", "0201010500020102", "020102", ""},
        {"SEQUENCE{INTEGER=a}", "30050201010500", "", "0500"},
        {"SEQUENCE{SEQUENCE{INTEGER=a},INTEGER=b}", "300a30050201010500020102", "", "0500"},
        {"SEQUENCE{INTEGER(OPTIONAL)=a,NULL}", "300405000500", "", "0500"},
        {"SEQUENCE{SEQUENCE[EXCLUDE]{INTEGER=a},INTEGER=b}", "30080201010201020500", "", "0500"},
        {"SEQUENCE[CONSTRUCTED]{all}", "30050201010500", "", ""},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(std::string(each.text) + " on " + each.der);
        CCryptoParser data;
        ASSERT_TRUE(data.Load_DER_Memory(FromHex(each.der)));
        const ElementNodePtr pattern = ParseInlineTemplate(each.text);
        CCryptoTemplateMatch match;
        ASSERT_TRUE(match.Match(pattern.get(), data.root())) << match.failedStep().c_str();
        const auto shown = [](const elementNode* node) {
            return node == nullptr ? std::string() : Hex(CCryptoParser::ToDer(node->clone().get()));
        };
        EXPECT_EQ(shown(match.following()), each.following);
        EXPECT_EQ(shown(match.surplus()), each.surplus);
    }
}

// The bits after the octet of unused ones are a node that the match made.
TEST(TemplateMatch, MatchesWhatItBound)
{
    CCryptoParser data;
    ASSERT_TRUE(data.Load_ASCII_Memory("BIT_STRING { #00c0de }"));
    const ElementNodePtr split = ParseInlineTemplate("BIT_STRING { unused, rest }");
    const ElementNodePtr any = ParseInlineTemplate("any");
    CCryptoTemplateMatch match;
    ASSERT_TRUE(match.Match(split.get(), data.root()));
    for (const char* const name : {"rest", "any"}) {
        ASSERT_TRUE(match.Match(any.get(), match.find(name)->node));
        EXPECT_EQ(Hex(match.find("any")->node->token()), "c0de");
    }
    EXPECT_FALSE(match.Match(split.get(), match.find("any")->node));
}

TEST(TemplateCache, ReadsNoFilesForInlineTemplates)
{
    EXPECT_EQ(ParseInlineTemplate("include \"/dev/null\""), nullptr);
    EXPECT_EQ(ParsedTemplate("SEQUENCE{a}"), ParsedTemplate("SEQUENCE{a}"));
}

} // namespace
