#pragma once

#include "core/text/element.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ccrypto {

/// Of all MACs here, in bytes.
constexpr std::size_t maxMACSize = 64;
/// A MAC is not truncated to less: the shortest that smart cards use for secure messaging (ISO/IEC 7816-4).
constexpr std::size_t minTruncatedMAC = 4;

} // namespace ccrypto

/// A message authentication code under one key, of one message after another, each in pieces of any length. What it holds is wiped
/// when it is destroyed. Not for use by two threads at once.
class ICryptoMAC {
public:
    virtual ~ICryptoMAC() = default;

    /// Begins a message. \return false, logged and without a key, for a length that there are no keys of.
    [[nodiscard]] virtual bool setKey(std::span<const std::uint8_t> key) = 0;
    /// Discards what was taken and keeps the key.
    virtual void reset() = 0;
    /// `bytes` may be null when `length` is 0.
    virtual void update(const void* bytes, std::size_t length) = 0;
    void update(std::span<const std::uint8_t> bytes) { update(bytes.data(), bytes.size()); }
    /// Writes macSize() bytes to `mac`, then resets. \return false, logged, with nothing written, without a key.
    [[nodiscard]] virtual bool final(std::uint8_t* mac) = 0;
    /// Of a whole MAC, in bytes.
    [[nodiscard]] virtual std::uint32_t macSize() const = 0;

    /// The MAC of what was taken; empty without a key.
    [[nodiscard]] element final();
    /// The MAC of these bytes; resets before and after.
    [[nodiscard]] element macOf(std::span<const std::uint8_t> bytes);
    /// Whether `mac` is the MAC of what was taken, or its first `length` bytes, minTruncatedMAC or more: a number that the protocol
    /// gives and not the message. One of another length is not. Takes time that depends on lengths only. Then resets.
    /// \return false, logged, when it is not or there is no key.
    [[nodiscard]] bool verify(std::span<const std::uint8_t> mac) { return verify(mac, macSize()); }
    [[nodiscard]] bool verify(std::span<const std::uint8_t> mac, std::size_t length);

protected:
    ICryptoMAC() = default;
    ICryptoMAC(const ICryptoMAC&) = default;
    ICryptoMAC& operator=(const ICryptoMAC&) = default;
};
