#include "tests/deflate/deflate_data.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

using namespace ccrypto;

namespace {

/// A folder in which the system's own gzip command works.
class GzipCommand {
public:
    /// What `gzip OPTIONS` makes of the bytes; nothing when it fails.
    std::string run(const std::string& options, const std::string& bytes) const
    {
        std::ofstream(folder_ / u8"in", std::ios::binary) << bytes;
        const std::string in = folder_ / u8"in";
        const std::string out = folder_ / u8"out";
        const std::string command = "gzip " + options + " <'" + in + "' >'" + out + "' 2>/dev/null";
        if (std::system(command.c_str()) != 0)
            return {};
        std::ifstream made(out, std::ios::binary);
        return {std::istreambuf_iterator<char>(made), {}};
    }

private:
    TemporaryDirectory folder_;
};

TEST(GzipCommand, AgreesInBothDirections)
{
    const GzipCommand command;
    const std::string samples[] = {"", "x", Prose(500000), Noise(100000), Prose(100000) + Noise(40000) + std::string(100000, 'r')};
    for (const std::string& plain : samples) {
        for (const int level : {1, 4, 6, 9}) {
            SCOPED_TRACE(testing::Message() << plain.size() << " bytes, level " << level);
            EXPECT_TRUE(command.run("-dc", Packed(plain, DeflateFormat::gzip, level)) == plain);
            const std::string packed = command.run("-c -" + std::to_string(level), plain);
            const Outcome outcome = Unpacked(packed, DeflateFormat::gzip, 5003);
            EXPECT_TRUE(outcome.good) << outcome.reason;
            EXPECT_TRUE(outcome.output == plain);
        }
    }
}

} // namespace
