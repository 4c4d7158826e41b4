#include "core/containers/array.h"
#include "tests/support/captured_log.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

/// Cannot be allocated in runs of more than 4.
struct Scarce {
    int value = 0;

    static void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
    {
        return size > 4 * sizeof(Scarce) ? nullptr : ::operator new[](size, std::nothrow);
    }
    static void operator delete[](void* items) { ::operator delete[](items); }
};

std::vector<std::string> Items(const CCryptoArray<std::string>& array)
{
    return {array.begin(), array.end()};
}

} // namespace

TEST(Array, KeepsItsStorageWhenItShrinksAndResetsWhatFellAway)
{
    CCryptoArray<std::string> array{"a", "b", "c", "d", "e"};
    const std::string* const storage = array.begin();
    ASSERT_TRUE(array.setSize(2));
    ASSERT_TRUE(array.setSize(5));
    EXPECT_EQ(Items(array), (std::vector<std::string>{"a", "b", "", "", ""}));
    EXPECT_EQ(array.begin(), storage);

    array.clear();
    EXPECT_TRUE(array.isEmpty());
    ASSERT_TRUE(array.setSize(1));
    EXPECT_EQ(array[0], "");
    EXPECT_EQ(array.capacity(), 5U);
}

TEST(Array, GrowsToExactlyTheSizeAskedFor)
{
    CCryptoArray<std::string> array;
    for (std::uint32_t size = 1; size <= 5; ++size) {
        ASSERT_TRUE(array.append(std::to_string(size)));
        EXPECT_EQ(array.capacity(), size);
    }
    ASSERT_TRUE(array.setSize(7));
    EXPECT_EQ(array.capacity(), 7U);
    EXPECT_EQ(Items(array), (std::vector<std::string>{"1", "2", "3", "4", "5", "", ""}));
}

TEST(Array, StaysAsItIsWithoutMemory)
{
    CCryptoArray<Scarce> array;
    for (int value = 1; value <= 4; ++value)
        ASSERT_TRUE(array.append({value}));
    EXPECT_FALSE(array.append({5}));
    EXPECT_FALSE(array.setSize(UINT32_MAX));
    EXPECT_EQ(array.size(), 4U);
    EXPECT_EQ(array.capacity(), 4U);
    EXPECT_EQ(array[3].value, 4);
}

TEST(Array, AccessPastTheEndTouchesNoItem)
{
    CCryptoArray<int> array{1, 2, 3};
    ASSERT_TRUE(array.setSize(2));
    array[2] = 9;
    {
        const CapturedLog log;
        EXPECT_EQ(array[2], 0);
        EXPECT_EQ(log.texts(), std::vector<std::string>{"ERROR: Array access past the end: 2>=2"});
    }
    int& outside = array[UINT32_MAX];
    outside = array[7];
    EXPECT_EQ(std::as_const(array)[2], 0);
    ASSERT_TRUE(array.setSize(3));
    EXPECT_EQ(array, (CCryptoArray<int>{1, 2, 0}));
}

TEST(Array, CopiesAreIndependentAndMovesTakeTheStorage)
{
    CCryptoArray<std::string> first{"a", "b"};
    CCryptoArray<std::string> copy(first);
    copy[0] = "changed";
    EXPECT_EQ(first[0], "a");
    const CCryptoArray<std::string>& alias = first;
    first = alias;
    EXPECT_EQ(Items(first), (std::vector<std::string>{"a", "b"}));
    copy = first;
    EXPECT_EQ(copy, first);

    const std::string* const storage = first.begin();
    CCryptoArray<std::string> moved(std::move(first));
    EXPECT_EQ(moved.begin(), storage);
    EXPECT_EQ(moved, copy);
}

TEST(Array, IsDestroyedThroughItsBaseWhenItIsAnElement)
{
    class Named : public CCryptoArray<std::string> {
    public:
        std::shared_ptr<int> witness;
    };
    const auto witness = std::make_shared<int>(0);
    {
        auto named = std::make_unique<Named>();
        named->witness = witness;
        CCryptoArray<std::unique_ptr<CCryptoArray<std::string>>> arrays;
        ASSERT_TRUE(arrays.append(std::move(named)) && arrays.setSize(8));
        EXPECT_EQ(witness.use_count(), 2);
    }
    EXPECT_EQ(witness.use_count(), 1);
}
