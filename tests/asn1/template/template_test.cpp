#include "asn1/parser/parser.h"
#include "asn1/template/gen_parser.h"
#include "asn1/template/template_cache.h"
#include "core/diagnostics/error_handler.h"
#include "core/settings/settings.h"
#include "tests/asn1/parser/text_forms.h"
#include "tests/support/captured_log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>

using namespace ccrypto;

namespace {

using std::string_view_literals::operator""sv;

std::string DerOf(std::string_view text)
{
    CCryptoParser parser;
    if (!parser.Load_ASCII_Memory(text))
        return "no template";
    ExpectReadsBack(parser, jsonForm, {jsonForm, xmlForm});
    CCryptoParser printed;
    EXPECT_TRUE(printed.Load_ASCII_Memory(parser.ToText().view()));
    EXPECT_EQ(Hex(printed.ToDer()), Hex(parser.ToDer())) << parser.ToText().c_str();
    return Hex(parser.ToDer());
}

TEST(Template, KeepsEveryPartInEveryForm)
{
    const std::string_view cases[] = {
        "a {b} = c",
        "a = b; + c",
        "a = 1, {b}",
        "a + b, = c",
        "a {1} {2} [3]",
        "a [1] {2} (x), (y) [z] {w}",
        "a = 1, = 2, [3]",
        "a + 1 + 2, {x}",
        "a[1][] b(x)() c{1}{}",
        "[3] a (x) {y} b",
        "\xEF\xBF\xBF [\xFF] ('\xEF\xBF\xBF') = \"\xED\xA0\x80\"",
        "a[b = c, d {e} = 5](f + 1)",
        "`a b` = `SET`, `\\`\\\\` {`include`}",
        "a[xmlns = \"urn:x-asn1:template\"]",
        "OCTET_STRING, \\[11] = \"A\", \\, a[1, \\[2], \\, \\{b}], \\ = 5, \\ + 1",
        "a = -5, b[-5] {-251, %-integer#fb} = c . -5 + -1",
        "%characterData\"1.5\", %truth#02, %integer#00, %-integer#0005, %text\"\\xc3\\xa4\", %utf8Text\"AB\", %quotedText\"'\", %",
        "`SET` = 5",
        "%quotedText\"\\x01\"",
        "a[b = %text\"\xC3\xA4\"]",
        "a = %text\"\xC3\xA4\"",
        "a = %characterData\"hi\", b = %characterData\"5\"",
        "`ASN.1` [1]",
        "INTEGER = %characterData\"1.5\"",
        "INTEGER = 128, INTEGER = 123456789012345678901234567890, ENUMERATED = %integer#0080, INTEGER = %integer#",
        "\"#00\", \"text#00\", '\"', \"'x'\", \"\\\\#00\", \"\", #, null, case",
        "a ! b == c != d > e >= f < g <= h * i / j || k && l - 1",
    };
    for (const std::string_view text : cases) {
        SCOPED_TRACE(text);
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_ASCII_Memory(text));
        ExpectReadsBack(parser, jsonForm, {templateForm, jsonForm, xmlForm});
    }
    EXPECT_FALSE(CCryptoParser().Load_ASCII_Memory("\"\\"));
}

