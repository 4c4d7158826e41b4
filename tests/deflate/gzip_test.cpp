#include "tests/deflate/deflate_data.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

using std::string_view_literals::operator""sv;

/// By gzip: "hello, hello, hello\n" in "name.txt", of 13 February 2009.
constexpr std::string_view hello =
    "\x1F\x8B\x08\x08\xD2\x02\x96\x49\x02\xFFname.txt\x00\xCB\x48\xCD\xC9\xC9\xD7\x51\xC8\x40\xA2\xB8"
    "\x00\xE7\x42\x6E\x52\x14\x00\x00\x00"sv;

std::string WithByte(std::string_view bytes, std::size_t position, std::uint8_t byte)
{
    std::string changed(bytes);
    changed[position < bytes.size() ? position : bytes.size() - 1] = static_cast<char>(byte);
    return changed;
}

TEST(Gzip, ReadsAHeader)
{
    CDeflateStream stream;
    std::string output;
    stream.StartInflate(DeflateFormat::gzip, AppendTo(output));
    ASSERT_TRUE(Feed(stream, hello, 1, 1).good);
    EXPECT_EQ(output, "hello, hello, hello\n");
    const CCryptoGZIPHeader& header = *stream.header();
    EXPECT_EQ(header.modificationTime, 1234567890U);
    EXPECT_EQ(header.extraFlags, 2);
    EXPECT_EQ(header.operatingSystem, 255);
    ASSERT_TRUE(header.name);
    EXPECT_EQ(header.name->view(), "name.txt");
    EXPECT_FALSE(header.comment || header.extra || header.hasChecksum || header.isText);
}

TEST(Gzip, FieldsComeBackInEveryCombination)
{
    for (int present = 0; present < 32; ++present) {
        SCOPED_TRACE(present);
        CCryptoGZIPHeader written;
        written.isText = (present & 1) != 0;
        written.hasChecksum = (present & 2) != 0;
        if ((present & 4) != 0)
            written.extra = element("AB\x02", (present & 8) != 0 ? 3 : 0);
        if ((present & 8) != 0)
            written.name = element((present & 16) != 0 ? "r\xE4port" : "");
        if ((present & 16) != 0)
            written.comment = element("signed");
        written.modificationTime = 0x12345678;
        written.operatingSystem = 3;

        element packed;
        ASSERT_TRUE(CDeflateStream::Deflate(BytesOf("text"), DeflateFormat::gzip, packed, 1, written));
        std::string output;
        CDeflateStream stream;
        stream.StartInflate(DeflateFormat::gzip, AppendTo(output));
        ASSERT_TRUE(Feed(stream, packed.view(), 1, 1).good) << stream.reason();
        EXPECT_EQ(output, "text");
        const CCryptoGZIPHeader& read = *stream.header();
        EXPECT_EQ(read.isText, written.isText);
        EXPECT_EQ(read.hasChecksum, written.hasChecksum);
        EXPECT_EQ(read.modificationTime, written.modificationTime);
        EXPECT_EQ(read.operatingSystem, written.operatingSystem);
        EXPECT_EQ(read.extraFlags, 4);
        EXPECT_EQ(read.extra, written.extra);
        EXPECT_EQ(read.name, written.name);
        EXPECT_EQ(read.comment, written.comment);
    }
}

TEST(Gzip, NamesWhatIsMalformed)
{
    CCryptoGZIPHeader checked;
    checked.hasChecksum = true;
    element withChecksum;
    ASSERT_TRUE(CDeflateStream::Deflate({}, DeflateFormat::gzip, withChecksum, 6, checked));

    const std::string start(hello.substr(0, 10));
    const std::size_t end = hello.size();
    const FaultCase cases[] = {
        {"No GZIP data", ""},
        {"Not GZIP data", "\x1E\x8B"},
        {"Not GZIP data", "\x1F\x8C"},
        {"A GZIP compression method other than Deflate", WithByte(hello, 2, 7)},
        {"Reserved flags are set in a GZIP header", WithByte(hello, 3, 0x28)},
        {"The checksum of a GZIP header does not match", WithByte(withChecksum.view(), 10, withChecksum[10] ^ 1U)},
        {"A GZIP file name of more than 1 MiB", start + std::string((1 << 20) + 1, 'n')},
        {"A GZIP comment of more than 1 MiB", WithByte(start, 3, 0x10) + std::string((1 << 20) + 1, 'c')},
        {"The CRC-32 does not match the data", WithByte(hello, end - 8, 0)},
        {"The length after the data does not match it", WithByte(hello, end - 1, 1)},
        {"A distance beyond the start of the data",
         std::string(hello) + start.substr(0, 3) + '\0' + start.substr(4) + FromBits("1 10 0000001 00000")},
        {"Bytes after the end of the data", std::string(hello) + 'x'},
        {"Bytes after the end of the data", std::string(hello) + std::string(600, '\0') + 'x'},
        {"Bytes after the end of the data", std::string(hello) + '\0' + std::string(hello)},
        {"Not GZIP data", '\0' + std::string(hello)},
        {"Not GZIP data", std::string(hello) + "\x1F\x1F"},
        {"The data ends inside a GZIP header", std::string(hello.substr(0, 18))},
        {"The data ends inside a GZIP header", std::string(hello) + "\x1F"},
        {"The data ends inside the checksum and length of a GZIP member", std::string(hello.substr(0, end - 1))},
    };
    for (const FaultCase& each : cases) {
        const Outcome whole = Unpacked(each.packed, DeflateFormat::gzip);
        EXPECT_FALSE(whole.good);
        EXPECT_EQ(whole.reason, each.reason);
        const std::size_t piece = each.packed.size() < 1000 ? 1 : 4093;
        EXPECT_EQ(Unpacked(each.packed, DeflateFormat::gzip, piece), whole) << each.reason;
    }
}

