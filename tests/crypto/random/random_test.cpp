#include "crypto/random/hmac_drbg.h"
#include "crypto/random/seeded_generator.h"
#include "tests/crypto/base/vector_file.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <set>
#include <thread>

using namespace ccrypto;

TEST(HMACDRBG, GivesTheBytesOfTheVectors)
{
    for (const TestVector& vector : ReadVectors("hmac_drbg.txt")) {
        SCOPED_TRACE(vector.place());
        CCryptoHMACDRBG generator;
        ASSERT_TRUE(generator.instantiate(vector.bytes("Entropy"), vector.bytes("Nonce"), vector.bytes("Personalization")));
        if (const Bytes entropy = vector.bytes("ReseedEntropy"); !entropy.empty()) {
            ASSERT_TRUE(generator.reseed(entropy, vector.bytes("ReseedInput")));
        }
        const Bytes expected = vector.bytes("Bytes");
        Bytes given(expected.size());
        ASSERT_TRUE(generator.generate(given, vector.bytes("FirstInput")));
        ASSERT_TRUE(generator.generate(given, vector.bytes("SecondInput")));
        EXPECT_EQ(Hex(given), Hex(expected));
    }
    EXPECT_TRUE(GeneratorGivesKnownAnswer());
}

TEST(HMACDRBG, RefusesWhatTheStandardForbids)
{
    CCryptoHMACDRBG generator;
    Bytes bytes(40, 1);
    const Bytes tooLong(CCryptoHMACDRBG::maxInput + 1, 1);
    EXPECT_FALSE(generator.generate(bytes));
    EXPECT_EQ(bytes, Bytes(40, 0));
    EXPECT_FALSE(generator.reseed(Bytes(32, 1)));
    EXPECT_FALSE(generator.instantiate(Bytes(15, 1), Bytes(30, 1)));
    EXPECT_FALSE(generator.instantiate(Bytes(16, 1), Bytes(15, 1)));
    EXPECT_FALSE(generator.instantiate(tooLong, {}));
    EXPECT_FALSE(generator.instantiate(Bytes(32, 1), tooLong));
    EXPECT_FALSE(generator.instantiate(Bytes(32, 1), {}, tooLong));
    EXPECT_FALSE(generator.isInstantiated());
    EXPECT_TRUE(generator.instantiate(Bytes(16, 1), Bytes(16, 2)));
    EXPECT_FALSE(generator.reseed(Bytes(15, 1)));
    EXPECT_FALSE(generator.reseed(Bytes(32, 1), tooLong));
    EXPECT_FALSE(generator.generate(bytes, tooLong));
    EXPECT_TRUE(generator.generate(bytes));
    EXPECT_TRUE(generator.generate({}));
    generator.uninstantiate();
    EXPECT_FALSE(generator.generate(bytes));
}

TEST(HMACDRBG, AnswersALongRequestAsSeveral)
{
    CCryptoHMACDRBG one;
    CCryptoHMACDRBG other;
    ASSERT_TRUE(one.instantiate(Bytes(32, 1), Bytes(16, 2)) && other.instantiate(Bytes(32, 1), Bytes(16, 2)));
    constexpr std::size_t limit = CCryptoHMACDRBG::maxBytesOfRequest;
    Bytes whole(limit + 5);
    ASSERT_TRUE(one.generate(whole));
    Bytes first(limit);
    Bytes second(5);
    ASSERT_TRUE(other.generate(first) && other.generate(second));
    first.insert(first.end(), second.begin(), second.end());
    EXPECT_TRUE(whole == first);
}

TEST(HMACDRBG, LeavesNothingInItsMemory)
{
    const CCryptoHMACDRBG fresh;
    CCryptoHMACDRBG used;
    Bytes bytes(20);
    ASSERT_TRUE(used.instantiate(Bytes(32, 1), Bytes(16, 2)) && used.generate(bytes));
    const auto contentOf = [](const CCryptoHMACDRBG& generator) {
        const auto* const first = reinterpret_cast<const std::uint8_t*>(&generator);
        return Hex(Bytes(first, first + sizeof generator));
    };
    EXPECT_NE(contentOf(used), contentOf(fresh));
    used.uninstantiate();
    EXPECT_EQ(contentOf(used), contentOf(fresh));
}

