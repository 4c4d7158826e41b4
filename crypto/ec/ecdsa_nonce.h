#pragma once

#include "crypto/ec/curve_arithmetic.h"
#include "crypto/mac/hmac.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>

namespace ccrypto {

/// The nonces of ECDSA by RFC 6979, 3.2: numbers derived from key and digest by HMAC, which cannot be
/// distinguished from random ones without the key.
class EcdsaNonce {
public:
    /// `key` and `digestNumber` (the digest's number modulo the order) are as long as the order. With `fresh` random bytes the
    /// nonces differ each time (3.6). The curve is not owned.
    EcdsaNonce(std::unique_ptr<CCryptoHMAC> mac, const CurveArithmetic& curve, std::span<const std::uint8_t> key,
               std::span<const std::uint8_t> digestNumber, std::span<const std::uint8_t> fresh);
    ~EcdsaNonce();
    EcdsaNonce(const EcdsaNonce&) = delete;
    EcdsaNonce& operator=(const EcdsaNonce&) = delete;

    /// The next one, from 1 to order - 1, as long as the order.
    void next(std::span<std::uint8_t> nonce);

private:
    /// V = HMAC(V).
    void step();
    /// K = HMAC(V | mark | pieces), V = HMAC(V).
    void stir(std::uint8_t mark, std::initializer_list<std::span<const std::uint8_t>> pieces);
    std::span<const std::uint8_t> value() const { return {value_.data(), mac_->macSize()}; }

    std::unique_ptr<CCryptoHMAC> mac_;
    const CurveArithmetic& curve_;
    std::array<std::uint8_t, maxDigestSize> value_{};
    bool first_ = true;
};

} // namespace ccrypto
