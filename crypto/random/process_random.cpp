#include "core/log/log_writers.h"
#include "core/platform/process.h"
#include "core/platform/random_bytes.h"
#include "core/platform/secure_wipe.h"
#include "crypto/random/hmac_drbg.h"
#include "crypto/random/seed_health.h"

#include <algorithm>
#include <atomic>
#include <cstring>

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

namespace {

/// A generator with a seed from the operating system, and when that must be renewed.
class SeededGenerator {
public:
    bool generate(std::span<std::uint8_t> bytes)
    {
        while (!bytes.empty()) {
            if (!makeReady())
                return false;
            const std::size_t count = std::min(bytes.size(), bytesOfSeed - given_);
            if (!generator_.generate(bytes.first(count)))
                return false;
            given_ += count;
            ++requests_;
            bytes = bytes.subspan(count);
        }
        return true;
    }

private:
    /// What one seed may give.
    static constexpr std::size_t bytesOfSeed = std::size_t{1} << 20;
    static constexpr std::uint32_t requestsOfSeed = 4096;
    /// Entropy and nonce.
    static constexpr std::size_t seedLength = CCryptoHMACDRBG::seedBytes + 16;

    bool makeReady()
    {
        // A child process has the same state as its parent, until it is seeded anew.
        const std::uint32_t process = platform::CurrentProcessId();
        const bool fresh = generator_.isInstantiated() && process == process_;
        if (fresh && given_ < bytesOfSeed && requests_ < requestsOfSeed)
            return true;
        std::uint8_t seed[seedLength];
        const bool seeded = takeSeed(seed);
        platform::SecureWipe(seed);
        if (!seeded) {
            generator_.uninstantiate();
            return false;
        }
        process_ = process;
        given_ = 0;
        requests_ = 0;
        return true;
    }

    bool takeSeed(std::uint8_t (&seed)[seedLength])
    {
        if (!GeneratorGivesKnownAnswer()) {
            WriteErrorEx_G("Random numbers: the generator does not give the answer that is known");
            return false;
        }
        if (!platform::RandomBytes(seed, sizeof seed)) {
            WriteErrorEx_G("Random numbers: the operating system gives none (%u)", platform::LastError());
            return false;
        }
        if (!health_.check(seed)) {
            WriteErrorEx_G("Random numbers: the operating system repeats itself");
            return false;
        }
        const std::span<const std::uint8_t> all(seed);
        if (generator_.isInstantiated())
            return generator_.reseed(all);
        return generator_.instantiate(all.first(CCryptoHMACDRBG::seedBytes), all.subspan(CCryptoHMACDRBG::seedBytes));
    }

    CCryptoHMACDRBG generator_;
    SeedHealth health_;
    std::uint32_t process_ = 0;
    std::size_t given_ = 0;
    std::uint32_t requests_ = 0;
};

/// Who finds the generator busy, be it with another thread or with one that a fork left behind, takes one of its own for the
/// moment: nobody waits, and no child can hang.
class ProcessRandom : public ICryptoRandom {
public:
    bool generate(std::span<std::uint8_t> bytes) override
    {
        bool done = false;
        if (!busy_.test_and_set(std::memory_order_acquire)) {
            done = generator_.generate(bytes);
            busy_.clear(std::memory_order_release);
        } else {
            SeededGenerator own;
            done = own.generate(bytes);
        }
        if (!done)
            platform::SecureWipe(bytes.data(), bytes.size());
        return done;
    }

private:
    std::atomic_flag busy_;
    SeededGenerator generator_;
};

} // namespace

ICryptoRandom& ICryptoRandom::Instance()
{
    static ProcessRandom instance;
    return instance;
}
