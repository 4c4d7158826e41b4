#pragma once

#include "core/memory/wiped.h"
#include "crypto/cipher/des.h"
#include "crypto/mac/mac.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// The retail MAC: MAC algorithm 3 of ISO/IEC 9797-1 with DES and padding method 2, as smart cards use it for secure messaging. A
/// message is chained through DES with the first half of the key, its last block also through the second half. For old cards: see
/// CCryptoDES for what its time depends on.
class CCryptoRetailMAC final : public ICryptoMAC {
public:
    static constexpr std::size_t keyBytes = 16;
    static constexpr std::size_t macBytes = 8;

    /// \param key keyBytes long.
    [[nodiscard]] bool setKey(std::span<const std::uint8_t> key) override;
    void reset() override;
    void update(const void* bytes, std::size_t length) override;
    [[nodiscard]] bool final(std::uint8_t* mac) override;
    [[nodiscard]] std::uint32_t macSize() const override { return macBytes; }
    using ICryptoMAC::final;
    using ICryptoMAC::update;

private:
    CCryptoDES chaining_;
    CCryptoDES ending_;
    bool hasKey_ = false;
    ccrypto::Wiped<std::array<std::uint8_t, 8>> chain_{};
    ccrypto::Wiped<std::array<std::uint8_t, 8>> pending_{}; ///< the begun block
    std::size_t pendingCount_ = 0;
};
