#include "core/containers/avl_tree.h"
#include "core/containers/list.h"
#include "core/containers/vector.h"
#include "core/memory/byte_vector.h"
#include "core/text/string_array.h"
#include "tests/support/captured_log.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

using namespace ccrypto;

namespace {

/// The next allocation finds no memory; those after it do.
bool nextFails = false;

void* Allocate(std::size_t size)
{
    return std::exchange(nextFails, false) ? nullptr : std::malloc(size != 0 ? size : 1);
}

void* AllocateOrThrow(std::size_t size)
{
    if (void* const block = Allocate(size))
        return block;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size)
{
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size)
{
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}
void operator delete(void* block) noexcept
{
    std::free(block);
}
void operator delete[](void* block) noexcept
{
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept
{
    std::free(block);
}

namespace {

CCryptoArray<int> ThreeNumbers()
{
    return {1, 2, 3};
}

struct EndCase {
    const char* name;
    void (*grow)();
};

constexpr EndCase endCases[] = {
    {"a plain list",
     [] {
         CList<int> list;
         nextFails = true;
         list.append(1);
     }},
    {"a list",
     [] {
         CCryptoList<int> list;
         list.append(1);
         nextFails = true;
         list.prepend(2);
     }},
    {"a vector",
     [] {
         CCryptoVector<int> vector;
         auto object = std::make_unique<int>(1);
         nextFails = true;
         vector.append(std::move(object));
     }},
    {"a tree",
     [] {
         CAvlTree<int, int> tree;
         nextFails = true;
         tree.Insert(1, 2);
     }},
    {"an array's copy",
     [] {
         const CCryptoArray<int> numbers = ThreeNumbers();
         nextFails = true;
         const CCryptoArray<int> copy(numbers);
     }},
    {"an array's assignment",
     [] {
         const CCryptoArray<int> numbers = ThreeNumbers();
         CCryptoArray<int> copy;
         nextFails = true;
         copy = numbers;
     }},
    {"the parts of a string",
     [] {
         const CCryptoString text("a b");
         nextFails = true;
         const CCryptoStringArray parts(text, " ", false, false);
     }},
    {"the wide form of a string",
     [] {
         CCryptoString text("a");
         nextFails = true;
         static_cast<void>(text.toUtf16());
     }},
    {"a byte vector",
     [] {
         CCryptoByteVector bytes;
         nextFails = true;
         bytes.append("a", 1);
     }},
    {"an element beyond 32 bits", [] { element().makeRoom(std::uint64_t{1} << 32); }},
};

} // namespace

TEST(OutOfMemoryDeathTest, EndsTheProcessWithItsLastWords)
{
    for (const EndCase& each : endCases) {
        SCOPED_TRACE(each.name);
        EXPECT_EXIT(
            {
                const CapturedLog log([](const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); });
                each.grow();
                std::_Exit(0);
            },
            ::testing::ExitedWithCode(1), "FATAL MEMORY ALLOCATION ERROR");
    }
}

TEST(OutOfMemory, LeavesAnArrayAsItWas)
{
    CCryptoArray<int> numbers = ThreeNumbers();
    nextFails = true;
    EXPECT_FALSE(numbers.setSize(4));
    nextFails = true;
    EXPECT_FALSE(numbers.append(4));
    EXPECT_EQ(numbers, ThreeNumbers());
    EXPECT_EQ(numbers.capacity(), 3u);
}

TEST(OutOfMemory, LeavesNoHalfOfATreesCopy)
{
    CAvlTree<int, std::array<char, 100>> tree;
    tree.Insert(1, {});
    CCryptoArray<int> keys = ThreeNumbers();
    CCryptoArray<std::array<char, 100>> values;
    nextFails = true;
    EXPECT_FALSE(tree.CopyTo(keys, values));
    EXPECT_TRUE(keys.isEmpty());
}
