#include "core/platform/file.h"
#include "core/platform/process.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

using namespace ccrypto;

using platform::File;
using platform::FileMode;

namespace {

bool Put(const std::string& name, FileMode mode, std::string_view text)
{
    File file;
    return file.open(name.c_str(), mode) && file.writeAt(0, text.data(), static_cast<std::uint32_t>(text.size()));
}

std::string Get(const std::string& name)
{
    File file;
    if (!file.open(name.c_str(), FileMode::read))
        return "(missing)";
    std::array<char, 100000> buffer{};
    const std::int64_t count = file.readAt(0, buffer.data(), buffer.size());
    return count < 0 ? "(failed)" : std::string(buffer.data(), static_cast<std::size_t>(count));
}

} // namespace

TEST(File, ModesSayWhatHappensToContents)
{
    struct {
        FileMode mode;
        const char* created;   ///< after writing "ab" into a file that is missing
        const char* overwrote; ///< after writing "ab" at 0 into "12345"
    } const cases[] = {
        {FileMode::read, "(missing)", "12345"}, {FileMode::write, "ab", "ab"},     {FileMode::append, "ab", "12345ab"},
        {FileMode::readWrite, "ab", "ab345"},   {FileMode::create, "ab", "12345"},
    };
    for (const auto& [mode, created, overwrote] : cases) {
        SCOPED_TRACE(static_cast<int>(mode));
        const TemporaryDirectory directory;
        const std::string name = directory / u8"file";
        EXPECT_EQ(Put(name, mode, "ab"), mode != FileMode::read);
        EXPECT_EQ(Get(name), created);
        ASSERT_TRUE(Put(name, FileMode::write, "12345"));
        EXPECT_EQ(Put(name, mode, "ab"), std::string(overwrote) != "12345");
        EXPECT_EQ(Get(name), overwrote);
    }
}

TEST(File, ReplacesAFileByAnother)
{
    const TemporaryDirectory directory;
    const std::string from = directory / u8"päivä new";
    const std::string to = directory / u8"päivä";
    for (const char* text : {"first", "second"}) {
        ASSERT_TRUE(Put(from, FileMode::create, text));
        EXPECT_TRUE(File::Replace(from.c_str(), to.c_str()));
        EXPECT_EQ(Get(to), text);
        EXPECT_EQ(Get(from), "(missing)");
    }
    EXPECT_FALSE(File::Replace(from.c_str(), to.c_str()));
    EXPECT_FALSE(File::Replace(nullptr, to.c_str()));
}

TEST(File, NamesMayBeLongForeignAndRelative)
{
    const TemporaryDirectory directory;
    const std::u8string longFolders[] = {std::u8string(150, u8'a'), std::u8string(150, u8'b')};
    std::filesystem::path deep = directory.path();
    if constexpr (std::filesystem::path::preferred_separator == '\\')
        deep = LR"(\\?\)" + deep.make_preferred().wstring();
    std::vector<std::filesystem::path> created;
    for (const std::u8string& folder : longFolders) {
        deep /= folder;
        std::filesystem::create_directory(deep);
        created.insert(created.begin(), deep);
    }
    const std::string longName = directory / (longFolders[0] + u8"/" + longFolders[1] + u8"/" + std::u8string(100, u8'c'));
    ASSERT_GT(longName.size(), 400U);
    const std::string names[] = {longName, directory / u8"päivä \u20AC \U0001F58B.txt", "core_tests_relative.txt"};
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(Put(name, FileMode::write, "text"));
        EXPECT_EQ(Get(name), "text");
        EXPECT_TRUE(File::Remove(name.c_str()));
        EXPECT_FALSE(File::Remove(name.c_str()));
        EXPECT_EQ(platform::LastError(), 2U);
    }
    for (const std::filesystem::path& folder : created)
        EXPECT_TRUE(std::filesystem::remove(folder));
}

TEST(File, ForeignNamesAreTheSystemsNames)
{
    const TemporaryDirectory directory;
    ASSERT_TRUE(Put(directory / u8"ä\u20AC.txt", FileMode::write, "text"));
    EXPECT_TRUE(std::filesystem::exists(directory.path() / std::filesystem::path(u8"ä\u20AC.txt")));
}

