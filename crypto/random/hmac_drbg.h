#pragma once

#include "crypto/mac/hmac.h"
#include "crypto/random/random.h"

#include <cstdint>
#include <memory>
#include <span>

/// HMAC_DRBG with SHA-256 (NIST SP 800-90A revision 1, 10.1.2): bytes that are determined by a seed
/// and cannot be predicted without it. For tests and for deterministic signatures; random bytes come from
/// ICryptoRandom::Instance().
///
/// Not for use by two threads at once. What it holds is wiped when it is destroyed.
class CCryptoHMACDRBG : public ICryptoRandom {
public:
    /// Bytes of entropy that the strength of 256 bits asks for.
    static constexpr std::size_t seedBytes = 32;
    /// A request for more is answered as several.
    static constexpr std::size_t maxBytesOfRequest = 65536;
    static constexpr std::uint64_t maxRequests = std::uint64_t{1} << 48;
    /// Of a seed and of additional input.
    static constexpr std::size_t maxInput = 65536;

    /// Not instantiated: generates nothing.
    CCryptoHMACDRBG() = default;
    ~CCryptoHMACDRBG() override { uninstantiate(); }
    CCryptoHMACDRBG(const CCryptoHMACDRBG&) = delete;
    CCryptoHMACDRBG& operator=(const CCryptoHMACDRBG&) = delete;

    /// `entropy` is at least 16 bytes, `entropy` and `nonce` together at least 32; all are bounded by maxInput. \return false,
    /// logged, not instantiated, otherwise.
    [[nodiscard]] bool instantiate(std::span<const std::uint8_t> entropy, std::span<const std::uint8_t> nonce,
                                   std::span<const std::uint8_t> personalization = {});
    /// `entropy` is at least 16 bytes. \return false, logged, unchanged, otherwise.
    [[nodiscard]] bool reseed(std::span<const std::uint8_t> entropy, std::span<const std::uint8_t> additional = {});
    /// \return false, logged, with the bytes wiped, when it is not instantiated or must be reseeded first.
    [[nodiscard]] bool generate(std::span<std::uint8_t> bytes) override { return generate(bytes, {}); }
    [[nodiscard]] bool generate(std::span<std::uint8_t> bytes, std::span<const std::uint8_t> additional);
    void uninstantiate();

    bool isInstantiated() const { return mac_ != nullptr; }

private:
    static constexpr std::size_t digestBytes = 32;

    void update(std::span<const std::uint8_t> first, std::span<const std::uint8_t> second = {},
                std::span<const std::uint8_t> third = {});
    void setKey();

    std::unique_ptr<CCryptoHMAC> mac_;
    std::uint8_t key_[digestBytes] = {};
    std::uint8_t value_[digestBytes] = {};
    std::uint64_t requests_ = 0;
};