// One line each; what a text means shows in what it prints.
TEST(Template, PrintsWhatItMeans)
{
    const std::pair<const char*, const char*> cases[] = {
        {"INTEGER=-5", "INTEGER = -5"},
        {"INTEGER=-251", "INTEGER = %-integer#fb"},
        {"SEQUENCE{a + b(c + 1) -- e,\nINTEGER=5}", "SEQUENCE { a + b (c + 1) -- e, INTEGER = 5 }"},
        {"SEQUENCE{a + b(c + 1) -- e}", "SEQUENCE { a + b (c + 1) -- e }"},
        {"SEQUENCE{OBJECT_IDENTIFIER = \"1.2\" -- comment\nSEQUENCE{a}}",
         "SEQUENCE { OBJECT_IDENTIFIER = \"1.2\", SEQUENCE { a } }"},
        {"a + b\n-- comment\n, c - d -- e", "a + b, c - d -- e"},
        {"a = b\r\n[1] c", "a[1] = b, c"},
        {"a =\n5 + \n6\n7", "a = 5 + 6, 7"},
        {"INTEGER = ; a = }", ""},
        {"INTEGER = ; = 5", "INTEGER = 5"},
        {"INTEGER = 5 . NULL", "INTEGER = 5 NULL"},
        {"a = \"\\x7F\"", "a = \"\\x7f\""},
        {"VideoString, VideotexString", "VideotexString, VideotexString"},
    };
    for (const auto& [text, printed] : cases) {
        SCOPED_TRACE(text);
        CCryptoParser parser;
        EXPECT_EQ(parser.Load_ASCII_Memory(text), *printed != '\0');
        std::string line;
        const CCryptoString layout = parser.ToText();
        for (const char character : layout.view()) {
            const bool isBlank = character == ' ' || character == '\n';
            if (!isBlank || (!line.empty() && line.back() != ' '))
                line += isBlank ? ' ' : character;
        }
        EXPECT_EQ(line.substr(0, line.find_last_not_of(' ') + 1), printed);
    }
}

::testing::AssertionResult HasLine(const CapturedLog& log, std::string_view wanted)
{
    std::string all;
    for (const std::string& text : log.texts()) {
        if (text.find(wanted) != text.npos)
            return ::testing::AssertionSuccess();
        all += text + '\n';
    }
    return ::testing::AssertionFailure() << all;
}

/// Included files by name.
class Files : public ICryptoIncludeLoader {
public:
    using Texts = std::map<std::string, std::string>;
    explicit Files(Texts texts) : texts_(std::move(texts)) {}
    bool Load(const CCryptoString& name, element& text) override
    {
        ++loaded;
        const auto found = texts_.find(std::string(name.view()));
        text = found != texts_.end() ? element(std::string_view(found->second)) : element();
        return found != texts_.end();
    }
    int loaded = 0;

private:
    Texts texts_;
};

TEST(Template, IncludesIntoTheCurrentItem)
{
    const struct {
        const char *text, *file, *same;
    } cases[] = {
        {"SEQUENCE include f", "{ INTEGER=1 }", "SEQUENCE { INTEGER=1 }"},
        {"SEQUENCE include f", "[0]", "SEQUENCE[0]"},
        {"SEQUENCE include f", "= 5", "SEQUENCE = 5"},
        {"SEQUENCE include f", "(OPTIONAL)", "SEQUENCE (OPTIONAL)"},
        {"SEQUENCE include f, x", "{a} b", "SEQUENCE {a} b x"},
        {"SEQUENCE include f; {x}", "b", "SEQUENCE, b {x}"},
        {"SEQUENCE include f; {x}", "-- nothing", "SEQUENCE {x}"},
        {"a {include f}", "b; c", "a {b, c}"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.text);
        SCOPED_TRACE(each.file);
        Files files(Files::Texts{{"folder/f", each.file}});
        const ElementNodePtr tree = CCryptoGENParser(&files, "folder").Parse(each.text);
        EXPECT_EQ(CCryptoParser::ToText(tree.get()), CCryptoParser::ToText(CCryptoGENParser().Parse(each.same).get()));
    }
}

/// Settings of which only "includePath" is there.
class FolderSetting : public ICryptoSettings {
public:
    explicit FolderSetting(std::string folder) : folder_(std::move(folder)) {}
    void Reload() override {}
    bool GetInteger(const char*, std::uint32_t&, std::uint32_t) override { return false; }
    element GetString(const char*) override { return element(); }
    bool GetValue(const char*, char*, std::uint32_t, std::uint32_t) override { return false; }
    element GetLongString(const char* name) override
    {
        return std::string_view(name) == "includePath" ? element(std::string_view(folder_)) : element();
    }
    std::uint32_t GetIntegerOrDefault(const char*, std::uint32_t defaultValue) override { return defaultValue; }
    bool SetValue(const element&, const element&) override { return false; }
    std::unique_ptr<ICryptoSettingsGroupIterator> Group(const char*) override { return nullptr; }

private:
    std::string folder_;
};

