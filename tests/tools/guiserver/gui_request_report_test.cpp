#include "tests/ipc/wire_bytes.h"
#include "tools/guiserver/request_report.h"

#include <gtest/gtest.h>

using namespace ccrypto;

using namespace std::string_literals;

namespace {

struct ReportCase {
    const char* name;
    std::uint32_t type;
    std::string body;
    const char* text; ///< without the headline and the answer
    const char* json; ///< from "wellFormed" on, without the answer
};

const ReportCase cases[] = {
    {"no items", 1, "", "", R"(true,"items":[]})"},
    {"files", 22, wire::Text("C:\\a.pdf*C:\\b \"1\".pdf"), "    C:\\a.pdf\n    C:\\b \"1\".pdf\n",
     R"(true,"items":[{"name":"files","text":"C:\\a.pdf*C:\\b \"1\".pdf"}],"files":["C:\\a.pdf","C:\\b \"1\".pdf"]})"},
    {"nameless files", 22, wire::Text("*C:\\a.pdf*"), "    \n    C:\\a.pdf\n    \n",
     R"(true,"items":[{"name":"files","text":"*C:\\a.pdf*"}],"files":["","C:\\a.pdf",""]})"},
    {"no files", 22, wire::Text(""), "", R"(true,"items":[{"name":"files","text":""}],"files":[]})"},
    {"UTF-8, half a surrogate pair, Latin-1, control, direction", 22, wire::Text("\xC3\xA4\xED\xA0\xBD\xE4\x1B[2J\xD8\x9C"),
     "    \xC3\xA4\\xed\\xa0\\xbd\\xe4\\x1b[2J\\xd8\\x9c\n",
     "true,\"items\":[{\"name\":\"files\",\"text\":\"\xC3\xA4\\ud83d\\u00e4\\u001b[2J\\u061c\"}],\"files\":"
     "[\"\xC3\xA4\\ud83d\\u00e4\\u001b[2J\\u061c\"]}"},
    {"list", 4, wire::Int(3) + wire::Int(2) + wire::Text("one") + wire::Text("two") + wire::Text("which"),
     "    kind = 3\n    count = 2\n    items = \"one\"\n    items = \"two\"\n    text = \"which\"\n",
     R"(true,"items":[{"name":"kind","integer":3},{"name":"count","integer":2},{"name":"items","text":"one"},)"
     R"({"name":"items","text":"two"},{"name":"text","text":"which"}]})"},
    {"empty list", 4, wire::Int(3) + wire::Int(0) + wire::Text("which"), "    kind = 3\n    count = 0\n    text = \"which\"\n",
     R"(true,"items":[{"name":"kind","integer":3},{"name":"count","integer":0},{"name":"text","text":"which"}]})"},
    {"list shorter than its count", 4, wire::Int(3) + wire::Int(9) + wire::Text("one"),
     "    kind = 3\n    count = 9\n    items = \"one\"\n    malformed\n",
     R"(false,"items":[{"name":"kind","integer":3},{"name":"count","integer":9},{"name":"items","text":"one"}]})"},
    {"secret", 15, wire::Int(1) + wire::Text("card") + wire::Text("4711"),
     "    number = 1\n    card = \"card\"\n    pin = (secret, 5 bytes)\n",
     R"(true,"items":[{"name":"number","integer":1},{"name":"card","text":"card"},{"name":"pin","secretLength":5}]})"},
    {"secret out of place", 15, wire::Text("4711") + wire::Int(1), "    malformed\n", R"(false,"items":[]})"},
    {"secret in front of rubbish", 15, wire::Int(1) + wire::Text("card") + wire::Text("4711") + "4711", "    malformed\n",
     R"(false,"items":[]})"},
    {"unknown", 99, wire::Data("\x01\x02") + wire::Data("") + wire::Item(3, "\x02"s + "ab\0"s),
     "    item 1 = 0102\n    item 2 = (empty)\n    item 3 = \"ab\"\n    malformed\n",
     R"(false,"items":[{"name":"item 1","bytes":"0102"},{"name":"item 2"},{"name":"item 3","text":"ab"}]})"},
    {"an item too many", 11, wire::Int(1), "    item 1 = 1\n    malformed\n", R"(false,"items":[{"name":"item 1","integer":1}]})"},
    {"an item too few", 20, "", "    malformed\n", R"(false,"items":[]})"},
    {"rubbish", 7, "\x09rubbish", "    malformed\n", R"(false,"items":[]})"},
    {"integer without payload", 7, wire::Item(1, ""), "    malformed\n", R"(false,"items":[]})"},
};

