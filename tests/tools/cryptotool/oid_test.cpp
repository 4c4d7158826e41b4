#include "tests/tools/cryptotool/memory_console.h"

#include <gtest/gtest.h>

using namespace ccrypto;

namespace {

TEST(CryptotoolOid, FindsBothWays)
{
    EXPECT_EQ(RunTool({"oid", "2.5.4.3"}).output, "2.5.4.3  commonName (CN)\n");
    EXPECT_NE(RunTool({"oid", "COMMONNAME"}).output.find("2.5.4.3 "), std::string::npos);
    EXPECT_EQ(RunTool({"oid", "--json", "2.5.4.3"}).output,
              "{\"oids\":[\n{\"oid\":\"2.5.4.3\",\"name\":\"commonName (CN)\"}\n]}\n");
    for (const char* unknown : {"2.5.4.99999", ".", "", "no such name", "2.5.4.3 "})
        EXPECT_EQ(RunTool({"oid", unknown}).code, exitRefused) << unknown;
}

} // namespace
