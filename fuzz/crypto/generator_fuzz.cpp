#include "crypto/random/hmac_drbg.h"
#include "fuzz/require.h"

#include <algorithm>
#include <initializer_list>
#include <span>
#include <vector>

using namespace ccrypto;

namespace {

using Bytes = std::span<const std::uint8_t>;
using Buffer = std::vector<std::uint8_t>;

/// HMAC_DRBG as SP 800-90A, 10.1.2, writes it, without limits.
class NaiveGenerator {
public:
    NaiveGenerator(Bytes entropy, Bytes nonce) { update({entropy, nonce}); }

    void reseed(Bytes entropy) { update({entropy}); }

    Buffer generate(std::size_t length, Bytes additional)
    {
        if (!additional.empty())
            update({additional});
        Buffer output;
        while (output.size() < length) {
            value_ = macOf({value_});
            output.insert(output.end(), value_.begin(), value_.end());
        }
        output.resize(length);
        update({additional});
        return output;
    }

private:
    Buffer macOf(std::initializer_list<Bytes> parts)
    {
        const auto mac = CCryptoHMAC::Create(algorithm::sha256);
        mac->setKey(key_);
        for (const Bytes part : parts)
            mac->update(part);
        const element made = mac->final();
        return {made.data(), made.data() + made.length()};
    }

    void update(std::initializer_list<Bytes> provided)
    {
        Buffer all;
        for (const Bytes part : provided)
            all.insert(all.end(), part.begin(), part.end());
        for (const std::uint8_t mark : {std::uint8_t{0}, std::uint8_t{1}}) {
            if (mark == 1 && all.empty())
                return;
            key_ = macOf({value_, {&mark, 1}, all});
            value_ = macOf({value_});
        }
    }

    Buffer key_ = Buffer(32, 0);
    Buffer value_ = Buffer(32, 1);
};

} // namespace

/// A seed, then requests of two bytes each: what to do, and how long.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t seedLength = 48;
    if (size < seedLength)
        return 0;
    const Bytes entropy(data, 32);
    const Bytes nonce(data + 32, 16);
    CCryptoHMACDRBG generator;
    Require(generator.instantiate(entropy, nonce));
    NaiveGenerator naive(entropy, nonce);
    for (std::size_t at = seedLength; at + 2 <= size; at += 2) {
        const std::size_t length = data[at + 1];
        if (data[at] % 4 == 0) {
            const Bytes fresh(data, std::min<std::size_t>(seedLength, length));
            if (generator.reseed(fresh))
                naive.reseed(fresh);
            else
                Require(fresh.size() < 16);
            continue;
        }
        const Bytes additional = data[at] % 4 == 1 ? Bytes(data + at, 2) : Bytes();
        Buffer given(length);
        Require(generator.generate(given, additional));
        // A request of nothing is none, and leaves the state.
        Require(length == 0 || given == naive.generate(length, additional));
    }
    return 0;
}