TEST(Template, LooksForIncludesInTheFolderThatIsGiven)
{
    const struct {
        const char *text, *folder, *file;
    } cases[] = {
        {"include f", "C:\\asn1\\parts", "C:/asn1/parts/f"},
        {"include f", "parts\\", "parts/f"},
        {"include 'a b'", "", "a b"},
        {"include x/f; ", "parts", "x/f"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.file);
        Files files(Files::Texts{{each.file, "NULL"}});
        EXPECT_NE(CCryptoGENParser(&files, each.folder).Parse(each.text), nullptr);
    }
    // The class that loads trees takes it from the setting, and nothing else does.
    const std::string folder = testing::TempDir();
    const std::string name = "asn1_included_template.txt";
    std::ofstream(folder + "/" + name) << "NULL";
    const CCryptoSettings settings(std::make_unique<FolderSetting>(folder));
    CCryptoParser parser;
    EXPECT_TRUE(parser.Load_ASCII_Memory("SEQUENCE { include " + name + " }"));
    EXPECT_EQ(Hex(parser.ToDer()), "30020500");
    EXPECT_FALSE(parser.Load_ASCII_Memory("SEQUENCE { include " + name + " }", TemplateIncludes::none));
    const std::string text = "include " + name;
    EXPECT_NE(CCryptoGENParser(nullptr, folder.c_str()).Parse(text), nullptr);
    EXPECT_EQ(CCryptoGENParser().Parse(text), nullptr);
    EXPECT_EQ(ParsedTemplate(text), nullptr);
    EXPECT_EQ(ParseInlineTemplate(text), nullptr);
    std::filesystem::remove(folder + "/" + name);
}

/// Blanks of this many bytes for every name but "many", which includes two of them.
class LargeFiles : public ICryptoIncludeLoader {
public:
    explicit LargeFiles(std::uint32_t bytes) : blanks_(bytes, ' ') {}
    bool Load(const CCryptoString& name, element& text) override
    {
        text = element(name == "many" ? std::string_view("include a include b") : std::string_view(blanks_));
        return true;
    }

private:
    std::string blanks_;
};

TEST(Template, BoundsTheSizeOfIncludedFilesTogether)
{
    LargeFiles halves(CCryptoGENParser::maxIncludeBytes / 2);
    const CapturedLog log;
    EXPECT_EQ(CCryptoGENParser(&halves).Parse("include many"), nullptr);
    EXPECT_TRUE(HasLine(log, "Parsing failed; More than 64 MiB of include files; row=1,col=11"));
    // A file on disk is not even read.
    const std::filesystem::path file = std::filesystem::path(testing::TempDir()) / "asn1_large_template.txt";
    std::ofstream(file) << "";
    std::filesystem::resize_file(file, CCryptoGENParser::maxIncludeBytes + 1);
    EXPECT_EQ(CCryptoGENParser().Parse("include " + file.string()), nullptr);
    EXPECT_TRUE(HasLine(log, "Failed to read include file: '" + file.string() + "'; row=1,col=1"));
    std::filesystem::remove(file);
}

