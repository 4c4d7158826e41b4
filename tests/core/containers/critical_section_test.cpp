#include "core/containers/critical_section.h"
#include "core/platform/process.h"
#include "tests/support/captured_log.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstdio>
#include <functional>
#include <future>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace ccrypto;

using ::testing::ContainsRegex;

namespace {

using Lines = std::vector<std::string>;

/// Memory for a section that no constructor has touched.
struct SectionMemory {
    alignas(CCryptoCS) unsigned char bytes[sizeof(CCryptoCS)]{};

    CCryptoCS* section() { return reinterpret_cast<CCryptoCS*>(bytes); }
};

constinit CCryptoCS constantSection("constant");

// A std::async of each lambda would double the time that this file takes to compile.
std::future<bool> OnAnotherThread(std::function<bool()> work)
{
    return std::async(std::launch::async, std::move(work));
}

bool FreeForOthers(CCryptoCS& section)
{
    return OnAnotherThread([&] { return CCryptoCSLock(&section, LockMode::trying).held(); }).get();
}

std::string ThreadId()
{
    char text[20];
    std::snprintf(text, sizeof(text), "%04X", static_cast<unsigned>(platform::CurrentThreadId()));
    return text;
}

} // namespace

TEST(CriticalSection, IsHeldForTheScope)
{
    const CapturedLog log;
    CCryptoCS section("section");
    {
        const CCryptoCSLock outer(&section);
        const CCryptoCSLock inner(&section, LockMode::trying);
        EXPECT_TRUE(outer.held());
        EXPECT_TRUE(inner.held());
    }
    EXPECT_TRUE(FreeForOthers(section));
    EXPECT_FALSE(CCryptoCSLock(nullptr).held());
    EXPECT_EQ(log.texts(), Lines());
}

TEST(CriticalSection, TryingSkipsABusySection)
{
    const CapturedLog log;
    CCryptoCS section("busy one");
    const CCryptoCSLock outer(&section);
    {
        const CCryptoCSLock inner(&section);
        EXPECT_FALSE(FreeForOthers(section));
    }
    EXPECT_FALSE(FreeForOthers(section));
    const std::string start = "Skipping \\(busy one\\); Waiting thread " + ThreadId() + ", lockCount=.+, recursionCount=";
    const Lines texts = log.texts();
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_THAT(texts[0], ContainsRegex(start + "2$"));
    EXPECT_THAT(texts[1], ContainsRegex(start + "1$"));
}

TEST(CriticalSection, BlockingIsLoggedBeforeTheWait)
{
    CCryptoCS section("busy one");
    std::promise<std::string> said;
    const CapturedLog log([&](const std::string& text) { said.set_value(text); });
    std::future<bool> waiting;
    {
        const CCryptoCSLock lock(&section);
        waiting = OnAnotherThread([&] { return CCryptoCSLock(&section).held(); });
        // Comes while the section is still held, or never.
        const std::string start = "Blocking \\(busy one\\); Waiting thread " + ThreadId();
        EXPECT_THAT(said.get_future().get(), ContainsRegex(start + ", lockCount=.+, recursionCount=1$"));
    }
    EXPECT_TRUE(waiting.get());
    EXPECT_TRUE(FreeForOthers(section));
}

TEST(CriticalSection, AMessageAboutTheLogsOwnSectionLeadsToNoOther)
{
    CCryptoCS section("outer");
    CCryptoCS ofTheLog("of the log");
    std::promise<void> writing;
    // A log whose lines need a section that is busy, too.
    const CapturedLog log([&](const std::string&) {
        writing.set_value();
        EXPECT_TRUE(CCryptoCSLock(&ofTheLog).held());
    });
    std::future<bool> waiting;
    {
        const CCryptoCSLock outer(&section);
        const CCryptoCSLock inner(&ofTheLog);
        waiting = OnAnotherThread([&] { return CCryptoCSLock(&section).held(); });
        writing.get_future().get();
    }
    EXPECT_TRUE(waiting.get());
    const Lines texts = log.texts();
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_TRUE(texts[0].starts_with("Blocking (outer)")) << texts[0];
}

