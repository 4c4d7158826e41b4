#include "core/base/algorithm.h"
#include "crypto/hash/hash_kinds.h"
#include "crypto/hash/keccak.h"
#include "crypto/hash/shake.h"

#include <algorithm>

using namespace ccrypto;

namespace {

constexpr std::uint8_t sha3Suffix = 0x06;
constexpr std::uint8_t shakeSuffix = 0x1F;

struct SpongeKind {
    const char* name;
    algorithm::Id id;
    std::uint32_t digestSize;
    std::uint32_t rate;
    std::uint8_t suffix;
};

// FIPS 202, 6.1; the digests of SHAKE are as long as RFC 8702, 3.1 has them.
constexpr SpongeKind spongeKinds[] = {
    {"SHA3-224", algorithm::sha3_224, 28, 144, sha3Suffix},  {"SHA3-256", algorithm::sha3_256, 32, 136, sha3Suffix},
    {"SHA3-384", algorithm::sha3_384, 48, 104, sha3Suffix},  {"SHA3-512", algorithm::sha3_512, 64, 72, sha3Suffix},
    {"SHAKE128", algorithm::shake128, 32, 168, shakeSuffix}, {"SHAKE256", algorithm::shake256, 64, 136, shakeSuffix},
};

class SpongeHash : public ICryptoHash {
public:
    explicit SpongeHash(const SpongeKind& kind) : kind_(kind), sponge_(kind.rate, kind.suffix) {}

    void reset() override { sponge_.reset(); }
    using ICryptoHash::update;
    void update(const void* bytes, std::size_t length) override { sponge_.absorb(static_cast<const std::uint8_t*>(bytes), length); }
    using ICryptoHash::final;
    void final(std::uint8_t* digest) override
    {
        sponge_.squeeze({digest, kind_.digestSize});
        reset();
    }

    std::uint32_t digestSize() const override { return kind_.digestSize; }
    std::uint32_t blockSize() const override { return kind_.rate; }
    algorithm::Id algorithmId() const override { return kind_.id; }
    const char* name() const override { return kind_.name; }
    std::unique_ptr<ICryptoHash> clone() const override { return std::make_unique<SpongeHash>(*this); }

    bool assign(const ICryptoHash& other) override
    {
        const auto* same = dynamic_cast<const SpongeHash*>(&other);
        if (same == nullptr || &same->kind_ != &kind_)
            return false;
        sponge_ = same->sponge_;
        return true;
    }

private:
    const SpongeKind& kind_;
    ccrypto::internal::KeccakSponge sponge_;
};

} // namespace

namespace ccrypto {

std::unique_ptr<ICryptoHash> ccrypto::internal::NewSpongeHash(algorithm::Id id)
{
    const auto* const kind = std::ranges::find(spongeKinds, id, &SpongeKind::id);
    return kind != std::end(spongeKinds) ? std::make_unique<SpongeHash>(*kind) : nullptr;
}

} // namespace ccrypto

void CCryptoSHAKE::update(const void* bytes, std::size_t length)
{
    if (sponge_.isSqueezing())
        reset();
    sponge_.absorb(static_cast<const std::uint8_t*>(bytes), length);
}

element CCryptoSHAKE::outputOf(std::span<const std::uint8_t> message, std::uint32_t length)
{
    reset();
    update(message);
    element output;
    output.resize(length);
    squeeze({output.data(), length});
    reset();
    return output;
}
