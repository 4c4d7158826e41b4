#include "core/containers/list.h"
#include "core/containers/vector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

template <typename List>
std::vector<int> Items(const List& list)
{
    return {list.begin(), list.end()};
}

} // namespace

/// What both lists have in common.
template <typename List>
class Lists : public ::testing::Test {
};

using BothLists = ::testing::Types<CList<int>, CCryptoList<int>>;
TYPED_TEST_SUITE(Lists, BothLists);

TYPED_TEST(Lists, AgreeWithAModelWhateverIsRemoved)
{
    std::mt19937 random(20240229);
    const auto below = [&random](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
    TypeParam list;
    std::vector<int> model;
    for (int round = 0; round < 3000; ++round) {
        const int value = static_cast<int>(below(4));
        const std::uint32_t position = below(8);
        switch (below(5)) {
        case 0: {
            const auto found = std::find(model.begin(), model.end(), value);
            EXPECT_EQ(list.remove(value), found != model.end());
            if (found != model.end())
                model.erase(found);
            break;
        }
        case 1:
        case 2:
            EXPECT_EQ(list.removeAt(position), position < model.size());
            if (position < model.size())
                model.erase(model.begin() + position);
            break;
        default:
            EXPECT_EQ(list.append(value), value);
            model.push_back(value);
        }
        ASSERT_EQ(Items(list), model);
        ASSERT_EQ(list.isEmpty(), model.empty());
    }
}

TYPED_TEST(Lists, CopyAndMoveLeaveWorkingLists)
{
    TypeParam list;
    for (const int value : {1, 2, 3})
        list.append(value);
    TypeParam copy(list);
    copy.append(4);
    TypeParam moved(std::move(list));
    list = copy;
    moved.append(5);
    copy = std::move(moved);
    EXPECT_EQ(Items(list), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(Items(copy), (std::vector<int>{1, 2, 3, 5}));
    copy.clear();
    copy.append(6);
    EXPECT_EQ(Items(copy), std::vector<int>{6});
}

TYPED_TEST(Lists, OfAnyLengthAreCopiedAndDestroyedInConstantStack)
{
    TypeParam list;
    for (int value = 0; value < 300'000; ++value)
        list.append(value);
    const TypeParam copy(list);
    list.clear();
    EXPECT_EQ(std::distance(copy.begin(), copy.end()), 300'000);
}

TEST(CryptoList, ServesAsAQueueThatTakesBack)
{
    CCryptoList<std::unique_ptr<int>> queue;
    for (const int value : {1, 2, 3})
        queue.append(std::make_unique<int>(value));
    std::unique_ptr<int> first;
    ASSERT_TRUE(queue.takeFirst(first));
    queue.prepend(std::move(first));
    for (const int value : {1, 2, 3}) {
        ASSERT_TRUE(queue.takeFirst(first));
        EXPECT_EQ(*first, value);
    }
    EXPECT_FALSE(queue.takeFirst(first));
    EXPECT_EQ(*first, 3);
    queue.prepend(nullptr);
    EXPECT_EQ(queue.count(), 1U);
}

TEST(CryptoList, ErasesWhileItIsWalked)
{
    CCryptoList<int> list;
    for (int value = 0; value < 10; ++value)
        list.append(value);
    for (auto place = list.begin(); place != list.end();)
        place = *place % 3 == 0 ? list.erase(place) : std::next(place);
    list.prepend(-1);
    list.append(10);
    EXPECT_EQ(Items(list), (std::vector<int>{-1, 1, 2, 4, 5, 7, 8, 10}));
    EXPECT_EQ(list.count(), 8U);
    EXPECT_EQ(*list.at(7), 10);
    EXPECT_EQ(list.at(8), nullptr);
}

namespace {

class Animal {
public:
    explicit Animal(std::string& diary) : diary_(diary) {}
    virtual ~Animal() { diary_ += "."; }

protected:
    std::string& diary_;
};

class Bird : public Animal {
public:
    Bird(std::string& diary, std::string name) : Animal(diary), name_(std::move(name)) {}
    ~Bird() override { diary_ += name_; }

private:
    std::string name_;
};

} // namespace

TEST(ListIterator, ConvertsToTheOneThatChangesNothing)
{
    using List = CCryptoList<int>;
    static_assert(std::is_convertible_v<List::iterator, List::const_iterator>);
    static_assert(!std::is_convertible_v<List::const_iterator, List::iterator>);
    List list;
    list.append(1);
    const List::const_iterator first = list.begin();
    EXPECT_EQ(*first, 1);
    EXPECT_TRUE(first == list.begin());
}

TEST(Vector, OwnsItsObjects)
{
    std::string diary;
    {
        CCryptoVector<Animal> birds;
        EXPECT_EQ(birds.append(nullptr), nullptr);
        for (const char* name : {"owl", "jay", "tit", "auk"})
            birds.append(std::make_unique<Bird>(diary, name));
        EXPECT_TRUE(birds.removeAt(1));
        EXPECT_FALSE(birds.removeAt(3));
        EXPECT_EQ(diary, "jay.");
        const std::unique_ptr<Animal> taken = birds.take(0);
        EXPECT_EQ(birds.size(), 2U);
        EXPECT_EQ(birds[2], nullptr);
        birds = CCryptoVector<Animal>();
        EXPECT_EQ(diary.size(), 12U);
    }
    EXPECT_EQ(diary.substr(12), "owl.");
}
