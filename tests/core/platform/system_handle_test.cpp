#include "core/platform/system_handle.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>
#include <vector>

namespace {

std::vector<int> closed;

struct NumberKind {
    using Value = int;
    static Value none() { return -1; }
    static void close(Value value) { closed.push_back(value); }
};

/// Two values stand for none, as with Windows' handles.
struct TwoNonesKind : NumberKind {
    static bool isNone(Value value) { return value == 0 || value == -1; }
};

template <typename Kind>
using Handle = ccrypto::SystemHandle<Kind>;

class SystemHandleTest : public ::testing::Test {
protected:
    SystemHandleTest() { closed.clear(); }
};

} // namespace

TEST_F(SystemHandleTest, ClosesEachHandleOnce)
{
    static_assert(!std::is_copy_constructible_v<Handle<NumberKind>> && std::is_nothrow_move_assignable_v<Handle<NumberKind>>);
    {
        Handle<NumberKind> first(1);
        Handle<NumberKind> second(2);
        second = std::move(first);
        EXPECT_FALSE(first);
        EXPECT_EQ(closed, std::vector<int>({2}));
        Handle<NumberKind>& same = second;
        second = std::move(same);
        EXPECT_EQ(second.get(), 1);
        const Handle<NumberKind> third(std::move(second));
        second.reset(3);
        EXPECT_EQ(second.release(), 3);
        *second.receive() = 4;
        *second.receive() = 5;
        EXPECT_EQ(closed, std::vector<int>({2, 4}));
    }
    EXPECT_EQ(closed, std::vector<int>({2, 4, 1, 5}));
}

TEST_F(SystemHandleTest, NothingIsClosedForNone)
{
    {
        const Handle<NumberKind> empty;
        const Handle<NumberKind> zero(0);
        const Handle<TwoNonesKind> nothing(0);
        EXPECT_FALSE(empty);
        EXPECT_TRUE(zero);
        EXPECT_FALSE(nothing);
    }
    EXPECT_EQ(closed, std::vector<int>({0}));
}
