#pragma once

#include "core/base/algorithm.h"
#include "core/memory/wiped.h"
#include "crypto/cipher/cipher.h"
#include "crypto/cipher/gcm_variants.h"

#include <array>

/// AES in Galois/counter mode (SP 800-38D): encrypts and authenticates. The cipher text ends with the tag (RFC 5116, 5.1). Takes
/// time that depends on lengths only.
///
/// The same key and initialisation vector must never encrypt two texts. The vector may have any length from 1 byte; 12 are usual.
/// A text has at most 2^36 - 32 bytes.
///
/// No plain text leaves it before the tag was found right. start() with CipherDirection::decrypt therefore keeps the cipher text
/// until final(), and refuses more than maxKept bytes: what is kept in memory has a bound. A longer text is read twice:
///
///     startCheck(key, iv), addAuthenticated(...), update(...)..., final()   gives no text, but says whether the tag is right
///     startChecked(), update(...)..., final()                               gives the plain text of the same bytes at once
///
/// The second pass checks the tag again, since a file may change in between: its text is not authentic until final() succeeds.
class CCryptoGCM final : public ICryptoCipher {
public:
    static constexpr std::size_t maxKept = std::size_t{64} << 20;
    static constexpr std::size_t maxTag = 16;

    /// Name and id are those of the table of ciphers; the key has 16, 24 or 32 bytes.
    CCryptoGCM(const char* name, ccrypto::algorithm::Id id, std::size_t keySize);
    /// A given variant, for tests and measurements.
    CCryptoGCM(const char* name, ccrypto::algorithm::Id id, std::size_t keySize,
               const ccrypto::Variant<ccrypto::gcm::Calls>& variant);
    ~CCryptoGCM() override;

    /// 4, 8 or 12 to 16 bytes, 16 at first; for the next text. \return false, logged, for any other length.
    [[nodiscard]] bool setTagLength(std::size_t length);

    [[nodiscard]] bool start(ccrypto::CipherDirection direction, std::span<const std::uint8_t> key,
                             std::span<const std::uint8_t> iv) override;
    [[nodiscard]] bool startCheck(std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv);
    /// After a check that ended well. The further data that was authenticated is remembered.
    [[nodiscard]] bool startChecked();
    /// Data that is authenticated and not encrypted, in pieces; before the first update. At most 2^61 - 1 bytes. \return false,
    /// logged, when it comes too late.
    [[nodiscard]] bool addAuthenticated(std::span<const std::uint8_t> data);
    [[nodiscard]] bool update(std::span<const std::uint8_t> in, std::uint8_t* out, std::size_t& written) override;
    [[nodiscard]] bool final(std::uint8_t* out, std::size_t& written) override;

    std::size_t updateSize(std::size_t length) const override;
    std::size_t finalSize() const override;
    std::size_t blockSize() const override { return 1; }
    std::size_t ivSize() const override { return 12; }
    std::size_t keySize() const override { return keySize_; }
    ccrypto::algorithm::Id algorithmId() const override { return id_; }
    const char* name() const override { return name_; }
    using ICryptoCipher::final;
    using ICryptoCipher::update;

private:
    using Block = std::array<std::uint8_t, ccrypto::aes::blockSize>;
    enum class State { idle, encrypting, keeping, checking, checked, decrypting };

    /// What changes while a text goes through.
    struct Text {
        Block hash, counter;
        Block partial; ///< cipher text of a block that is begun
        Block stream;  ///< its key stream
        Block end;     ///< the last bytes of what comes in, which may be the tag
        std::size_t partialCount, endCount;
        std::uint64_t dataLength, textLength;
        bool textBegun;
    };

    bool begin(State state, std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv);
    void computeFirstCounter(std::span<const std::uint8_t> iv);
    void hashPadded(std::span<const std::uint8_t> bytes);
    void hashPartial();
    void beginText();
    /// Encrypts, decrypts or only hashes.
    void process(const std::uint8_t* in, std::uint8_t* out, std::size_t length);
    void processBytes(const std::uint8_t* in, std::uint8_t* out, std::size_t length);
    std::size_t processAllButTag(std::span<const std::uint8_t> in, std::uint8_t* out);
    void computeTag(Block& tag);
    bool tagFits(const std::uint8_t* tag);
    bool finishKept(std::uint8_t* out, std::size_t& written);
    bool takes(std::size_t length) const;
    void forget() override;

    const char* name_;
    ccrypto::algorithm::Id id_;
    std::size_t keySize_;
    const ccrypto::gcm::Calls* calls_;
    ccrypto::Wiped<ccrypto::aes::Key> cipherKey_{};
    ccrypto::Wiped<ccrypto::gcm::HashKey> hashKey_{};
    ccrypto::Wiped<Text> text_{};
    ccrypto::Wiped<Text> first_{};         ///< as it was before the first byte of text, for the second pass
    ccrypto::Wiped<Block> firstCounter_{}; ///< a secret, too, when it is a hash of a vector
    element kept_;
    std::size_t nextTagLength_ = maxTag;
    std::size_t tagLength_ = maxTag;
    State state_ = State::idle;
};
