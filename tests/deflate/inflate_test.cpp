#include "tests/deflate/deflate_data.h"
#include "tests/support/captured_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

using std::string_view_literals::operator""sv;

std::string Squares()
{
    std::string text;
    for (int number = 0; number < 40; ++number)
        text += std::to_string(number) + " squared is " + std::to_string(number * number) + ". ";
    return text;
}

constexpr std::string_view packedSquares =
    "\x5D\x92\x31\x0E\x43\x31\x08\x43\xAF\xC2\x09\xA2\x00\x09\x49\x8E\x53\xA9\x1D\x3A\xB6\x55\xEF\x5F\xFC\x27\xDC\x31\x08\xD9"
    "\xCF\x26\x5D\x3E\xAF\xEF\xED\xFD\xB8\xCB\xF3\x23\xBD\x89\xD6\xB7\x36\xB1\xFA\x1E\x4D\xBC\xBE\x4F\x93\x41\xFB\xD1\x64\xD6"
    "\x81\xCD\x26\x51\x07\x9E\x1B\x8B\x24\x53\x63\xD7\x41\xA4\xC9\xA9\x83\x9D\x14\xDA\xC9\xA6\x03\x94\x49\x0D\x5B\x04\xAB\x23"
    "\x95\xD4\x99\x2F\xDD\x94\x91\x4F\x12\x29\x43\x83\x5A\x83\x73\x60\x8B\xC0\x6D\x43\x8B\xD0\xDD\xE0\x78\x38\x2F\x3A\x24\xFA"
    "\x01\x7A\x23\xFA\x31\xB0\xC5\x55\xEF\xD4\x32\xA2\x9F\x96\x8E\x46\xF4\x73\x25\x97\x11\x7D\x80\xDE\x88\x3E\xAE\x2D\xA2\x5F"
    "\x97\x16\xD1\xAF\xCB\x91\xAB\x07\x97\x13\xFD\x01\xBD\x13\xFD\x41\x46\xE7\xEE\x3B\xAA\x70\x2E\xBF\xA3\x31\xE7\xF6\x15\xC5"
    "\xFA\xE4\x53\x22\x81\x07\xCF\x70\x26\xA7\x08\xEA\xB8\xA6\xEF\xBF\x9B\xC3\x97\x42\xE8\xC4\xDF\xF8\x01"sv;

/// Fixed codes: 'a' 10010001, length 3 0000001, end 0000000.
const std::string fixedBlock = "1 10";
const std::string letterA = "10010001";
const std::string length3 = "0000001";

struct InflateCase {
    const char* name;
    std::string packed;
    std::string plain;
};

TEST(Inflate, UnpacksInAnySplit)
{
    // A code of 15 bits, which goes past every primary table: 1, 2, ... 14 bits and two of 15.
    std::vector<int> deep = Lengths({{256, 15}});
    for (std::size_t symbol = 0; symbol < 15; ++symbol)
        deep['a' + symbol] = static_cast<int>(symbol) + 1;
    const std::string ones(14, '1');
    const InflateCase cases[] = {
        {"stored", std::string("\x01\x06\x00\xF9\xFFstored"sv), "stored"},
        {"no bytes stored", std::string("\x01\x00\x00\xFF\xFF"sv), ""},
        {"fixed", std::string("\x4B\x4C\x4A\x4E\x44\x45\x00"sv), "abcabcabcabcabcabc"},
        {"dynamic", std::string(packedSquares), Squares()},
        {"three blocks", FromBits("0 10" + letterA + "0000000 0 10 0000000" + fixedBlock + length3 + "00000 0000000"), "aaaa"},
        {"codes of 15 bits", FromBits(CodesOf(deep, {0}) + "0 10" + ones + "0 " + ones + "1"), "abo"},
        {"one distance code", FromBits(CodesOf(Lengths({{'a', 1}, {256, 2}, {257, 2}}, 258), {1}) + "0 11 0 10"), "aaaa"},
        {"no literal", FromBits(CodesOf(Lengths({{256, 1}}), {0}) + "0"), ""},
        {"the longest match", FromBits(fixedBlock + letterA + "11000101 00000 0000000"), std::string(259, 'a')},
    };
    for (const InflateCase& each : cases) {
        SCOPED_TRACE(each.name);
        for (std::size_t first = 1; first <= each.packed.size(); ++first) {
            for (const std::size_t piece : {std::size_t{1}, SIZE_MAX}) {
                const Outcome outcome = Unpacked(each.packed, DeflateFormat::raw, piece, first);
                ASSERT_EQ(outcome.reason, "");
                ASSERT_TRUE(outcome.good);
                ASSERT_EQ(outcome.output, each.plain);
            }
        }
    }
}

