#pragma once

#include "core/base/algorithm.h"
#include "core/memory/wiped.h"
#include "crypto/cipher/cipher.h"

#include <array>

/// RC4, with keys of 1 to 256 bytes, 16 as a rule. Indexes tables by secrets: this is not constant-time. For old files only.
class CCryptoRC4 final : public ICryptoCipher {
public:
    CCryptoRC4(const char* name, ccrypto::algorithm::Id id) : name_(name), id_(id) {}

    [[nodiscard]] bool start(ccrypto::CipherDirection direction, std::span<const std::uint8_t> key,
                             std::span<const std::uint8_t> iv) override;
    [[nodiscard]] bool update(std::span<const std::uint8_t> in, std::uint8_t* out, std::size_t& written) override;
    [[nodiscard]] bool final(std::uint8_t* out, std::size_t& written) override;
    std::size_t updateSize(std::size_t length) const override { return length; }
    std::size_t finalSize() const override { return 0; }
    std::size_t blockSize() const override { return 1; }
    std::size_t ivSize() const override { return 0; }
    std::size_t keySize() const override { return 16; }
    ccrypto::algorithm::Id algorithmId() const override { return id_; }
    const char* name() const override { return name_; }
    using ICryptoCipher::final;
    using ICryptoCipher::update;

private:
    /// Wide words: a byte that was just written is read again soon, and such reads of bytes are slower.
    struct State {
        std::array<std::uint32_t, 256> permutation;
        std::uint32_t i, j;
    };

    void forget() override;

    const char* name_;
    ccrypto::algorithm::Id id_;
    ccrypto::Wiped<State> state_{};
    bool started_ = false;
};
