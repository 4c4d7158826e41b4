#include "core/system/file.h"
#include "tests/support/captured_log.h"
#include "tests/support/temporary_directory.h"

#include <gmock/gmock.h>

#include <string>

using namespace ccrypto;

using ::testing::ElementsAre;

namespace {

CCryptoString Name(const TemporaryDirectory& directory, std::u8string_view name = u8"päivä.bin")
{
    return CCryptoString(std::string_view(directory / name));
}

bool Put(CCryptoFile& file, std::string_view text, std::uint32_t index)
{
    return file.Write(element(text).bytes(), index);
}

std::string Get(CCryptoFile& file, std::uint32_t index = 0, std::uint32_t length = 0xFFFFFFFF)
{
    element content;
    return file.Read(index, length, content) ? std::string(content.view()) : "(failed)";
}

} // namespace

TEST(CryptoFile, ReadsAndWritesWhatLiesInTheFile)
{
    const TemporaryDirectory directory;
    CCryptoFile file(Name(directory), CCryptoFile::Mode::readWrite);
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(Get(file), "");
    EXPECT_TRUE(Put(file, "0123456789", 0));
    EXPECT_EQ(file.CurrentPos(), 10U);
    EXPECT_EQ(Get(file, 2, 3), "234");
    EXPECT_EQ(file.CurrentPos(), 5U);
    EXPECT_EQ(Get(file, 8, 100), "89");
    EXPECT_EQ(Get(file, 10, 1), "");
    EXPECT_EQ(Get(file, 11, 1), "(failed)");
    EXPECT_EQ(Get(file, 0xFFFFFFFF, 0xFFFFFFFF), "(failed)");
    EXPECT_EQ(file.CurrentPos(), 10U);
    EXPECT_TRUE(Put(file, "x", 12));
    EXPECT_EQ(Get(file), std::string("0123456789\0\0x", 13));
    EXPECT_EQ(file.Size(), 13);
    file.Close();
    EXPECT_EQ(CCryptoFile::Size(Name(directory)), 13);

    for (const CCryptoFile::Mode mode : {CCryptoFile::Mode::append, CCryptoFile::Mode::appendShared}) {
        const auto before = static_cast<std::uint32_t>(CCryptoFile::Size(Name(directory)));
        CCryptoFile appended(Name(directory), mode);
        EXPECT_TRUE(Put(appended, "end", 0));
        EXPECT_EQ(appended.CurrentPos(), before + 3);
        EXPECT_EQ(CCryptoFile::Size(Name(directory)), before + 3);
    }
}

TEST(CryptoFile, EraseMovesTheTailUp)
{
    std::string text;
    for (unsigned index = 0; index < 200000; ++index)
        text += static_cast<char>('a' + index * 7 % 26 + index / 65536);
    struct {
        std::uint32_t index;
        std::uint32_t length;
    } const cases[] = {{0, 1}, {0, 200000}, {199999, 5}, {200000, 5}, {100, 0}, {3, 70000}, {65536, 65536}, {10, 0xFFFFFFFF}};
    for (const auto& [index, length] : cases) {
        SCOPED_TRACE(std::to_string(index) + ", " + std::to_string(length));
        const TemporaryDirectory directory;
        CCryptoFile file(Name(directory), CCryptoFile::Mode::write);
        ASSERT_TRUE(Put(file, text, 0));
        EXPECT_TRUE(file.Erase(index, length));
        EXPECT_EQ(file.CurrentPos(), index);
        std::string expected = text;
        expected.erase(index, length);
        EXPECT_TRUE(Get(file) == expected);
    }
}

TEST(CryptoFile, ReadsUpToTheLastIndex)
{
    const TemporaryDirectory directory;
    {
        platform::File large;
        ASSERT_TRUE(large.open(Name(directory).c_str(), CCryptoFile::Mode::write));
        ASSERT_TRUE(large.writeAt(0x100000010, "x", 1));
    }
    CCryptoFile file(Name(directory), CCryptoFile::Mode::read);
    EXPECT_EQ(Get(file, 0xFFFFFFF0, 0x40), std::string(15, '\0'));
    EXPECT_EQ(file.CurrentPos(), 0xFFFFFFFFU);
}

