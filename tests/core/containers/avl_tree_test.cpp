#include "core/containers/avl_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using Tree = CAvlTree<int, int>;

/// Shape and keys: "(left key right)".
std::string Shape(const CAvlNode<int, int>* node)
{
    return node == nullptr ? "" : "(" + Shape(node->left.get()) + std::to_string(node->key) + Shape(node->right.get()) + ")";
}

/// Checks heights and balance below `node`, and that the keys come in order. \return the height.
std::uint32_t CheckBelow(const CAvlNode<int, int>* node, std::vector<int>& keysInOrder)
{
    if (node == nullptr)
        return 0;
    const std::uint32_t left = CheckBelow(node->left.get(), keysInOrder);
    keysInOrder.push_back(node->key);
    const std::uint32_t right = CheckBelow(node->right.get(), keysInOrder);
    EXPECT_LE(std::max(left, right) - std::min(left, right), 1U);
    EXPECT_EQ(node->height, std::max(left, right) + 1);
    return node->height;
}

} // namespace

TEST(AvlTree, RotatesAsItGrows)
{
    const struct {
        std::vector<int> keys;
        const char* shape;
        std::uint32_t height;
    } cases[] = {
        {{}, "", 0},
        {{1, 2, 3}, "((1)2(3))", 2},
        {{3, 2, 1}, "((1)2(3))", 2},
        {{3, 1, 2}, "((1)2(3))", 2},
        {{1, 3, 2}, "((1)2(3))", 2},
        {{7, 7}, "(7(7))", 2},
        {{7, 7, 7}, "((7)7(7))", 2},
        {{6, 2, 8, 1, 4, 5}, "(((1)2)4((5)6(8)))", 3},
        {{2, 1, 5, 4, 6, 3}, "(((1)2(3))4(5(6)))", 3},
        {{4, 2, 6, 1, 3, 5, 7, 8}, "(((1)2(3))4((5)6(7(8))))", 4},
    };
    for (const auto& [keys, shape, height] : cases) {
        Tree tree;
        for (const int key : keys)
            EXPECT_TRUE(tree.Insert(key, 0));
        EXPECT_EQ(Shape(tree.Root()), shape);
        EXPECT_EQ(tree.Root() != nullptr ? tree.Root()->height : 0, height) << shape;
        EXPECT_EQ(tree.Count(), keys.size());
    }
}

TEST(AvlTree, AgreesWithAMultimapOnRandomKeys)
{
    std::mt19937 random(20240229);
    for (const int distinctKeys : {1, 10, 1000, 1'000'000}) {
        SCOPED_TRACE(distinctKeys);
        Tree tree;
        std::multimap<int, int> model;
        std::uniform_int_distribution<int> keys(0, distinctKeys);
        for (int value = 0; value < 3000; ++value) {
            const int key = keys(random);
            tree.Insert(key, value);
            model.emplace(key, value);
            if (value % 100 == 0 || value > 2990) {
                std::vector<int> keysInOrder;
                CheckBelow(tree.Root(), keysInOrder);
                ASSERT_TRUE(std::equal(keysInOrder.begin(), keysInOrder.end(), model.begin(), model.end(),
                                       [](int stored, const auto& expected) { return stored == expected.first; }));
            }
        }
        EXPECT_EQ(tree.Count(), model.size());
        for (int key = -1; key <= std::min(distinctKeys, 2000) + 1; ++key) {
            const auto [first, last] = model.equal_range(key);
            const int* const value = tree.Find(key);
            ASSERT_EQ(value != nullptr, first != last) << key;
            if (value != nullptr) {
                EXPECT_TRUE(std::any_of(first, last, [&](const auto& pair) { return pair.second == *value; })) << key;
            }
        }
    }
}

TEST(AvlTree, FindOrInsertKeepsKeysUniqueAndValuesInPlace)
{
    CAvlTree<std::string, int> tree;
    int& first = tree.FindOrInsert("first");
    EXPECT_EQ(first, 0);
    first = 7;
    for (int number = 0; number < 100; ++number)
        tree.FindOrInsert(std::to_string(number)) = number;
    EXPECT_EQ(&tree.FindOrInsert("first"), &first);
    EXPECT_TRUE(tree.WithValue("first", [](int& value) { ++value; }));
    EXPECT_TRUE(tree.WithValue("last", [](int& value) { value = 9; }));
    EXPECT_EQ(first, 8);
    EXPECT_EQ(*tree.Find("last"), 9);
    EXPECT_EQ(tree.Find("no such key"), nullptr);
    EXPECT_EQ(tree.Count(), 102U);
}

TEST(AvlTree, CopiesItselfChildrenFirst)
{
    Tree tree;
    for (const int key : {4, 2, 6, 1, 3, 5, 7})
        tree.Insert(key, key * 10);
    CCryptoArray<int> keys{99};
    CCryptoArray<int> values;
    EXPECT_TRUE(tree.CopyTo(keys, values));
    EXPECT_EQ(keys, (CCryptoArray<int>{1, 3, 2, 5, 7, 6, 4}));
    EXPECT_EQ(values, (CCryptoArray<int>{10, 30, 20, 50, 70, 60, 40}));
}

TEST(AvlTree, OwnsValuesThatCannotBeCopied)
{
    const auto shared = std::make_shared<int>(5);
    {
        CAvlTree<int, std::unique_ptr<std::shared_ptr<int>>> tree;
        for (const int key : {1, 2, 3, 4})
            tree.Insert(key, std::make_unique<std::shared_ptr<int>>(shared));
        EXPECT_EQ(**tree.Find(3), shared);
        EXPECT_EQ(shared.use_count(), 5);
    }
    EXPECT_EQ(shared.use_count(), 1);
}

TEST(AvlTree, IsSharedBetweenThreads)
{
    constexpr int threads = 4;
    constexpr int rounds = 2000;
    Tree tree;
    std::vector<std::thread> workers;
    workers.reserve(threads);
    for (int worker = 0; worker < threads; ++worker) {
        workers.emplace_back([&tree, worker] {
            for (int round = 0; round < rounds; ++round) {
                tree.Insert(threads * (round + 1) + worker, worker);
                tree.WithValue(round % 3 - 3, [](int& value) { ++value; });
            }
        });
    }
    for (std::thread& worker : workers)
        worker.join();
    EXPECT_EQ(tree.Count(), static_cast<std::uint32_t>(threads * rounds + 3));
    EXPECT_EQ(*tree.Find(-3) + *tree.Find(-2) + *tree.Find(-1), threads * rounds);
}