TEST(GuiRequestReport, SaysWhatArrivedAndKeepsSecrets)
{
    for (const ReportCase& test : cases) {
        SCOPED_TRACE(test.name);
        wire::Message message(test.type);
        ASSERT_TRUE(message.Receive(test.body));
        const ReceivedRequest request = ReadGuiRequest(message);
        const std::string text = DescribeAsText(1, request, {}, false);
        const std::string headline = text.substr(0, text.find('\n') + 1);
        EXPECT_EQ(text, headline + test.text + "  not answered\n");
        EXPECT_TRUE(headline.starts_with("[1] " + std::to_string(test.type) + " ")) << headline;

        const std::string json = DescribeAsJson(1, request, {}, false);
        EXPECT_EQ(json.substr(json.find("\"wellFormed\":") + 13), std::string(test.json) + "\n");
        for (const std::string& told : {DescribeAsText(1, request, {}, true), DescribeAsJson(1, request, {}, true)}) {
            EXPECT_EQ(told.find("4711"), std::string::npos);
            EXPECT_EQ(told.find("34373131"), std::string::npos);
            EXPECT_EQ(told.find("34 37 31 31"), std::string::npos);
        }
    }
}

TEST(GuiRequestReport, ItemsAreBounded)
{
    std::string items;
    for (int index = 0; index < 100000; ++index)
        items += wire::Data("");
    const struct {
        std::uint32_t type;
        std::string body;
        bool wellFormed;
        std::size_t kept;
    } bounds[] = {{4, wire::Int(0) + wire::Int(100000) + items + wire::Text("which"), true, 100003},
                  {99, items + items, false, 100016}};
    for (const auto& test : bounds) {
        wire::Message message(test.type);
        ASSERT_TRUE(message.Receive(test.body));
        const ReceivedRequest request = ReadGuiRequest(message);
        EXPECT_EQ(request.wellFormed, test.wellFormed);
        EXPECT_EQ(request.items.size(), test.kept);
    }
}

TEST(GuiRequestReport, ShowsTheAnswerAndTheBytes)
{
    wire::Message message(16);
    ASSERT_TRUE(message.Receive(wire::Int(1) + wire::Text("c")));
    const ReceivedRequest request = ReadGuiRequest(message);
    GivenAnswer answer;
    answer.sent = true;
    answer.items = {{"result", ReceivedItem::Kind::integer, 1, {}, 0}, {"pin", ReceivedItem::Kind::secret, 0, {}, 4}};
    EXPECT_EQ(DescribeAsText(7, request, answer, true),
              "[7] 16 GetPinCache, 16 bytes\n"
              "    number = 1\n"
              "    card = \"c\"\n"
              "    000000  01 04 00 00 00 01 00 00 00 02 02 00 00 00 63 00  ..............c.\n"
              "  answered with status 0, result = 1, pin = (secret, 4 bytes)\n");
    EXPECT_EQ(DescribeAsJson(7, request, answer, true),
              R"({"number":7,"type":16,"name":"GetPinCache","status":0,"bodyLength":16,"wellFormed":true,)"
              R"("items":[{"name":"number","integer":1},{"name":"card","text":"c"}],"body":"01040000000100000002020000006300",)"
              R"("answer":{"status":0,"items":[{"name":"result","integer":1},{"name":"pin","secretLength":4}]}})"
              "\n");
    EXPECT_EQ(DescribeLostAnswer(7, false), "[7] the client did not take the answer\n");
    EXPECT_EQ(DescribeLostAnswer(7, true), "{\"number\":7,\"answerLost\":true}\n");
}

} // namespace
