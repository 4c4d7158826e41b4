#include "asn1/types/algorithm_identifier.h"
#include "asn1/types/algorithm_table.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

using namespace ccrypto;

namespace {

/// Numbers and not names: other code stores and switches on them.
struct PublishedRow {
    std::uint32_t id;
    std::string_view oid;
};

constexpr PublishedRow published[] = {
    {0, ""},
    {1, "1.2.840.113549.1.12.1.1"},
    {2, "1.2.840.113549.1.12.1.2"},
    {3, "1.2.840.113549.1.12.1.3"},
    {4, "1.2.840.113549.1.12.1.4"},
    {5, "1.2.840.113549.1.12.1.5"},
    {6, "1.2.840.113549.1.12.1.6"},
    {100, "1.3.14.3.2.26"},
    {101, "1.2.840.113549.2.5"},
    {106, ""},
    {102, "2.16.840.1.101.3.4.2.1"},
    {103, "2.16.840.1.101.3.4.2.2"},
    {104, "2.16.840.1.101.3.4.2.3"},
    {105, "2.16.840.1.101.3.4.2.4"},
    {200, "1.2.840.113549.3.2"},
    {201, "1.2.840.113549.3.4"},
    {202, "1.2.840.113549.3.7"},
    {203, "1.2.840.113549.3.9"},
    {204, "1.2.840.113549.3.10"},
    {205, "2.16.840.1.101.3.4.1"},
    {300, "2.16.840.1.101.3.4.1.1"},
    {301, "2.16.840.1.101.3.4.1.2"},
    {302, "2.16.840.1.101.3.4.1.3"},
    {303, "2.16.840.1.101.3.4.1.4"},
    {304, "2.16.840.1.101.3.4.1.21"},
    {305, "2.16.840.1.101.3.4.1.22"},
    {306, "2.16.840.1.101.3.4.1.23"},
    {307, "2.16.840.1.101.3.4.1.24"},
    {308, "2.16.840.1.101.3.4.1.41"},
    {309, "2.16.840.1.101.3.4.1.42"},
    {310, "2.16.840.1.101.3.4.1.43"},
    {311, "2.16.840.1.101.3.4.1.44"},
    {312, "2.16.840.1.101.3.4.1.6"},
    {313, "2.16.840.1.101.3.4.1.26"},
    {314, "2.16.840.1.101.3.4.1.46"},
    {400, "1.2.840.113549"},
    {401, "1.2.840.113549.1.1"},
    {500, "1.2.840.113549.1.1.4"},
    {501, "1.2.840.113549.1.1.5"},
    {503, "1.2.840.113549.1.1.11"},
    {505, "1.2.840.113549.1.1.13"},
    {502, "1.2.840.113549.1.1.14"},
    {506, "1.2.840.10045.4.1"},
    {508, "1.2.840.10045.4.3.2"},
    {509, "1.2.840.10045.4.3.3"},
    {510, "1.2.840.10045.4.3.4"},
    {600, "1.3.6.1.5.5.8.1.2"},
    {601, "1.2.840.113549.2.8"},
    {602, "1.2.840.113549.2.9"},
    {603, "1.2.840.113549.2.10"},
    {604, "1.2.840.113549.2.11"},
    {700, "1.2.840.113549.1.5.12"},
    {701, "1.2.840.113549.1.5.13"},
    {800, "1.2.840.113533.7.66.13"},
    {900, ""},
    {1000, ""},
    {1100, "1.2.840.113549.1.1.1"},
    {1101, "1.2.840.10045.2.1"},
    {1102, ""},
    {1103, "1.3.132.0.6"},
    {1104, "1.3.132.0.8"},
    {1105, "1.2.840.10045.3.1.1"},
    {1106, "1.2.840.10045.3.1.7"},
    {1107, "1.3.132.0.34"},
    {1108, "1.3.132.0.35"},
    {1109, "1.3.36.3.3.2.8.1.1.1"},
    {1110, "1.3.36.3.3.2.8.1.1.7"},
    {1111, "1.3.36.3.3.2.8.1.1.11"},
    {1112, "1.3.101.110"},
    {1113, "1.3.101.111"},
};
static_assert(std::size(published) == 70);

TEST(AlgorithmTable, HasThePublishedNumbersInTheOrderOfLookUp)
{
    ASSERT_EQ(AlgorithmTable().size(), std::size(published));
    for (std::size_t row = 0; row < std::size(published); ++row) {
        const auto& [id, oid] = published[row];
        SCOPED_TRACE(id);
        EXPECT_EQ(AlgorithmTable()[row].id, id);
        EXPECT_EQ(AlgorithmTable()[row].oid, oid);
        EXPECT_EQ(OidOfAlgorithm(static_cast<algorithm::Id>(id)), oid);
        EXPECT_EQ(AlgorithmOfOid(oid), oid.empty() ? 0u : id);

        const element der = CCryptoAlgorithmIdentifier(static_cast<algorithm::Id>(id), true).BuildDer();
        CCryptoAlgorithmIdentifier read;
        EXPECT_EQ(read.ParseDer(der), !oid.empty());
        EXPECT_EQ(read.id(), oid.empty() ? 0u : id);
        EXPECT_EQ(read.oid().view(), oid);
        EXPECT_TRUE(read.readOctets() == der);
    }
}

TEST(AlgorithmTable, SharesNoNumberWithTheListBesideIt)
{
    std::set<std::uint32_t> ids;
    std::set<std::string> oids;
    for (const auto& [id, oid] : published) {
        ids.insert(id);
        oids.insert(std::string(oid));
    }
    for (const AlgorithmRow& row : AlgorithmsBesideTable()) {
        SCOPED_TRACE(row.oid);
        EXPECT_TRUE(ids.insert(row.id).second);
        EXPECT_TRUE(oids.insert(row.oid).second);
        EXPECT_EQ(AlgorithmOfOid(row.oid), row.id);
        EXPECT_STREQ(OidOfAlgorithm(row.id), row.oid);
    }
    for (const std::uint32_t id : {504u, 507u})
        EXPECT_FALSE(ids.contains(id)) << id;
}

TEST(AlgorithmTable, ReadsHmacWithSha1ByBothOfItsOids)
{
    EXPECT_EQ(AlgorithmOfOid("1.2.840.113549.2.7"), algorithm::hmacSha1);
    EXPECT_EQ(AlgorithmOfOid("1.3.6.1.5.5.8.1.2"), algorithm::hmacSha1);
    EXPECT_STREQ(OidOfAlgorithm(algorithm::hmacSha1), "1.3.6.1.5.5.8.1.2");
}

} // namespace
