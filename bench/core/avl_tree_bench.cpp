#include "core/containers/avl_tree.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <vector>

namespace {

/// The same random keys for both rivals, in the order of insertion and in another order of search.
struct Keys {
    std::vector<std::uint64_t> inserted;
    std::vector<std::uint64_t> searched;

    explicit Keys(std::size_t count) : inserted(count)
    {
        std::mt19937_64 random(20240229);
        for (std::uint64_t& key : inserted)
            key = random();
        searched = inserted;
        std::shuffle(searched.begin(), searched.end(), random);
    }
};

void AvlTreeInsertFind(benchmark::State& state)
{
    const Keys keys(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        auto tree = std::make_unique<CAvlTree<std::uint64_t, std::uint64_t>>();
        for (const std::uint64_t key : keys.inserted)
            tree->Insert(key, key);
        for (const std::uint64_t key : keys.searched)
            benchmark::DoNotOptimize(tree->Find(key));
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}

void MapInsertFind(benchmark::State& state)
{
    const Keys keys(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        auto map = std::make_unique<std::map<std::uint64_t, std::uint64_t>>();
        for (const std::uint64_t key : keys.inserted)
            map->emplace(key, key);
        for (const std::uint64_t key : keys.searched)
            benchmark::DoNotOptimize(map->find(key));
        state.PauseTiming();
        map.reset();
        state.ResumeTiming();
    }
}

} // namespace

BENCHMARK(AvlTreeInsertFind)->Name("AVL tree insert and find")->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(MapInsertFind)->Name("AVL tree insert and find vs std::map")->Arg(1'000'000)->Unit(benchmark::kMillisecond);