TEST(Template, SaysWhyAnIncludeIsRefused)
{
    std::string twenty;
    for (int index = 0; index < 20; ++index)
        twenty += "include leaf ";
    Files files(Files::Texts{{"p/bad", "a }"}, {"p/self", "include self"}, {"p/twenty", twenty}, {"p/leaf", "x"}});
    const std::pair<const char*, const char*> cases[] = {
        {"\ninclude none", "Failed to read include file: 'p/none'; row=2,col=1"},
        {"include bad", "Failed to parse include file: 'p/bad'; row=1,col=1"},
        {"include self", "Failed to parse include file: 'p/self'; row=1,col=1"},
    };
    for (const auto& [text, reason] : cases) {
        SCOPED_TRACE(text);
        CCryptoErrorHandler::ClearLastErrorText();
        EXPECT_EQ(CCryptoGENParser(&files, "p").Parse(text), nullptr);
        const CCryptoString last = CCryptoErrorHandler::LastErrorText();
        EXPECT_TRUE(last.view().ends_with(reason)) << last.c_str();
    }
    std::string many;
    for (int index = 0; index < 20; ++index)
        many += "include twenty ";
    // The reason of the innermost file is in the log.
    const struct {
        std::string_view text, reason;
        int loaded;
    } limits[] = {
        {"include bad", "Parsing failed; Token not expected: } (token=53); row=1,col=3", 1},
        {"include self", "Parsing failed; More than 16 include files inside each other; row=1,col=1", 16},
        {many, "Parsing failed; More than 256 include files; row=1,col=40", 256},
    };
    for (const auto& each : limits) {
        SCOPED_TRACE(each.text);
        const CapturedLog log;
        files.loaded = 0;
        EXPECT_EQ(CCryptoGENParser(&files, "p").Parse(each.text), nullptr);
        EXPECT_EQ(files.loaded, each.loaded);
        EXPECT_TRUE(HasLine(log, each.reason));
    }
}

TEST(Template, IsWrittenAsDer)
{
    const std::pair<const char*, const char*> cases[] = {
        {"INTEGER=2;OCTET_STRING{#ff}", "0201020401ff"},
        {"INTEGER=2 , ,OCTET_STRING{#ff}", "0201020401ff"},
        {"INTEGER = 128", "02020080"},
        {"INTEGER = 0", "020100"},
        {"INTEGER = -128", "020180"},
        {"INTEGER = -5", "020105"},
        {"INTEGER = %-integer#fb", "0201fb"},
        {"BMPString = %utf8Text\"AB\"", "1e0400410042"},
        {"UTF8String = %text\"\\xc3\\xa4\"", "0c04c383c2a4"},
        {"UTF8String = %quotedText\"'\\xe4\"", "0c0227e4"},
        {"OBJECT_IDENTIFIER = %characterData\"1.2.3\"", "0605312e322e33"},
        {"BIT_STRING[0] = %integer#010203040506070809", "030a00010203040506070809"},
        {"SEQUENCE{INTEGER=1 -- a comment\n, NULL}", "30050201010500"},
        {"SEQUENCE { INTEGER(OPTIONAL) = version, NULL = \"NULL\" }", "30020500"},
        {"OBJECT_IDENTIFIER = \"1.2.840.113549\"", "06062a864886f70d"},
        {"OBJECT_IDENTIFIER = 2.5.4.3", "0603550403"},
        {"OBJECT_IDENTIFIER[EXCLUDE] = \"2.5.4.3\"", "550403"},
        {"CONTEXT_SPECIFIC[1,CONSTRUCTED] = #0500", "a1020500"},
        {"CONTEXT_SPECIFIC[0, \"IMPLICIT\"]{INTEGER=1}", "8003020101"},
        {"CONTEXT_SPECIFIC(OPTIONAL)[0]{SEQUENCE[CONSTRUCTED]{crl}}", ""},
        {"BIT_STRING[PRIMITIVE]{#00,SEQUENCE{INTEGER=1}}", "0306003003020101"},
        {"UTF8String = \"\\xe4\"", "0c02c3a4"},
        {"BMPString = \"\xC3\xA4\"", "1e0200e4"},
        {"GeneralizedTime = \"20260101000000Z\"", ""},
        {"SEQUENCE{", "no template"},
        {"SEQUENCE}", "no template"},
        {"OCTET_STRING = \"open", "no template"},
        {"OCTET_STRING = #abc", "no template"},
        {"CONTEXT_SPECIFIC{INTEGER=1}", ""},
        {"CONTEXT_SPECIFIC[31]{INTEGER=1}", ""},
        {"OBJECT_IDENTIFIER = \"1\"", ""},
    };
    for (const auto& [text, der] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(DerOf(text), der);
    }
    EXPECT_EQ(DerOf(std::string(100000, '{')), "no template");
}

} // namespace
