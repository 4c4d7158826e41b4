#include "crypto/hash/hash.h"

#include "core/base/algorithm.h"
#include "core/base/ascii.h"
#include "core/diagnostics/auto_logger.h"
#include "core/memory/wiped.h"
#include "crypto/hash/hash_kinds.h"

#include <array>
#include <cstring>
#include <string>

using namespace ccrypto;

namespace {

template <typename Word>
class BlockHash : public ICryptoHash {
public:
    explicit BlockHash(const BlockHashKind<Word>& kind) : kind_(kind), compress_(kind.compress()) { start(); }

    void reset() override
    {
        platform::SecureWipe(block_.data(), block_.size());
        start();
    }

    using ICryptoHash::update;
    void update(const void* bytes, std::size_t length) override
    {
        const auto* next = static_cast<const std::uint8_t*>(bytes);
        length_ += length;
        if (waiting_ != 0) {
            const std::size_t taken = std::min(length, block_.size() - waiting_);
            if (taken != 0)
                std::memcpy(block_.data() + waiting_, next, taken);
            waiting_ += taken;
            next += taken;
            length -= taken;
            if (waiting_ != block_.size())
                return;
            compress_(state_.data(), block_.data(), 1);
            waiting_ = 0;
        }
        if (const std::size_t blocks = length / block_.size(); blocks != 0) {
            compress_(state_.data(), next, blocks);
            next += blocks * block_.size();
            length -= blocks * block_.size();
        }
        if (length != 0)
            std::memcpy(block_.data(), next, length);
        waiting_ = length;
    }

    using ICryptoHash::final;
    void final(std::uint8_t* digest) override
    {
        block_[waiting_++] = 0x80;
        std::memset(block_.data() + waiting_, 0, block_.size() - waiting_);
        if (waiting_ > block_.size() - kind_.lengthSize) {
            compress_(state_.data(), block_.data(), 1);
            std::memset(block_.data(), 0, block_.size());
        }
        kind_.storeLength(block_.data(), length_);
        compress_(state_.data(), block_.data(), 1);
        kind_.storeWords(digest, state_.data(), kind_.digestWords());
        reset();
    }

    std::uint32_t digestSize() const override { return kind_.digestSize; }
    std::uint32_t blockSize() const override { return kind_.blockSize; }
    algorithm::Id algorithmId() const override { return kind_.id; }
    const char* name() const override { return kind_.name; }
    std::unique_ptr<ICryptoHash> clone() const override { return std::make_unique<BlockHash>(*this); }

    bool assign(const ICryptoHash& other) override
    {
        const auto* same = dynamic_cast<const BlockHash*>(&other);
        if (same == nullptr || &same->kind_ != &kind_)
            return false;
        state_ = same->state_;
        block_ = same->block_;
        waiting_ = same->waiting_;
        length_ = same->length_;
        return true;
    }

private:
    void start()
    {
        std::copy_n(kind_.initial, state_.size(), state_.begin());
        waiting_ = 0;
        length_ = 0;
    }

    const BlockHashKind<Word>& kind_;
    CompressBlocks<Word> compress_;
    Wiped<std::array<Word, 8>> state_{};
    Wiped<std::array<std::uint8_t, BlockHashKind<Word>::blockSize>> block_{};
    std::size_t waiting_ = 0; ///< bytes at the front of block_
    std::uint64_t length_ = 0;
};

/// The digests of two hashes, one after the other (RFC 4346, 4.8).
class MD5AndSHA1 : public ICryptoHash {
public:
    void reset() override
    {
        md5_.reset();
        sha1_.reset();
    }
    using ICryptoHash::update;
    void update(const void* bytes, std::size_t length) override
    {
        md5_.update(bytes, length);
        sha1_.update(bytes, length);
    }
    using ICryptoHash::final;
    void final(std::uint8_t* digest) override
    {
        md5_.final(digest);
        sha1_.final(digest + md5_.digestSize());
    }

    std::uint32_t digestSize() const override { return md5_.digestSize() + sha1_.digestSize(); }
    std::uint32_t blockSize() const override { return md5_.blockSize(); }
    algorithm::Id algorithmId() const override { return algorithm::md5Sha1; }
    const char* name() const override { return "MD5-SHA-1"; }
    std::unique_ptr<ICryptoHash> clone() const override { return std::make_unique<MD5AndSHA1>(*this); }
    bool assign(const ICryptoHash& other) override
    {
        const auto* same = dynamic_cast<const MD5AndSHA1*>(&other);
        return same != nullptr && md5_.assign(same->md5_) && sha1_.assign(same->sha1_);
    }

private:
    BlockHash<std::uint32_t> md5_{md5Kind};
    BlockHash<std::uint32_t> sha1_{sha1Kind};
};

/// The name in small letters, without "-".
std::string Plain(std::string_view name)
{
    std::string plain;
    for (const char character : name)
        if (character != '-')
            plain += ToSmall(character);
    return plain;
}

/// Enough for "-" between all characters.
constexpr std::size_t maxHashName = 32;

struct HashName {
    std::string_view plain;
    algorithm::Id id;
};

constexpr HashName hashNames[] = {
    {"md5", algorithm::md5},           {"sha1", algorithm::sha1},        {"sha224", algorithm::sha224},
    {"sha256", algorithm::sha256},     {"sha384", algorithm::sha384},    {"sha512", algorithm::sha512},
    {"md5sha1", algorithm::md5Sha1},   {"sha3224", algorithm::sha3_224}, {"sha3256", algorithm::sha3_256},
    {"sha3384", algorithm::sha3_384},  {"sha3512", algorithm::sha3_512}, {"shake128", algorithm::shake128},
    {"shake256", algorithm::shake256},
};

std::unique_ptr<ICryptoHash> New(algorithm::Id id)
{
    if (id == algorithm::md5Sha1)
        return std::make_unique<MD5AndSHA1>();
    if (auto hash = ccrypto::internal::NewSpongeHash(id))
        return hash;
    return WithHashKind(id, std::unique_ptr<ICryptoHash>(), [](const auto& kind) -> std::unique_ptr<ICryptoHash> {
        return std::make_unique<BlockHash<std::decay_t<decltype(kind.initial[0])>>>(kind);
    });
}

} // namespace

std::unique_ptr<ICryptoHash> ICryptoHash::Create(algorithm::Id id)
{
    if (auto hash = New(id))
        return hash;
    CCryptoAutoLogger logger("ICryptoHash::Create");
    return logger.fail(std::unique_ptr<ICryptoHash>(), "Unsupported hash function: %d", static_cast<int>(id));
}

std::unique_ptr<ICryptoHash> ICryptoHash::CreateByName(std::string_view name)
{
    // Text from outside may be of any length.
    const std::string plain = name.size() <= maxHashName ? Plain(name) : std::string();
    if (plain == "md4")
        return std::make_unique<BlockHash<std::uint32_t>>(md4Kind);
    for (const HashName& row : hashNames)
        if (row.plain == plain)
            return New(row.id);
    CCryptoAutoLogger logger("ICryptoHash::CreateByName");
    return logger.fail(std::unique_ptr<ICryptoHash>(), "Unknown hash function");
}

bool ICryptoHash::isExtendable() const
{
    return algorithmId() == algorithm::shake128 || algorithmId() == algorithm::shake256;
}

element ICryptoHash::final()
{
    element digest;
    digest.resize(digestSize());
    final(digest.data());
    return digest;
}

element ICryptoHash::digestOf(std::span<const std::uint8_t> bytes)
{
    reset();
    update(bytes);
    return final();
}
