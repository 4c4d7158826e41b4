#include "deflate/bit_input.h"
#include "deflate/block_builder.h"
#include "deflate/code_lengths_text.h"
#include "deflate/huffman.h"
#include "tests/deflate/deflate_data.h"
#include "tests/support/captured_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <new>

using namespace ccrypto;

namespace {

using std::string_literals::operator""s;

struct Sample {
    const char* name;
    std::string plain;
};

std::vector<Sample> Samples()
{
    std::string mixed = Prose(70000) + Noise(70000) + std::string(70000, 'z') + Prose(70000);
    std::string farApart = Noise(32768 - 266, 7);
    farApart += farApart + farApart;
    return {
        {"empty", ""},
        {"one byte", "x"},
        {"three bytes", "xyz"},
        {"a match up to the end", "abcdabcdabcd"},
        {"one match", std::string(260, 'q')},
        {"all equal", std::string(300000, 'e')},
        {"noise", Noise(150000)},
        {"prose", Prose(300000)},
        {"prose, noise, a run, prose", std::move(mixed)},
        {"as far apart as matches go", std::move(farApart)},
        {"one window", Prose(65536)},
        {"one window less the lookahead", Prose(65536 - 262)},
    };
}

TEST(Deflate, EveryLevelComesBack)
{
    for (const Sample& sample : Samples()) {
        std::size_t before = SIZE_MAX;
        for (int level = CDeflateStream::fastest; level <= CDeflateStream::best; ++level) {
            SCOPED_TRACE(testing::Message() << sample.name << ", level " << level);
            const std::string packed = Packed(sample.plain, DeflateFormat::gzip, level);
            const Outcome outcome = Unpacked(packed, DeflateFormat::gzip, SIZE_MAX, SIZE_MAX, {.maxRatio = 0});
            ASSERT_TRUE(outcome.good) << outcome.reason;
            ASSERT_TRUE(outcome.output == sample.plain);
            EXPECT_LE(packed.size(), sample.plain.size() + 5 * (sample.plain.size() / 16384 + 1) + 18);
            // A level that tries harder may lose a little on its greedier neighbour, never much.
            EXPECT_LE(static_cast<double>(packed.size()), static_cast<double>(before) * 1.02 + 8);
            before = packed.size();
        }
    }
}

TEST(Deflate, PacksWhatCanBePacked)
{
    // As other packers do, or better.
    EXPECT_LT(Packed(std::string(300000, 'e'), DeflateFormat::raw, 6).size(), 330U);
    EXPECT_LT(Packed(Noise(1000) + Noise(1000), DeflateFormat::raw, 6).size(), 1075U);
    EXPECT_EQ(Packed("", DeflateFormat::raw, 6), std::string("\x03\x00", 2));
    EXPECT_LT(Packed("abc", DeflateFormat::raw, 6).size(), 6U);
}

TEST(Deflate, TheSplitOfTheInputChangesNothing)
{
    const std::string small = "the card, the reader, the card and the reader of the card";
    for (const int level : {1, 6}) {
        const std::string whole = Packed(small, DeflateFormat::gzip, level);
        for (std::size_t piece = 1; piece < small.size(); ++piece)
            ASSERT_EQ(Packed(small, DeflateFormat::gzip, level, piece), whole);
        const std::string large = Prose(100000) + Noise(50000) + Prose(100000);
        const std::string largeWhole = Packed(large, DeflateFormat::gzip, level);
        for (const std::size_t piece : {std::size_t{1}, std::size_t{4099}, std::size_t{65536}, std::size_t{70001}})
            ASSERT_TRUE(Packed(large, DeflateFormat::gzip, level, piece) == largeWhole) << piece;
    }
}

TEST(Deflate, RefusesWrongUse)
{
    element output("kept");
    for (const int level : {0, 10, -1})
        EXPECT_FALSE(CDeflateStream::Deflate(BytesOf("x"), DeflateFormat::raw, output, level));
    EXPECT_EQ(output.view(), "kept");

    CDeflateStream stream;
    EXPECT_FALSE(stream.Write(BytesOf("x")) || stream.Finish());
    EXPECT_STREQ(stream.reason(), "Nothing was started");
    std::string text;
    for (const DeflateFormat format : {DeflateFormat::raw, DeflateFormat::gzip}) {
        ASSERT_TRUE(stream.StartDeflate(format, AppendTo(text), 6) && stream.Finish() && stream.Finish());
        EXPECT_FALSE(stream.Write(BytesOf("\x1F")));
        EXPECT_STREQ(stream.reason(), "The data has ended already");
        stream.StartInflate(format, AppendTo(text));
        ASSERT_TRUE(stream.Write(BytesOf(Packed("", format, 6))) && stream.Finish() && stream.Finish());
        EXPECT_FALSE(stream.Write(BytesOf("\x1F")) || stream.Finish());
        EXPECT_STREQ(stream.reason(), "The data has ended already");
    }

    ASSERT_TRUE(stream.StartDeflate(
        DeflateFormat::raw, [](auto) { return false; }, 6));
    EXPECT_FALSE(stream.Write(BytesOf(Noise(200000))));
    EXPECT_STREQ(stream.reason(), "The receiver of the output stopped");
}

TEST(Deflate, SaysWhenItDoesNotFit)
{
    const CapturedLog log;
    // Stored, they take five bytes more.
    for (const std::size_t length : {91U, 92U}) {
        element output("kept");
        CDeflateStream stream;
        ASSERT_TRUE(stream.StartDeflate(DeflateFormat::raw, CDeflateStream::AppendTo(output, 100), 6));
        EXPECT_EQ(stream.Write(BytesOf(Noise(length))) && stream.Finish(), length == 91);
        EXPECT_EQ(output.length(), length == 91 ? 100U : 4U);
    }
    EXPECT_THAT(log.texts(), testing::Contains("ERROR: The output would exceed 100 bytes"));
}

struct MisuseCase {
    const char* name;
    std::function<bool(CDeflateStream&)> call;
};

TEST(Deflate, ASinkMayNotUseItsStream)
{
    const MisuseCase cases[] = {
        {"starts to unpack", [](CDeflateStream& stream) { return stream.StartInflate(DeflateFormat::gzip, {}), true; }},
        {"starts to pack", [](CDeflateStream& stream) { return !stream.StartDeflate(DeflateFormat::gzip, {}); }},
        {"writes", [](CDeflateStream& stream) { return !stream.Write(BytesOf("x")); }},
        {"finishes", [](CDeflateStream& stream) { return !stream.Finish(); }},
    };
    const std::string packed = Packed("text", DeflateFormat::raw, 6);
    for (const MisuseCase& each : cases) {
        for (const bool packs : {false, true}) {
            SCOPED_TRACE(testing::Message() << each.name << (packs ? ", packing" : ", unpacking"));
            CDeflateStream stream;
            const DeflateSink sink = [&](auto) { return each.call(stream); };
            if (packs)
                ASSERT_TRUE(stream.StartDeflate(DeflateFormat::raw, sink));
            else
                stream.StartInflate(DeflateFormat::raw, sink);
            EXPECT_FALSE(stream.Write(BytesOf(packed)) && stream.Finish());
            EXPECT_STREQ(stream.reason(), "The receiver of the output used the stream that called it");
            EXPECT_FALSE(stream.Finish());
            stream.StartInflate(DeflateFormat::raw, [](auto) { return true; });
            EXPECT_TRUE(stream.Write(BytesOf(packed)) && stream.Finish());
        }
    }
}

/// What stays in the storage of an object: while it lives, and after its end.
struct Traces {
    std::string during;
    std::string after;
};

template <typename Object, typename Use, typename... Arguments>
Traces TracesOf(Use use, Arguments&&... arguments)
{
    std::vector<std::uint64_t> storage(sizeof(Object) / sizeof(std::uint64_t) + 1);
    const auto seen = [&] { return std::string(reinterpret_cast<const char*>(storage.data()), sizeof(Object)); };
    auto* const object = new (storage.data()) Object(std::forward<Arguments>(arguments)...);
    use(*object);
    Traces traces{.during = seen(), .after = {}};
    // Through a pointer that is opaque to the optimiser, which takes the content of a destroyed object as dead.
    void (*volatile end)(Object*) = [](Object* ended) { ended->~Object(); };
    end(object);
    traces.after = seen();
    return traces;
}

TEST(DeflateParts, LeaveNothingOfTheData)
{
    const DeflateSink sink = [](auto) { return true; };
    BitOutput output(sink);
    const std::uint8_t window[1] = {};
    const auto read = [](BitInput& bits) {
        bits.give(BytesOf("ZZZZZZZ"));
        bits.refill();
    };
    const auto count = [](auto& counts) {
        for (int times = 0; times < 'Z'; ++times) {
            if constexpr (requires { counts.count(deflate::Symbol()); })
                counts.count(deflate::Symbol::Literal('a'));
            else
                counts.add(deflate::Symbol::Literal('a'));
        }
    };
    const auto build = [](CCryptoHuffman& table) {
        std::vector<std::uint8_t> lengths('Z' + 1);
        lengths['Z'] = 1;
        table.Build(lengths);
    };
    const std::vector<std::uint8_t> lengths(286, 'Z' % 16);
    const struct {
        const char* name;
        std::string held;
        Traces traces;
    } cases[] = {
        {"bits read", "ZZZZZZZ", TracesOf<BitInput>(read)},
        {"bits written", "Z\0\0\0\0\0\0\0\7"s, TracesOf<BitOutput>([](BitOutput& bits) { bits.put('Z', 7); }, sink)},
        {"how often", "Z\0\0\0"s, TracesOf<deflate::Frequencies>(count)},
        {"how often in a block", "Z\0\0\0\0\0\0\0\0\0\0\0"s, TracesOf<deflate::BlockBuilder>(count, window, output)},
        {"codes", "\x01\x81Z\0"s, TracesOf<CCryptoHuffman>(build, CCryptoHuffman::Alphabet::literals)},
        {"lengths of codes", "\x0A\0\x10\3"s,
         TracesOf<deflate::CodeLengthsText>([](auto&) {}, std::span(lengths), std::span(lengths).first(30))},
    };
    for (const auto& each : cases) {
        EXPECT_NE(each.traces.during.find(each.held), std::string::npos) << each.name;
        EXPECT_EQ(each.traces.after.find(each.held), std::string::npos) << each.name;
    }
}

struct WeightsCase {
    const char* name;
    std::vector<std::uint32_t> frequencies;
    std::uint32_t longest;
    std::vector<std::uint8_t> lengths;
};

TEST(HuffmanLengths, AreThoseOfTheBestCode)
{
    const WeightsCase cases[] = {
        {"none", {0, 0, 0}, 15, {0, 0, 0}},
        {"one, and a second for company", {0, 0, 7}, 15, {1, 0, 1}},
        {"the first alone", {7, 0}, 15, {1, 1}},
        {"equal weights", {5, 5, 5, 5}, 15, {2, 2, 2, 2}},
        {"doubling weights", {1, 1, 2, 4, 8, 16}, 15, {5, 5, 4, 3, 2, 1}},
        {"the same, limited", {1, 1, 2, 4, 8, 16}, 3, {3, 3, 3, 3, 2, 2}},
        {"as many as the limit holds", {1, 2, 4, 8, 16, 32, 64, 128}, 3, {3, 3, 3, 3, 3, 3, 3, 3}},
    };
    for (const WeightsCase& each : cases) {
        SCOPED_TRACE(each.name);
        std::vector<std::uint8_t> lengths(each.frequencies.size(), 9);
        MakeCodeLengths(each.frequencies, each.longest, lengths);
        EXPECT_EQ(lengths, each.lengths);
    }
}

TEST(HuffmanLengths, AreCompleteAndDecodeBack)
{
    // Weights that grow like Fibonacci's numbers make the deepest tree there is.
    std::vector<std::uint32_t> frequencies(286);
    for (std::size_t symbol = 0; symbol < frequencies.size(); ++symbol)
        frequencies[symbol] = symbol < 2 ? 1 : symbol < 40 ? frequencies[symbol - 1] + frequencies[symbol - 2] : 3;
    std::vector<std::uint8_t> lengths(frequencies.size());
    std::vector<std::uint16_t> words(frequencies.size());
    MakeCodeLengths(frequencies, 15, lengths);
    MakeCodeWords(lengths, words);
    CCryptoHuffman table(CCryptoHuffman::Alphabet::literals);
    ASSERT_EQ(table.Build(lengths), CCryptoHuffman::Fault::none);
    for (std::size_t symbol = 0; symbol < 256; ++symbol) {
        const CCryptoHuffman::Entry entry = table.find(words[symbol] | 0xFFFFULL << lengths[symbol]);
        EXPECT_TRUE(entry.isLiteral());
        EXPECT_EQ(entry.value(), symbol);
        EXPECT_EQ(entry.allBits(), lengths[symbol]);
    }
}

} // namespace