TEST(Inflate, NamesWhatIsMalformed)
{
    const std::vector<int> twoLiterals = Lengths({{'a', 1}, {256, 1}});
    const std::string dynamic = "1 01";
    const std::string threeCodeLengths = Number(0, 5) + Number(0, 5); // 257 literals, 1 distance
    // Code length codes 0 (word 0) and 16, or 18 (word 1).
    const std::string zeroAndSixteen = dynamic + threeCodeLengths + Number(0, 4) + "100 000 000 100";
    const std::string zeroAndEighteen = dynamic + threeCodeLengths + Number(0, 4) + "000 000 100 100";
    std::string oneBits = dynamic + threeCodeLengths + Number(15, 4);
    for (int code = 0; code < 19; ++code)
        oneBits += "100";

    const FaultCase cases[] = {
        {"A block of the reserved type", FromBits("1 11")},
        {"The length of a stored block and its complement disagree", std::string("\x01\x05\x00\xFB\xFFhello"sv)},
        {"More than 286 literal and length codes", FromBits(dynamic + Number(30, 5) + Number(0, 5) + Number(0, 4))},
        {"More than 30 distance codes", FromBits(dynamic + Number(0, 5) + Number(30, 5) + Number(0, 4))},
        {"An over-subscribed set of code length codes", FromBits(oneBits)},
        {"An incomplete set of code length codes", FromBits(dynamic + threeCodeLengths + Number(0, 4) + "100 000 000 000")},
        {"An incomplete set of code length codes", FromBits(dynamic + threeCodeLengths + Number(0, 4) + "000 000 000 000")},
        {"A code length is repeated before there is one", FromBits(zeroAndSixteen + "1 00")},
        {"A code length is repeated beyond the last code", FromBits(zeroAndEighteen + "1" + Number(127, 7) + "1" + Number(127, 7))},
        {"A block without a code for its end", FromBits(zeroAndEighteen + "1" + Number(127, 7) + "1" + Number(109, 7))},
        {"An over-subscribed set of literal and length codes", FromBits(CodesOf(Lengths({{0, 1}, {1, 1}, {256, 1}}), {0}))},
        {"An incomplete set of literal and length codes", FromBits(CodesOf(Lengths({{0, 1}, {256, 2}}), {0}))},
        {"An incomplete set of literal and length codes", FromBits(CodesOf(Lengths({{256, 2}}), {0}))},
        {"An over-subscribed set of distance codes", FromBits(CodesOf(twoLiterals, {1, 1, 1}))},
        {"An incomplete set of distance codes", FromBits(CodesOf(twoLiterals, {2, 2}))},
        {"An incomplete set of distance codes", FromBits(CodesOf(twoLiterals, {2}))},
        {"A code that is not a literal or length", FromBits(fixedBlock + "11000110")},
        {"A code that is not a literal or length", FromBits(CodesOf(Lengths({{256, 1}}), {0}) + "1")},
        {"A code that is not a distance", FromBits(fixedBlock + letterA + length3 + "11110")},
        {"A code that is not a distance", FromBits(CodesOf(Lengths({{'a', 1}, {256, 2}, {257, 2}}, 258), {0}) + "0 11 0")},
        {"A distance beyond the start of the data", FromBits(fixedBlock + length3 + "00000")},
        {"A distance beyond the start of the data", FromBits(fixedBlock + letterA + length3 + "00001")},
        {"Bytes after the end of the data", FromBits(fixedBlock + "0000000") + "x"},
        {"The data ends before a block", ""},
        {"The data ends inside a stored block", std::string("\x01\x06\x00\xF9"sv)},
        {"The data ends inside a stored block", std::string("\x01\x06\x00\xF9\xFFstore"sv)},
        {"The data ends inside the codes of a block", std::string(packedSquares.substr(0, 1))},
        {"The data ends inside the codes of a block", std::string(packedSquares.substr(0, 20))},
        {"The data ends inside a compressed block", std::string(packedSquares.substr(0, 100))},
    };
    for (const FaultCase& each : cases) {
        const bool isCut = std::string_view(each.reason).starts_with("The data ends");
        // In one piece, byte by byte, and with so much after it that the fast loop meets the fault.
        const Outcome whole = Unpacked(each.packed, DeflateFormat::raw);
        EXPECT_EQ(whole.reason, each.reason);
        EXPECT_EQ(Unpacked(each.packed, DeflateFormat::raw, 1), whole) << each.reason;
        if (!isCut) {
            EXPECT_EQ(Unpacked(each.packed + std::string(64, '\0'), DeflateFormat::raw), whole) << each.reason;
        }
    }
}

