#pragma once

#include "core/memory/wiped.h"
#include "core/text/element.h"
#include "crypto/cipher/des.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// The retail MAC: MAC algorithm 3 of ISO/IEC 9797-1 with DES and padding method 2, as smart cards use it for secure messaging. A
/// message is chained through DES with the first half of the key, its last block also through the second half. For old
/// cards: see CCryptoDES for what its time depends on. What it holds is wiped when it is destroyed. Not for use by two threads at
/// once.
class CCryptoRetailMAC {
public:
    static constexpr std::size_t keyBytes = 16;
    static constexpr std::size_t macBytes = 8;

    /// Nothing is taken yet afterwards. \return false, logged and without a key, for a key that is not 16 bytes long.
    [[nodiscard]] bool setKey(std::span<const std::uint8_t> key);
    /// As after setKey().
    void reset();
    void update(std::span<const std::uint8_t> bytes);
    /// Pads the message and writes macBytes to `mac`; then as after setKey(). \return false, logged, with nothing written, without
    /// a key.
    [[nodiscard]] bool final(std::span<std::uint8_t, macBytes> mac);
    /// Empty without a key.
    [[nodiscard]] element macOf(std::span<const std::uint8_t> bytes);
    /// Whether `mac` is the first `length` bytes, 4 to 8, of the MAC of what was taken; `length` is the protocol's. Compares in
    /// time that depends on `length` only. Then as after setKey().
    [[nodiscard]] bool verify(std::span<const std::uint8_t> mac, std::size_t length = macBytes);

private:
    CCryptoDES chaining_;
    CCryptoDES ending_;
    bool hasKey_ = false;
    ccrypto::Wiped<std::array<std::uint8_t, 8>> chain_{};
    ccrypto::Wiped<std::array<std::uint8_t, 8>> pending_{}; ///< the begun block
    std::size_t pendingCount_ = 0;
};