TEST(CryptoFile, FailuresAreReportedAndChangeNothing)
{
    const TemporaryDirectory directory;
    CCryptoFile file;
    EXPECT_FALSE(file.Open(Name(directory), CCryptoFile::Mode::read));
    EXPECT_FALSE(file.Open("", CCryptoFile::Mode::write));
    EXPECT_FALSE(file.Open(CCryptoString(std::string_view(directory / u8"a" + std::string("\0b", 2))), CCryptoFile::Mode::write));
    EXPECT_EQ(CCryptoFile::Size(Name(directory, u8"a")), -1);
    EXPECT_EQ(file.Size(), -1);
    EXPECT_EQ(Get(file), "(failed)");
    EXPECT_FALSE(Put(file, "x", 0));
    EXPECT_FALSE(file.Erase(0, 0));
    EXPECT_FALSE(CCryptoFile::Remove(Name(directory)));

    ASSERT_TRUE(file.Open(Name(directory), CCryptoFile::Mode::write));
    ASSERT_TRUE(Put(file, "12345", 0));
    EXPECT_FALSE(file.Erase(6, 1));
    EXPECT_FALSE(Put(file, "xy", 0xFFFFFFFE));
    EXPECT_EQ(Get(file), "12345");

    ASSERT_TRUE(file.Open(Name(directory), CCryptoFile::Mode::read));
    EXPECT_FALSE(Put(file, "x", 0));
    EXPECT_FALSE(Put(file, "", 0));
    EXPECT_FALSE(file.Erase(0, 1));
    EXPECT_FALSE(file.Erase(4, 1));
    EXPECT_EQ(Get(file), "12345");
    ASSERT_TRUE(file.Open(Name(directory), CCryptoFile::Mode::append));
    EXPECT_FALSE(file.Erase(0, 1));
    EXPECT_FALSE(file.Erase(4, 1));
    EXPECT_EQ(CCryptoFile::Size(Name(directory)), 5);
    file.Close();
    EXPECT_TRUE(CCryptoFile::Remove(Name(directory)));
    EXPECT_EQ(CCryptoFile::Size(Name(directory)), -1);
}

TEST(CryptoFile, IsMovedWithWhatItHasOpen)
{
    const TemporaryDirectory directory;
    CCryptoFile file(Name(directory), CCryptoFile::Mode::readWrite);
    ASSERT_TRUE(Put(file, "12345", 0));
    CCryptoFile other = std::move(file);
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(other.CurrentPos(), 5U);
    EXPECT_EQ(Get(other, 1, 2), "23");
}

TEST(CryptoFile, OperationsShowInTheLog)
{
    const TemporaryDirectory directory;
    const CCryptoString name = Name(directory);
    const CapturedLog log;
    CCryptoFile file(name, CCryptoFile::Mode::readWrite);
    Put(file, "12345", 0);
    Get(file, 1, 2);
    Get(file, 0, 0xFFFFFFFF);
    EXPECT_FALSE(file.Erase(6, 1));
    EXPECT_EQ(CCryptoFile::Size(name), 5);
    std::vector<std::string> entries;
    for (const std::string& text : log.texts())
        if (text.ends_with(" - IN") || text.starts_with("ERROR"))
            entries.push_back(text);
    const std::string shown = name.c_str();
    EXPECT_THAT(entries, ElementsAre("CCryptoFile::Open(filename=" + shown + ", mode=3) - IN",
                                     "CCryptoFile::Write(5 bytes, index=0) - IN", "CCryptoFile::Read(index=1, length=2) - IN",
                                     "CCryptoFile::Read(index=0, length=-1) - IN", "CCryptoFile::Erase(index=6, length=1) - IN",
                                     "ERROR: index=6, length=1 size<index", "CCryptoFile::Size(filename=" + shown + ") - IN"));
}