TEST(SeedHealth, FailsPermanentlyWhenABlockRepeats)
{
    const Bytes different = {1, 2, 3, 4, 5, 6, 7, 8, 1, 2, 3, 4, 5, 6, 7, 9};
    const Bytes first(different.begin(), different.begin() + 8);
    const Bytes second(different.begin() + 8, different.end());
    SeedHealth health;
    EXPECT_TRUE(health.check(different));
    EXPECT_TRUE(health.check(different));
    EXPECT_TRUE(health.check(first));
    EXPECT_TRUE(health.check(second));
    EXPECT_FALSE(health.check(second)) << "from one call to the next";
    EXPECT_FALSE(health.check(first));
    EXPECT_FALSE(SeedHealth().check(Bytes(16, 0)));
    EXPECT_TRUE(SeedHealth().check(Bytes(8, 0)));
}

using ccrypto::internal::SeededGenerator;

namespace {

/// Different blocks, as many as are asked for, the same for the same seed; then what a test changes.
struct ScriptedEntropy {
    explicit ScriptedEntropy(std::uint32_t seed) : engine(seed) {}

    bool operator()(std::span<std::uint8_t> bytes)
    {
        asked += bytes.size();
        for (std::uint8_t& byte : bytes)
            byte = isStuck ? 0x5A : static_cast<std::uint8_t>(engine());
        return !isDry;
    }

    std::mt19937 engine;
    std::size_t asked = 0;
    bool isStuck = false;
    bool isDry = false;
};

} // namespace

// Two copies of one generator are what a cloned or restored virtual machine holds.
TEST(SeededGenerator, CopiesPartAtTheNextRequest)
{
    ScriptedEntropy sources[] = {ScriptedEntropy(1), ScriptedEntropy(1)};
    SeededGenerator first(std::ref(sources[0]));
    SeededGenerator second(std::ref(sources[1]));
    Bytes ofFirst(1);
    Bytes ofSecond(1);
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(first.generate(ofFirst) && second.generate(ofSecond));
        EXPECT_EQ(ofFirst, ofSecond);
        ofFirst.resize(20);
        ofSecond.resize(20);
    }
    EXPECT_EQ(sources[0].asked, 48u + 32 + 32);
    sources[1].engine.seed(2);
    ASSERT_TRUE(first.generate(ofFirst) && second.generate(ofSecond));
    EXPECT_NE(ofFirst, ofSecond);
    sources[1] = sources[0];
    ASSERT_TRUE(first.generate(ofFirst) && second.generate(ofSecond));
    EXPECT_NE(ofFirst, ofSecond) << "what one of them took stays in it";
}

TEST(SeededGenerator, GivesNothingFromASourceThatFails)
{
    const Bytes none(20, 0);
    ScriptedEntropy entropy(1);
    SeededGenerator generator(std::ref(entropy));
    Bytes bytes(20, 1);
    ASSERT_TRUE(generator.generate(bytes));
    EXPECT_NE(bytes, none);
    entropy.isDry = true;
    EXPECT_FALSE(generator.generate(bytes));
    EXPECT_EQ(bytes, none);
    entropy.isDry = false;
    const std::size_t before = entropy.asked;
    EXPECT_TRUE(generator.generate(bytes)) << "it may come back";
    EXPECT_EQ(entropy.asked - before, 48u) << "with a new seed";
    entropy.isStuck = true;
    EXPECT_FALSE(generator.generate(bytes));
    EXPECT_EQ(bytes, none);
    entropy.isStuck = false;
    EXPECT_FALSE(generator.generate(bytes)) << "a source that repeated itself has failed permanently";
    EXPECT_TRUE(generator.generate({}));
}

TEST(ProcessRandom, GivesDifferentBytesToEveryThread)
{
    constexpr int threadCount = 4;
    constexpr int drawsEach = 1000;
    std::vector<std::set<Bytes>> drawn(threadCount);
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&mine = drawn[static_cast<std::size_t>(i)]] {
            for (int draw = 0; draw < drawsEach; ++draw) {
                Bytes bytes(16);
                if (ICryptoRandom::Instance().generate(bytes))
                    mine.insert(bytes);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    std::set<Bytes> all;
    for (const std::set<Bytes>& mine : drawn)
        all.insert(mine.begin(), mine.end());
    EXPECT_EQ(all.size(), std::size_t{threadCount} * drawsEach);
    Bytes many((1u << 20) + 100);
    ASSERT_TRUE(ICryptoRandom::Instance().generate(many));
    int counts[256] = {};
    for (const std::uint8_t byte : many)
        ++counts[byte];
    for (const int count : counts)
        EXPECT_NEAR(count, 4096, 800);
}
