#include "tests/ipc/wire_bytes.h"
#include "tests/support/captured_log.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace ccrypto;

using namespace std::string_literals;
using wire::Message;

namespace {

struct BuildCase {
    const char* name;
    std::function<void(Message&)> build;
    std::string body;
};

PipeValue IntegerValue(std::uint32_t integer)
{
    return {PipeValue::Kind::integer, integer, nullptr};
}

PipeValue TextValue(const char* text)
{
    return {PipeValue::Kind::text, 0, text};
}

TEST(PipeRequestData, ItemsHaveTheirBytes)
{
    const PipeValue seven = IntegerValue(7);
    const PipeValue ab = TextValue("ab");
    const PipeValue noText = TextValue(nullptr);
    const BuildCase cases[] = {
        {"nothing", [](Message&) {}, ""},
        {"integer", [](Message& m) { m.AddInt(0x01020304); }, "\x01\x04\0\0\0\x04\x03\x02\x01"s},
        {"text", [](Message& m) { m.AddData("ab"); }, "\x02\x03\0\0\0ab\0"s},
        {"empty text", [](Message& m) { m.AddData(""); }, "\x02\x01\0\0\0\0"s},
        {"null text", [](Message& m) { m.AddData(nullptr); }, "\x02\0\0\0\0"s},
        {"bytes", [](Message& m) { m.AddData("a\0b", 3); }, "\x02\x03\0\0\0a\0b"s},
        {"no bytes", [](Message& m) { m.AddData("a", 0); }, "\x02\0\0\0\0"s},
        {"null bytes", [](Message& m) { m.AddData(nullptr, 9); }, "\x02\0\0\0\0"s},
        {"integer value", [&](Message& m) { m.AddValue(&seven); }, "\x03\x05\0\0\0\x01\x07\0\0\0"s},
        {"text value", [&](Message& m) { m.AddValue(&ab); }, "\x03\x04\0\0\0\x02"s + "ab\0"s},
        {"text value without text", [&](Message& m) { m.AddValue(&noText); }, "\x03\0\0\0\0"s},
        {"null value", [](Message& m) { m.AddValue(nullptr); }, "\x03\0\0\0\0"s},
        {"one after the other", [](Message& m) { m.AddInt(1), m.AddData("x"), m.AddInt(2); },
         wire::Int(1) + wire::Text("x") + wire::Int(2)},
    };
    for (const BuildCase& test : cases) {
        SCOPED_TRACE(test.name);
        Message message(22);
        test.build(message);
        EXPECT_EQ(message.Sent(), wire::Header(22, 0, static_cast<std::uint32_t>(test.body.size())) + test.body);
    }
}

TEST(PipeRequestData, HasOneFixedPart)
{
    Message message(5);
    EXPECT_NE(message.GetPart(0), nullptr);
    EXPECT_EQ(message.GetPartSize(0), 12U);
    EXPECT_EQ(message.GetPart(1), nullptr);
    EXPECT_EQ(message.GetPartSize(1), 0U);
}

TEST(PipeRequestData, StorageGrowsInSteps)
{
    const std::string bytes(300, 'x');
    Message message;
    for (int item = 0; item < 11; ++item)
        message.AddInt(0);
    EXPECT_EQ(message.capacity(), 100U); // 99 bytes used
    message.AddInt(0);
    EXPECT_EQ(message.capacity(), 200U); // 108
    message.AddData(bytes.data(), 87);
    EXPECT_EQ(message.capacity(), 200U); // 200
    message.AddData(bytes.data(), 95);
    EXPECT_EQ(message.capacity(), 300U); // an item of 100
    message.AddData(bytes.data(), 300);
    EXPECT_EQ(message.capacity(), 605U); // an item of 305
    EXPECT_EQ(message.position(), 605U);
}

TEST(PipeRequestData, BodyIsBounded)
{
    const std::string bytes(CCryptoPipeRequestData::maximumBody, 'x');
    constexpr std::uint32_t most = CCryptoPipeRequestData::maximumBody - 5;
    Message message;
    EXPECT_FALSE(message.AddData(bytes.data(), most + 1));
    EXPECT_FALSE(message.AddData(bytes.data(), CCryptoPipeRequestData::textLength - 1));
    EXPECT_FALSE(message.isComplete());
    EXPECT_EQ(message.position(), 0U);

    message.StartMessage();
    EXPECT_TRUE(message.isComplete());
    EXPECT_TRUE(message.AddData(bytes.data(), most));
    EXPECT_FALSE(message.AddInt(1));
    EXPECT_FALSE(message.AddValue(nullptr));
    EXPECT_EQ(message.position(), CCryptoPipeRequestData::maximumBody);

    EXPECT_TRUE(message.Receive(bytes));
    EXPECT_FALSE(message.Announce(CCryptoPipeRequestData::maximumBody + 1));
    EXPECT_FALSE(message.Announce(0xFFFFFFFF));
    EXPECT_EQ(message.capacity(), 0U);
    EXPECT_EQ(message.position(), 0U);
}

/// Reads with one letter an item: i integer, s text, d bytes, v value, a capital for the last; says what came of it.
std::string ReadAll(Message& message, std::string_view letters)
{
    std::string told;
    for (const char letter : letters) {
        const bool last = letter < 'a';
        std::uint32_t number = 0;
        const char* text = nullptr;
        const std::uint8_t* data = nullptr;
        std::unique_ptr<PipeValue> value;
        switch (last ? letter + ('a' - 'A') : letter) {
        case 'i':
            told += message.GetInt(number, last) ? std::to_string(number) : "no";
            break;
        case 's':
            told += message.GetString(text, last) ? (text != nullptr ? text : "null") : "no";
            break;
        case 'd':
            told += message.GetData(data, number, last)
                        ? (data != nullptr ? std::string(reinterpret_cast<const char*>(data), number) : "null")
                        : "no";
            EXPECT_EQ(data == nullptr, number == 0);
            break;
        default:
            if (!message.GetValue(value, last))
                told += "no";
            else if (value == nullptr)
                told += "null";
            else
                told += value->kind == PipeValue::Kind::integer ? std::to_string(value->integer) : value->text;
        }
        told += ' ';
    }
    return told + std::to_string(message.status()) + "@" + std::to_string(message.position());
}

struct ReadCase {
    const char* name;
    std::string body;
    const char* letters;
    const char* told; ///< one word an item, the status, the cursor
};

const ReadCase readCases[] = {
    {"integer", wire::Int(7), "I", "7 0@0"},
    {"integer, more to come", wire::Int(7) + wire::Int(8), "iI", "7 8 0@0"},
    {"cursor stays for more", wire::Int(7), "i", "7 0@9"},
    {"text", wire::Text("ab"), "S", "ab 0@0"},
    {"text ends at its first zero", wire::Data("a\0b\0"s), "S", "a 0@0"},
    {"empty item as text", wire::Data(""), "S", "null 0@0"},
    {"bytes", wire::Data("a\x01z"), "D", "a\x01z 0@0"},
    {"empty item as bytes", wire::Data(""), "D", "null 0@0"},
    {"integer value", wire::Item(3, "\x01\x07\0\0\0"s), "V", "7 0@0"},
    {"text value", wire::Item(3, "\x02"s + "ab\0"s), "V", "ab 0@0"},
    {"any other kind is a text", wire::Item(3, "\x63"s + "ab\0"s), "V", "ab 0@0"},
    {"no value", wire::Item(3, ""), "V", "null 0@0"},
    {"all in one", wire::Int(1) + wire::Text("x") + wire::Data("yz") + wire::Item(3, "\x01\x02\0\0\0"s), "isdV", "1 x yz 2 0@0"},

    {"more than expected", wire::Int(7) + wire::Int(8), "I", "no -1@0"},
    {"a failed message stays failed", wire::Int(7) + wire::Int(8), "Iiis", "no no no no -1@0"},
    {"nothing there, integer", "", "I", "no -1@0"},
    {"nothing there, text", "", "S", "no -1@0"},
    {"end of data keeps the cursor for integers", wire::Int(7), "iI", "7 no -1@9"},
    {"end of data resets it for others", wire::Int(7), "iS", "7 no -1@0"},
    {"text read as integer", wire::Text("ab"), "I", "no -1@1"},
    {"integer read as text", wire::Int(7), "S", "no -1@0"},
    {"value read as bytes", wire::Item(3, ""), "D", "no -1@0"},
    {"integer without payload", wire::Item(1, ""), "I", "no 0@5"},
    {"then the next", wire::Item(1, "") + wire::Int(7), "iI", "no 7 0@0"},

    {"integer cut short", wire::Item(1, "abc"), "I", "no -1@8"},
    {"short integer reads on into the body", wire::Item(1, "\x07") + wire::Data(""), "iD", "519 null 0@0"},
    {"short integer with too little after it", wire::Item(1, "\x07") + "ab", "I", "no -1@6"},
    {"integer with bytes to spare", wire::Item(1, "\x07\0\0\0z"s), "I", "7 0@0"},
    {"tag alone", "\x02"s, "S", "no -1@0"},
    {"length cut short", "\x02\x01\0\0"s, "S", "no -1@0"},
    {"length past the end", "\x02\x03\0\0\0ab"s, "D", "no -1@0"},
    {"greatest length", "\x02\xff\xff\xff\xff"s + "ab"s, "D", "no -1@0"},
    {"length that wraps the cursor", "\x02\xfb\xff\xff\xff"s + "ab"s, "d", "no -1@0"},
    {"integer past the end", "\x01\x04\0\0\0abc"s, "i", "no -1@1"},
    {"text without its zero", wire::Data("ab"), "S", "no -1@0"},
    {"text that ends in the next item", wire::Data("ab") + wire::Int(0), "sI", "ab\x01\x04 0 0@0"},
    {"integer value cut short", wire::Item(3, "\x01\x07\0\0"s), "V", "no -1@0"},
    {"kind without value", wire::Item(3, "\x01"s), "V", "no -1@0"},
    {"text value without text", wire::Item(3, "\x02"s), "V", "no -1@0"},
    {"text value without its zero", wire::Item(3, "\x02"s + "ab"), "V", "no -1@0"},
    {"text value that ends in the next item", wire::Item(3, "\x02"s) + wire::Int(0), "vI", "\x01\x04 0 0@0"},
    {"short integer value reads on into the body", wire::Item(3, "\x01\x07"s) + wire::Data(""), "vD", "519 null 0@0"},
    {"short integer value with too little after it", wire::Item(3, "\x01\x07"s) + "ab", "V", "no -1@0"},
};

TEST(PipeRequestData, ReadersTakeWhatIsThereAndNothingElse)
{
    for (const ReadCase& test : readCases) {
        SCOPED_TRACE(test.name);
        Message message;
        ASSERT_TRUE(message.Receive(test.body));
        EXPECT_EQ(ReadAll(message, test.letters), test.told);
    }
}

TEST(PipeRequestData, LogSaysWhyAReaderFailed)
{
    const struct {
        std::string body;
        const char* letters;
        const char* line;
    } cases[] = {{"", "I", "CCryptoPipe::GetDataPtr: No more data"},
                 {wire::Data("ab"), "S", "CCryptoPipe::GetDataPtr: No more data"},
                 {"\x02\xff\xff\xff\xff"s, "D", "CCryptoPipe::GetDataPtr: No more data"},
                 {wire::Text("ab"), "I", "CCryptoPipe::GetDataPtr: Unexpected data type"},
                 {wire::Int(7) + wire::Int(8), "I", "CCryptoPipe::CheckStatus: Unhandled data"}};
    for (const auto& test : cases) {
        Message message;
        ASSERT_TRUE(message.Receive(test.body));
        const CapturedLog log;
        ReadAll(message, test.letters);
        EXPECT_EQ(log.texts(), std::vector<std::string>{test.line});
    }
}

TEST(PipeRequestData, ReadsNothingFromAFailedResponse)
{
    Message message;
    ASSERT_TRUE(message.Receive(wire::Int(7)));
    message.setStatus(-3);
    EXPECT_EQ(ReadAll(message, "I"), "no -3@0");
}

TEST(PipeRequestData, IsFilledAgainAfterAReply)
{
    Message message(4);
    message.AddInt(1);
    ASSERT_TRUE(message.Receive(wire::Text("reply")));
    EXPECT_EQ(message.NextTag(), 2);
    EXPECT_EQ(ReadAll(message, "s"), "reply 0@11");
    EXPECT_EQ(message.NextTag(), 0);

    message.StartMessage(-1);
    message.AddInt(2);
    message.AddData("a longer text than before");
    const std::string body = wire::Int(2) + wire::Text("a longer text than before");
    EXPECT_EQ(message.Sent(), wire::Header(4, -1, static_cast<std::uint32_t>(body.size())) + body);

    // A reply without a body leaves nothing of the old one to read.
    ASSERT_TRUE(message.Receive(""));
    EXPECT_EQ(ReadAll(message, "i"), "no -1@0");
    message.StartMessage();
    message.AddInt(3);
    EXPECT_EQ(message.Sent(), wire::Header(4, 0, 9) + wire::Int(3));
}

} // namespace