TEST(CriticalSection, ZeroFilledMemoryIsASection)
{
    SectionMemory memory;
    CCryptoCS& section = *memory.section();
    {
        const CCryptoCSLock lock(&section);
        EXPECT_TRUE(lock.held());
        EXPECT_FALSE(FreeForOthers(section));
    }
    EXPECT_TRUE(FreeForOthers(section));
    EXPECT_TRUE(CCryptoCSLock(&constantSection).held());
    section.~CCryptoCS();
}

TEST(CriticalSection, EightThreadsMayRaceForTheFirstLock)
{
    constexpr int threadCount = 8;
    for (int round = 0; round < 50; ++round) {
        SectionMemory memory;
        // A std::barrier may lose a wake-up in this compiler's library for Windows.
        std::atomic<int> missing{threadCount};
        int sum = 0;
        std::vector<std::thread> threads;
        for (int index = 0; index < threadCount; ++index)
            threads.emplace_back([&] {
                --missing;
                while (missing > 0)
                    std::this_thread::yield();
                const CCryptoCSLock lock(memory.section());
                sum += lock.held() ? 1 : 0;
            });
        for (std::thread& thread : threads)
            thread.join();
        ASSERT_EQ(sum, threadCount);
        memory.section()->~CCryptoCS();
    }
}

TEST(CriticalSection, ADestroyedSectionIsRefused)
{
    const CapturedLog log;
    SectionMemory memory;
    CCryptoCS* const section = new (memory.bytes) CCryptoCS("gone");
    EXPECT_TRUE(CCryptoCSLock(section).held());
    section->~CCryptoCS();
    EXPECT_FALSE(CCryptoCSLock(section).held());
    EXPECT_FALSE(CCryptoCSLock(section, LockMode::trying).held());
    EXPECT_EQ(log.texts(), (Lines{"CS already destroyed", "CS already destroyed"}));
}

TEST(CriticalSection, DestructionWhileOwnedIsReported)
{
    const CapturedLog log;
    SectionMemory memory;
    CCryptoCS* const section = new (memory.bytes) CCryptoCS("gone");
    {
        const CCryptoCSLock lock(section);
        section->~CCryptoCS();
    }
    EXPECT_EQ(log.texts(), (Lines{"ERROR: CCryptoCS::~CCryptoCS: CS owned while being destructed", "CS already destroyed"}));
}

TEST(CriticalSection, DestroyedWhileAnotherThreadOwnsItLetsTheWaitingGo)
{
    std::promise<void> blocked;
    const CapturedLog log([&](const std::string& text) {
        if (text.starts_with("Blocking"))
            blocked.set_value();
    });
    SectionMemory memory;
    CCryptoCS* const section = new (memory.bytes) CCryptoCS("gone");
    std::future<bool> waiting;
    {
        const CCryptoCSLock lock(section);
        waiting = OnAnotherThread([&] { return CCryptoCSLock(section).held(); });
        blocked.get_future().wait();
        std::thread([&] { section->~CCryptoCS(); }).join();
    }
    EXPECT_FALSE(waiting.get());
    Lines texts = log.texts();
    ASSERT_FALSE(texts.empty());
    texts[0].resize(std::string("Blocking (gone)").size());
    EXPECT_EQ(texts, (Lines{"Blocking (gone)", "ERROR: CCryptoCS::~CCryptoCS: CS owned while being destructed",
                            "CS already destroyed", "CS already destroyed"}));
}

TEST(CriticalSection, OnlyTheOwnerReleases)
{
    const CapturedLog log;
    CCryptoCS section("section");
    alignas(CCryptoCSLock) unsigned char bytes[sizeof(CCryptoCSLock)];
    CCryptoCSLock* const lock = new (bytes) CCryptoCSLock(&section);
    std::thread([&] { lock->~CCryptoCSLock(); }).join();
    EXPECT_EQ(log.texts(), (Lines{"ERROR: Critical section not owned (section)"}));
    EXPECT_FALSE(FreeForOthers(section));
    lock->~CCryptoCSLock();
    EXPECT_TRUE(FreeForOthers(section));
}
