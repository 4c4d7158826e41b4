#include "asn1/oid/oid_names.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

using namespace ccrypto;

namespace {

/// Every OID of the table once, in an order that no cache foresees, each in memory of its own as a decoder would hand it over.
std::vector<std::string> ShuffledOids()
{
    std::vector<std::string> oids;
    for (const OidName& row : FindOidsByName(""))
        oids.emplace_back(row.dotted);
    std::shuffle(oids.begin(), oids.end(), std::mt19937_64(20240229));
    return oids;
}

void FindName(benchmark::State& state)
{
    const std::vector<std::string> oids = ShuffledOids();
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(FindOidName(oids[next]));
        next = next + 1 < oids.size() ? next + 1 : 0;
    }
}

void FindNameStandard(benchmark::State& state)
{
    std::unordered_map<std::string_view, const char*> names;
    for (const OidName& row : FindOidsByName(""))
        names.emplace(row.dotted, row.name);
    const std::vector<std::string> oids = ShuffledOids();
    std::size_t next = 0;
    for (auto _ : state) {
        const auto found = names.find(oids[next]);
        benchmark::DoNotOptimize(found != names.end() ? found->second : nullptr);
        next = next + 1 < oids.size() ? next + 1 : 0;
    }
}

} // namespace

BENCHMARK(FindName)->Name("name of an OID");
BENCHMARK(FindNameStandard)->Name("name of an OID vs std::unordered_map");
