#include "core/diagnostics/error_descriptions.h"
#include "core/diagnostics/error_handler.h"
#include "tests/support/collected_log.h"
#include "tests/support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

using namespace ccrypto;

using testing::Contains;
using testing::HasSubstr;

namespace {

std::string Repeated(const std::string& text, int count)
{
    std::string repeated;
    for (int index = 0; index < count; ++index)
        repeated += text;
    return repeated;
}

std::string SettingsXml(const std::string& items)
{
    return "<settings>" + items + "</settings>";
}

} // namespace

TEST(ErrorDescriptions, AreReadAndMalformedItemsSkipped)
{
    CollectedLog log(9);
    ErrorDescriptions descriptions;
    const std::string document = "\xEF\xBB\xBF"
                                 R"(<?xml version="1.0"?>
<!-- <codes> -->
<settings>
    <ErrorCode_0x8010000C>No card &amp; no &#x72;e&#228;der</ErrorCode_0x8010000C>
    <ErrorCode_5>old</ErrorCode_5><ErrorCode_5>Access<!-- - --> denied</ErrorCode_5>
    <other><nested>ignored</nested></other>
    <ErrorCode_7 a="b">attribute</ErrorCode_7>
    <ErrorCode_8><b>nested</b></ErrorCode_8>
    <ErrorCode_9/>
    <ErrorCode_>none</ErrorCode_>
    <ErrorCode_0x100000000>wide</ErrorCode_0x100000000>
    <ErrorCode_-1>sign</ErrorCode_-1>
    <ErrorCode_12>&unknown;</ErrorCode_12>
    <ErrorCode_13>&#xD800;</ErrorCode_13>
    <ErrorCode_14>)" + std::string(256, 'x') +
                                 "</ErrorCode_14>\n</settings>\n";
    ASSERT_TRUE(ParseErrorDescriptions(document, descriptions));
    EXPECT_EQ(descriptions, (ErrorDescriptions{{0x8010000C, "No card & no re\xC3\xA4"
                                                            "der"},
                                               {5, "Access denied"}}));
    ASSERT_TRUE(ParseErrorDescriptions(SettingsXml(Repeated("<a>", 15) + Repeated("</a>", 15)), descriptions));
    EXPECT_TRUE(descriptions.empty());
    for (const char* item : {"7", "8", "9", "", "0x100000000", "-1", "12", "13", "14"})
        EXPECT_THAT(log.texts(),
                    Contains(HasSubstr("Incorrect format for error description item: ErrorCode_" + std::string(item))));
}

TEST(ErrorDescriptions, AreRefusedWhenTheDocumentIsNotWellFormed)
{
    const std::string good = "<ErrorCode_1>one</ErrorCode_1>";
    const std::vector<std::string> documents = {"",
                                                "text",
                                                "<settings>",
                                                "<settings",
                                                "<other/>",
                                                good,
                                                "</settings>",
                                                SettingsXml(good) + SettingsXml(good),
                                                SettingsXml(good) + "x",
                                                SettingsXml("text"),
                                                SettingsXml(good + "</x>"),
                                                SettingsXml("<a><b></a></b>"),
                                                SettingsXml("<!DOCTYPE x>"),
                                                SettingsXml("<![CDATA[x]]>"),
                                                "<!DOCTYPE x [<!ENTITY a \"b\">]>" + SettingsXml(good),
                                                SettingsXml("<!-- open"),
                                                SettingsXml("<? open"),
                                                SettingsXml("< a></ a>"),
                                                SettingsXml("<>x</>"),
                                                SettingsXml("<a<b></a<b>"),
                                                SettingsXml(Repeated("<a>", 100000)),
                                                SettingsXml(Repeated("<a>", 16) + Repeated("</a>", 16)),
                                                std::string("<settings>\0</settings>", 22)};
    for (const std::string& document : documents) {
        SCOPED_TRACE(document.substr(0, 80));
        ErrorDescriptions descriptions{{1, "before"}};
        EXPECT_FALSE(ParseErrorDescriptions(document, descriptions));
        EXPECT_EQ(descriptions, (ErrorDescriptions{{1, "before"}}));
    }
}

TEST(ErrorDescriptions, ComeBeforeTheTextsOfTheSystem)
{
    const TemporaryDirectory directory;
    const std::string path = directory / u8"errors.xml";
    const auto load = [&path](const std::string& document) {
        std::ofstream(path, std::ios::binary) << document;
        return CCryptoErrorHandler::LoadXmlErrorsDesriptions(path.c_str());
    };
    const auto textOf = [](std::uint32_t code) {
        CCryptoErrorHandler handler;
        handler.setWindowsError(code);
        return std::string(handler.message().view());
    };
    const std::string systemText = textOf(2);

    EXPECT_FALSE(CCryptoErrorHandler::LoadXmlErrorsDesriptions(path.c_str()));
    EXPECT_TRUE(load(SettingsXml("<ErrorCode_2>Insert the card</ErrorCode_2>")));
    EXPECT_EQ(textOf(2), "Insert the card");
    EXPECT_FALSE(load(SettingsXml("<ErrorCode_2>new</ErrorCode_2>") + std::string(1024 * 1024, ' ')));
    EXPECT_FALSE(load("<settings>"));
    EXPECT_EQ(textOf(2), "Insert the card");
    const std::string largest = SettingsXml(std::string(1024 * 1024 - SettingsXml("").size(), ' '));
    EXPECT_FALSE(load(largest + ' '));
    EXPECT_TRUE(load(largest));
    EXPECT_EQ(textOf(2), systemText);
}