TEST(Inflate, RefusesEveryInputCutShort)
{
    for (std::size_t length = 0; length < packedSquares.size(); ++length) {
        const Outcome outcome = Unpacked(packedSquares.substr(0, length), DeflateFormat::raw);
        EXPECT_FALSE(outcome.good);
        EXPECT_TRUE(std::string_view(outcome.reason).starts_with("The data ends")) << outcome.reason;
        EXPECT_TRUE(Squares().starts_with(outcome.output));
    }
}

TEST(Inflate, CopiesEveryDistanceAndLength)
{
    for (std::size_t distance = 1; distance <= 40; ++distance) {
        std::string plain = Noise(300);
        for (std::size_t length = 3; length <= 258; ++length) {
            for (std::size_t index = 0; index < length; ++index)
                plain += plain[plain.size() - distance];
            // A byte that ends the match, and bytes that must not suffer from it.
            plain += static_cast<char>(~plain[plain.size() - distance]);
            plain += Noise(distance, static_cast<std::uint32_t>(length));
        }
        ASSERT_TRUE(Unpacked(Packed(plain, DeflateFormat::raw, 6), DeflateFormat::raw).output == plain) << distance;
    }
}

struct LimitCase {
    const char* name;
    InflateLimits limits;
    std::string plain;
    const char* reason;
};

TEST(Inflate, HoldsOutputToItsLimits)
{
    constexpr const char* tooLarge = "The output exceeds the limit of its size";
    constexpr const char* tooDense = "The output exceeds the limit of its ratio to the input";
    const auto zeros = [](std::size_t count) { return std::string(count, '\0'); };
    const LimitCase cases[] = {
        {"exactly the size", {.maxOutput = 100000}, zeros(100000), ""},
        {"a byte more", {.maxOutput = 99999}, zeros(100000), tooLarge},
        {"stored, exactly the size", {.maxOutput = 100000}, Noise(100000), ""},
        {"stored, a byte more", {.maxOutput = 99999}, Noise(100000), tooLarge},
        {"the size at the end of a window", {.maxOutput = 98304}, zeros(98305), tooLarge},
        {"dense, but small", {}, zeros(2000000), ""},
        {"dense, up to what is free", {}, zeros(1 << 24), ""},
        {"dense and large", {}, zeros(18 << 20), tooDense},
        {"a ratio that fits", {.maxRatio = 1032, .freeOutput = 1 << 20}, zeros(3 << 20), ""},
        {"dense at first", {.freeOutput = 1 << 20}, zeros(1060000) + Noise(12000), ""},
        {"dense for too long", {.freeOutput = 1 << 20}, zeros(1300000) + Noise(12000), tooDense},
        {"no room free of the ratio", {.maxRatio = 10, .freeOutput = 0}, zeros(100000), tooDense},
        {"no limits", {.maxOutput = 0, .maxRatio = 0, .freeOutput = 1 << 20}, zeros(3 << 20), ""},
    };
    for (const LimitCase& each : cases) {
        SCOPED_TRACE(each.name);
        const std::string packed = Packed(each.plain, DeflateFormat::gzip, 6);
        const Outcome whole = Unpacked(packed, DeflateFormat::gzip, SIZE_MAX, SIZE_MAX, each.limits);
        EXPECT_EQ(whole.reason, each.reason);
        EXPECT_EQ(whole.good, each.reason[0] == '\0');
        EXPECT_EQ(whole.output.size() == each.plain.size(), whole.good);
        EXPECT_TRUE(each.plain.starts_with(whole.output));
        for (const std::size_t piece : {std::size_t{1}, std::size_t{31}})
            EXPECT_TRUE(Unpacked(packed, DeflateFormat::gzip, piece, SIZE_MAX, each.limits) == whole) << piece;
    }
}

