#include "core/memory/byte_vector.h"
#include "core/memory/wiped.h"
#include "core/text/element.h"
#include "core/text/string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

using namespace ccrypto;

// Of the sanitizers' runtime; missing in a build without them.
extern "C" {
[[gnu::weak]] int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                            void (*released)(const volatile void*));
[[gnu::weak]] std::size_t __sanitizer_get_allocated_size(const volatile void* block);
}

namespace {

constexpr std::string_view secret = "the secret that no block of the heap may keep";
bool watching = false;
int released = 0;
int kept = 0;

void LookAtReleased(const volatile void* block)
{
    if (!watching || block == nullptr)
        return;
    const auto* const bytes = static_cast<const char*>(const_cast<const void*>(block));
    const std::string_view content(bytes, __sanitizer_get_allocated_size(block));
    ++released;
    if (content.find(secret.substr(0, 10)) != std::string_view::npos)
        ++kept;
}

struct ReleaseCase {
    const char* name;
    void (*work)();
};

constexpr ReleaseCase releaseCases[] = {
    {"an element that goes", [] { const element bytes(secret); }},
    {"an element that grows",
     [] {
         element bytes(secret);
         bytes.reserve(100000);
         bytes.clear();
     }},
    {"an element that is assigned to",
     [] {
         element bytes(secret);
         bytes = element(std::string(1000, 'x'));
     }},
    {"a string", [] { const CCryptoString text(secret); }},
    {"a byte vector that goes", [] { const CCryptoByteVector bytes(secret.data(), secret.size()); }},
    {"a byte vector that grows",
     [] {
         CCryptoByteVector bytes(secret.data(), secret.size());
         bytes.append(secret.data(), secret.size());
     }},
    {"a wiped array",
     [] {
         WipedArray<char> characters(secret.size());
         std::ranges::copy(secret, characters.begin());
     }},
};

} // namespace

TEST(ReleasedBytes, HoldNoSecret)
{
    if (__sanitizer_install_malloc_and_free_hooks == nullptr)
        GTEST_SKIP() << "no sanitizer shows released memory";
    [[maybe_unused]] static const int installed =
        __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t) {}, LookAtReleased);
    for (const ReleaseCase& each : releaseCases) {
        SCOPED_TRACE(each.name);
        released = kept = 0;
        watching = true;
        each.work();
        watching = false;
        EXPECT_GT(released, 0);
        EXPECT_EQ(kept, 0);
    }
    // That the test would see one: wiping can be turned off.
    element::WipeReleasedBuffers(false);
    watching = true;
    {
        const element bytes(secret);
    }
    watching = false;
    element::WipeReleasedBuffers(true);
    EXPECT_EQ(kept, 1);
}
