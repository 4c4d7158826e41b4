#pragma once

#include "core/base/algorithm.h"
#include "core/memory/wiped.h"
#include "crypto/cipher/block_cipher.h"
#include "crypto/cipher/cipher.h"

#include <array>
#include <memory>

namespace ccrypto {

/// What the table of ciphers says about one of them.
struct CipherDescription {
    const char* name;
    algorithm::Id id;
    std::size_t keySize; ///< usual length in bytes
    std::size_t minKey;  ///< lengths the block cipher may have besides are refused
    std::size_t maxKey;
};

/// One block of text or chain, wiped at the end.
using CipherBlock = Wiped<std::array<std::uint8_t, maxCipherBlock>>;

/// What all modes over a block cipher share: lengths, names and the life of a text.
class BlockCipherMode : public ICryptoCipher {
public:
    std::size_t keySize() const override { return description_.keySize; }
    algorithm::Id algorithmId() const override { return description_.id; }
    const char* name() const override { return description_.name; }
    std::size_t ivSize() const override { return cipher_->blockSize(); }
    [[nodiscard]] bool setEffectiveKeyBits(std::uint32_t bits) override;

    [[nodiscard]] bool start(CipherDirection direction, std::span<const std::uint8_t> key,
                             std::span<const std::uint8_t> iv) override;

protected:
    BlockCipherMode(const CipherDescription& description, std::unique_ptr<ICryptoBlockCipher> cipher)
        : description_(description), cipher_(std::move(cipher))
    {
    }

    const ICryptoBlockCipher& cipher() const { return *cipher_; }
    bool encrypting() const { return direction_ == CipherDirection::encrypt; }
    bool started() const { return started_; }
    void forget() override;

    CipherBlock chain_{};
    /// Bytes of a block that is not whole yet, or of key stream.
    CipherBlock pending_{};
    std::size_t pendingCount_ = 0;

private:
    const CipherDescription& description_;
    std::unique_ptr<ICryptoBlockCipher> cipher_;
    CipherDirection direction_ = CipherDirection::encrypt;
    bool started_ = false;
};

/// ECB and CBC (SP 800-38A, 6.1 and 6.2): whole blocks, padded.
class WholeBlockMode final : public BlockCipherMode {
public:
    WholeBlockMode(const CipherDescription& description, std::unique_ptr<ICryptoBlockCipher> cipher, bool chained)
        : BlockCipherMode(description, std::move(cipher)), chained_(chained)
    {
    }

    void setPadding(bool padding) override { nextPadding_ = padding; }
    std::size_t blockSize() const override { return cipher().blockSize(); }
    std::size_t ivSize() const override { return chained_ ? cipher().blockSize() : 0; }
    [[nodiscard]] bool start(CipherDirection direction, std::span<const std::uint8_t> key,
                             std::span<const std::uint8_t> iv) override;
    [[nodiscard]] bool update(std::span<const std::uint8_t> in, std::uint8_t* out, std::size_t& written) override;
    [[nodiscard]] bool final(std::uint8_t* out, std::size_t& written) override;
    std::size_t updateSize(std::size_t length) const override;
    std::size_t finalSize() const override { return cipher().blockSize(); }
    using ICryptoCipher::final;
    using ICryptoCipher::update;

private:
    void transform(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks);

    bool chained_;
    bool nextPadding_ = true;
    bool padding_ = true;
};

enum class StreamKind { outputFeedback, cipherFeedback, counter };

/// OFB, CFB with whole blocks, and CTR (SP 800-38A, 6.3 to 6.5): any length.
class StreamMode final : public BlockCipherMode {
public:
    StreamMode(const CipherDescription& description, std::unique_ptr<ICryptoBlockCipher> cipher, StreamKind kind)
        : BlockCipherMode(description, std::move(cipher)), kind_(kind)
    {
    }

    std::size_t blockSize() const override { return 1; }
    [[nodiscard]] bool update(std::span<const std::uint8_t> in, std::uint8_t* out, std::size_t& written) override;
    [[nodiscard]] bool final(std::uint8_t* out, std::size_t& written) override;
    std::size_t updateSize(std::size_t length) const override { return length; }
    std::size_t finalSize() const override { return 0; }
    using ICryptoCipher::final;
    using ICryptoCipher::update;

private:
    /// Bytes of a block of key stream that is begun; the chain of CFB takes their cipher text.
    std::size_t takePending(const std::uint8_t* in, std::uint8_t* out, std::size_t length);
    void applyBlocks(const std::uint8_t* in, std::uint8_t* out, std::size_t blocks);
    void nextStreamBlock();

    StreamKind kind_;
};

} // namespace ccrypto
