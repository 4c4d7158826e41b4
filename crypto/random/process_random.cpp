#include "core/log/log_writers.h"
#include "core/memory/wiped.h"
#include "core/platform/process.h"
#include "core/platform/random_bytes.h"
#include "core/platform/secure_wipe.h"
#include "crypto/random/seeded_generator.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

using namespace ccrypto;

namespace ccrypto {

SeedHealth::~SeedHealth()
{
    platform::SecureWipe(last_);
}

bool SeedHealth::check(std::span<const std::uint8_t> seed)
{
    for (; seed.size() >= blockBytes; seed = seed.subspan(blockBytes)) {
        failed_ |= any_ && std::memcmp(last_, seed.data(), blockBytes) == 0;
        std::copy_n(seed.data(), blockBytes, last_);
        any_ = true;
    }
    return !failed_;
}

bool GeneratorGivesKnownAnswer()
{
    // The nonce of RFC 6979, A.2.5, for SHA-256 and the message "sample": it comes from this very generator.
    static constexpr std::uint8_t entropy[] = {0xC9, 0xAF, 0xA9, 0xD8, 0x45, 0xBA, 0x75, 0x16, 0x6B, 0x5C, 0x21,
                                               0x57, 0x67, 0xB1, 0xD6, 0x93, 0x4E, 0x50, 0xC3, 0xDB, 0x36, 0xE8,
                                               0x9B, 0x12, 0x7B, 0x8A, 0x62, 0x2B, 0x12, 0x0F, 0x67, 0x21};
    static constexpr std::uint8_t nonce[] = {0xAF, 0x2B, 0xDB, 0xE1, 0xAA, 0x9B, 0x6E, 0xC1, 0xE2, 0xAD, 0xE1,
                                             0xD6, 0x94, 0xF4, 0x1F, 0xC7, 0x1A, 0x83, 0x1D, 0x02, 0x68, 0xE9,
                                             0x89, 0x15, 0x62, 0x11, 0x3D, 0x8A, 0x62, 0xAD, 0xD1, 0xBF};
    static constexpr std::uint8_t answer[] = {0xA6, 0xE3, 0xC5, 0x7D, 0xD0, 0x1A, 0xBE, 0x90, 0x08, 0x65, 0x38,
                                              0x39, 0x83, 0x55, 0xDD, 0x4C, 0x3B, 0x17, 0xAA, 0x87, 0x33, 0x82,
                                              0xB0, 0xF2, 0x4D, 0x61, 0x29, 0x49, 0x3D, 0x8A, 0xAD, 0x60};
    static const bool right = [] {
        CCryptoHMACDRBG generator;
        std::uint8_t given[sizeof answer] = {};
        return generator.instantiate(entropy, nonce) && generator.generate(given) && std::memcmp(given, answer, sizeof answer) == 0;
    }();
    return right;
}

} // namespace ccrypto

namespace ccrypto::internal {

bool SeededGenerator::takeSeed()
{
    const auto refuse = [](const char* reason) {
        WriteErrorEx_G("Random numbers: %s", reason);
        return false;
    };
    if (!GeneratorGivesKnownAnswer())
        return refuse("the generator does not give the answer that is known");
    // A child must not share a state with its parent.
    if (const std::uint64_t fork = platform::ForkGeneration(); fork != fork_) {
        generator_.uninstantiate();
        fork_ = fork;
    }
    constexpr std::size_t nonceBytes = 16;
    Wiped<std::array<std::uint8_t, CCryptoHMACDRBG::seedBytes + nonceBytes>> seed;
    const std::span<std::uint8_t> entropy = std::span(seed).first(CCryptoHMACDRBG::seedBytes);
    const std::span<std::uint8_t> nonce = std::span(seed).last(nonceBytes);
    const bool isNew = !generator_.isInstantiated();
    const std::span<std::uint8_t> wanted = isNew ? std::span<std::uint8_t>(seed) : entropy;
    if (!source_(wanted))
        return refuse("the operating system gives none");
    if (!health_.check(wanted))
        return refuse("the operating system repeats itself");
    return isNew ? generator_.instantiate(entropy, nonce) : generator_.reseed(entropy);
}

bool SeededGenerator::generate(std::span<std::uint8_t> bytes)
{
    if (bytes.empty() || (takeSeed() && generator_.generate(bytes)))
        return true;
    platform::SecureWipe(bytes.data(), bytes.size());
    generator_.uninstantiate();
    return false;
}

} // namespace ccrypto::internal

namespace {

bool BytesOfTheSystem(std::span<std::uint8_t> bytes)
{
    if (platform::RandomBytes(bytes.data(), bytes.size()))
        return true;
    WriteErrorEx_G("Random numbers: error %u of the operating system", platform::LastError());
    return false;
}

/// A thread that finds the generator busy makes one for its request, so none waits, and none hangs in a child that was forked while
/// another thread held the generator.
class ProcessRandom : public ICryptoRandom {
public:
    bool generate(std::span<std::uint8_t> bytes) override
    {
        if (busy_.test_and_set(std::memory_order_acquire))
            return SeededGenerator(BytesOfTheSystem).generate(bytes);
        const bool done = generator_.generate(bytes);
        busy_.clear(std::memory_order_release);
        return done;
    }

private:
    using SeededGenerator = ccrypto::internal::SeededGenerator;

    std::atomic_flag busy_;
    SeededGenerator generator_{BytesOfTheSystem};
};

} // namespace

ICryptoRandom& ICryptoRandom::Instance()
{
    static ProcessRandom instance;
    return instance;
}