TEST(File, ReadsAndWritesAtPositions)
{
    const TemporaryDirectory directory;
    File file;
    ASSERT_TRUE(file.open((directory / u8"file").c_str(), FileMode::readWrite));
    EXPECT_EQ(file.size(), 0);
    ASSERT_TRUE(file.writeAt(3, "def", 3));
    ASSERT_TRUE(file.append("g", 1));
    EXPECT_EQ(file.size(), 7);
    std::array<char, 10> bytes{};
    EXPECT_EQ(file.readAt(2, bytes.data(), 3), 3);
    EXPECT_EQ(std::string_view(bytes.data(), 3), std::string_view("\0de", 3));
    EXPECT_EQ(file.readAt(5, bytes.data(), 10), 2);
    EXPECT_EQ(file.readAt(7, bytes.data(), 10), 0);
    EXPECT_EQ(file.readAt(1000, bytes.data(), 10), 0);
    ASSERT_TRUE(file.truncate(4));
    EXPECT_EQ(file.size(), 4);
    EXPECT_EQ(file.readAt(0, bytes.data(), 10), 4);
    // Beyond four gigabytes, without the bytes in between.
    ASSERT_TRUE(file.writeAt(0x100000001, "x", 1));
    EXPECT_EQ(file.size(), 0x100000002);
    EXPECT_EQ(file.readAt(0x100000001, bytes.data(), 10), 1);
    EXPECT_EQ(bytes[0], 'x');
}

TEST(File, IsTruncatedInEveryModeThatWrites)
{
    for (const FileMode mode : {FileMode::append, FileMode::appendShared, FileMode::readWrite}) {
        SCOPED_TRACE(static_cast<int>(mode));
        const TemporaryDirectory directory;
        const std::string name = directory / u8"file";
        ASSERT_TRUE(Put(name, FileMode::write, "12345"));
        File file;
        ASSERT_TRUE(file.open(name.c_str(), mode));
        EXPECT_TRUE(file.truncate(2));
        EXPECT_TRUE(file.append("x", 1));
        EXPECT_EQ(Get(name), "12x");
    }
}

TEST(File, FailuresSayWhy)
{
    const TemporaryDirectory directory;
    const std::string name = directory / u8"file";
    File file;
    EXPECT_FALSE(file.open(name.c_str(), FileMode::read));
    EXPECT_EQ(platform::LastError(), 2U);
    EXPECT_FALSE(file.open((directory / u8".").c_str(), FileMode::read));
    EXPECT_FALSE(file.open(nullptr, FileMode::read));
    EXPECT_FALSE(file.isOpen());
    ASSERT_TRUE(Put(name, FileMode::write, "12345"));
    ASSERT_TRUE(file.open(name.c_str(), FileMode::read));
    EXPECT_FALSE(file.writeAt(0, "x", 1));
    EXPECT_FALSE(file.truncate(0));
    std::array<char, 10> bytes{};
    ASSERT_TRUE(file.open(name.c_str(), FileMode::append));
    EXPECT_EQ(file.readAt(0, bytes.data(), 5), -1);
    EXPECT_EQ(Get(name), "12345");
}

TEST(File, SeveralAppendersLoseNothing)
{
    const TemporaryDirectory directory;
    const std::string name = directory / u8"log";
    constexpr int lines = 300;
    File first;
    File second;
    ASSERT_TRUE(first.open(name.c_str(), FileMode::append) && second.open(name.c_str(), FileMode::append));
    for (int index = 0; index < lines; ++index) {
        ASSERT_TRUE(first.append("1111111\n", 8));
        ASSERT_TRUE(second.append("2222222\n", 8));
    }
    const std::string text = Get(name);
    EXPECT_EQ(text.size(), 2U * lines * 8);
    EXPECT_EQ(std::count(text.begin(), text.end(), '1'), 7 * lines);
    EXPECT_EQ(std::count(text.begin(), text.end(), '2'), 7 * lines);
    for (std::size_t start = 0; start < text.size(); start += 8)
        ASSERT_EQ(text.find_first_not_of(text[start], start), start + 7);
}