TEST(Gzip, IgnoresZerosAfterTheLastMember)
{
    for (const std::size_t zeros : {1, 511, 70000}) {
        const std::string padded = std::string(hello) + std::string(hello) + std::string(zeros, '\0');
        for (const std::size_t piece : {SIZE_MAX, std::size_t{1}}) {
            const Outcome outcome = Unpacked(padded, DeflateFormat::gzip, piece);
            EXPECT_TRUE(outcome.good) << outcome.reason;
            EXPECT_EQ(outcome.output, "hello, hello, hello\nhello, hello, hello\n");
        }
    }
}

TEST(Gzip, KeepsAHeaderUntilTheNextIsWhole)
{
    const std::string other = Packed("", DeflateFormat::gzip, 9);
    CDeflateStream stream;
    std::string output;
    stream.StartInflate(DeflateFormat::gzip, AppendTo(output));
    ASSERT_TRUE(stream.Write(BytesOf(std::string(hello) + other.substr(0, 9))));
    ASSERT_TRUE(stream.header()->name);
    EXPECT_EQ(stream.header()->name->view(), "name.txt");
    ASSERT_TRUE(stream.Write(BytesOf(other.substr(9))));
    EXPECT_FALSE(stream.header()->name);
}

// The format has no limit on these texts.
TEST(Gzip, KeepsLongNamesAndComments)
{
    for (const std::size_t length : {65536, 1 << 20}) {
        CCryptoGZIPHeader written;
        written.name = element(std::string(length, 'n'));
        written.comment = element(std::string(length, 'c'));
        CDeflateStream stream;
        std::string packed;
        ASSERT_TRUE(stream.StartDeflate(DeflateFormat::gzip, AppendTo(packed), 6, written) && stream.Finish());
        std::string output;
        stream.StartInflate(DeflateFormat::gzip, AppendTo(output));
        EXPECT_TRUE(stream.Write(BytesOf(packed))) << stream.reason();
        EXPECT_EQ(stream.header()->name, written.name);
        EXPECT_EQ(stream.header()->comment, written.comment);
        EXPECT_TRUE(stream.Finish());
    }
}

TEST(Gzip, JoinsMembers)
{
    const std::string empty = Packed("", DeflateFormat::gzip, 6);
    const std::string large = Prose(200000);
    const std::string members = std::string(hello) + empty + Packed(large, DeflateFormat::gzip, 6) + std::string(hello);
    const std::string text = "hello, hello, hello\n";
    for (const std::size_t piece : {SIZE_MAX, std::size_t{1}, std::size_t{4093}}) {
        const Outcome outcome = Unpacked(members, DeflateFormat::gzip, piece);
        EXPECT_TRUE(outcome.good) << outcome.reason;
        EXPECT_TRUE(outcome.output == text + large + text);
    }
}

TEST(Gzip, RefusesFieldsThatCannotBeWritten)
{
    CCryptoGZIPHeader zeroInside;
    zeroInside.name = element("a\0b"sv);
    CCryptoGZIPHeader longComment;
    longComment.comment = element(std::string((1 << 20) + 1, 'c'));
    CCryptoGZIPHeader longExtra;
    longExtra.extra = element(std::string(65536, 'e'));
    const std::pair<const CCryptoGZIPHeader*, const char*> cases[] = {
        {&zeroInside, "A GZIP file name or comment with a zero byte"},
        {&longComment, "A GZIP comment of more than 1 MiB"},
        {&longExtra, "A GZIP extra field of more than 65535 bytes"},
    };
    for (const auto& [header, reason] : cases) {
        CDeflateStream stream;
        std::string output;
        EXPECT_FALSE(stream.StartDeflate(DeflateFormat::gzip, AppendTo(output), 6, *header));
        EXPECT_STREQ(stream.reason(), reason);
        EXPECT_FALSE(stream.Write(BytesOf("x")) || stream.Finish());
        EXPECT_EQ(output, "");
    }
}

} // namespace