TEST(Inflate, AnEndAnywhereMakesTheSameOfEveryCut)
{
    // Wherever the limit of the size falls among stored bytes, literals, matches and the places where the window moves.
    const std::string plain = Noise(70000) + Prose(40000) + std::string(100000, 'r') + Prose(40000);
    const std::string packed = Packed(plain, DeflateFormat::raw, 6);
    for (std::size_t limit = 1; limit < plain.size(); limit += 7919) {
        const InflateLimits limits{.maxOutput = limit};
        const Outcome whole = Unpacked(packed, DeflateFormat::raw, SIZE_MAX, SIZE_MAX, limits);
        ASSERT_EQ(whole.output.size(), limit);
        for (const std::size_t piece : {std::size_t{1}, std::size_t{29}})
            ASSERT_TRUE(Unpacked(packed, DeflateFormat::raw, piece, SIZE_MAX, limits) == whole) << limit << ", " << piece;
    }
}

TEST(Inflate, DeliversPiecesOfBoundedSize)
{
    for (const std::string& plain : {std::string(300000, '\0'), Noise(300000), Prose(300000)}) {
        const std::string packed = Packed(plain, DeflateFormat::raw, 9);
        std::size_t largest = 0;
        CDeflateStream stream;
        stream.StartInflate(DeflateFormat::raw, [&](std::span<const std::uint8_t> piece) {
            largest = std::max(largest, piece.size());
            return true;
        });
        EXPECT_TRUE(stream.Write(BytesOf(packed)) && stream.Finish());
        EXPECT_LE(largest, 96U * 1024);
        EXPECT_GT(largest, 90U * 1024);
    }
}

TEST(Inflate, StopsWithItsReceiver)
{
    const std::string packed = Packed(Noise(300000), DeflateFormat::raw, 1);
    std::size_t calls = 0;
    CDeflateStream stream;
    stream.StartInflate(DeflateFormat::raw, [&](std::span<const std::uint8_t>) { return ++calls < 3; });
    EXPECT_FALSE(stream.Write(BytesOf(packed)));
    EXPECT_FALSE(stream.Write(BytesOf(packed)));
    EXPECT_FALSE(stream.Finish());
    EXPECT_STREQ(stream.reason(), "The receiver of the output stopped");
    EXPECT_EQ(calls, 3U);
}

TEST(Inflate, LogsTheReasonAndKeepsTheOutput)
{
    element output("kept");
    {
        const CapturedLog log;
        EXPECT_FALSE(CDeflateStream::Inflate(BytesOf("\x01\x03\x00\xFC\xFF"
                                                     "abc!"sv),
                                             DeflateFormat::raw, output));
        EXPECT_THAT(log.texts(), testing::Contains("ERROR: Bytes after the end of the data (offset 8)"));
    }
    EXPECT_EQ(output.view(), "kept");
    EXPECT_TRUE(CDeflateStream::Inflate(BytesOf("\x01\x01\x00\xFE\xFF!"sv), DeflateFormat::raw, output));
    EXPECT_EQ(output.view(), "kept!");
}

TEST(Inflate, MayReadFromItsOwnOutput)
{
    const std::string plain = Prose(100000);
    element buffer(plain);
    const std::uint32_t length = buffer.length();
    ASSERT_TRUE(CDeflateStream::Deflate(buffer.bytes(), DeflateFormat::raw, buffer));
    const std::uint32_t packed = buffer.length() - length;
    ASSERT_TRUE(CDeflateStream::Inflate(buffer.bytes().subspan(length), DeflateFormat::raw, buffer));
    EXPECT_TRUE(buffer.view().substr(length + packed) == plain);
}

TEST(Inflate, HoldsWhatGoesIntoMemoryToALowerLimit)
{
    // 270 MiB in 1.5 MB: a size that only what goes through a sink may have by default.
    std::string packed = Packed(Noise(1200000), DeflateFormat::gzip, 1);
    const std::string zeros = Packed(std::string(18 << 20, '\0'), DeflateFormat::gzip, 1);
    for (int member = 0; member < 15; ++member)
        packed += zeros;
    element output;
    const CapturedLog log;
    EXPECT_FALSE(CDeflateStream::Inflate(BytesOf(packed), DeflateFormat::gzip, output));
    EXPECT_THAT(log.texts(), testing::Contains(testing::StartsWith("ERROR: The output exceeds the limit of its size")));
    EXPECT_TRUE(output.isEmpty());
}

} // namespace
