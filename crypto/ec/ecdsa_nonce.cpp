#include "crypto/ec/ecdsa_nonce.h"

#include "core/memory/wiped.h"

#include <algorithm>

namespace ccrypto {

EcdsaNonce::EcdsaNonce(std::unique_ptr<CCryptoHMAC> mac, const CurveArithmetic& curve, std::span<const std::uint8_t> key,
                       std::span<const std::uint8_t> digestNumber, std::span<const std::uint8_t> fresh)
    : mac_(std::move(mac)), curve_(curve)
{
    value_.fill(1);
    constexpr std::array<std::uint8_t, maxDigestSize> zeros{};
    mac_->setKey(std::span(zeros).first(mac_->macSize()));
    stir(0, {key, digestNumber, fresh});
    stir(1, {key, digestNumber, fresh});
}

EcdsaNonce::~EcdsaNonce()
{
    platform::SecureWipe(value_.data(), value_.size());
}

void EcdsaNonce::step()
{
    mac_->update(value());
    mac_->final(value_.data());
}

void EcdsaNonce::stir(std::uint8_t mark, std::initializer_list<std::span<const std::uint8_t>> pieces)
{
    Wiped<std::array<std::uint8_t, maxDigestSize>> key{};
    mac_->update(value());
    mac_->update(&mark, 1);
    for (const auto& piece : pieces)
        mac_->update(piece);
    mac_->final(key.data());
    mac_->setKey(std::span(key).first(mac_->macSize()));
    step();
}

void EcdsaNonce::next(std::span<std::uint8_t> nonce)
{
    do {
        if (!first_)
            stir(0, {});
        first_ = false;
        // The order has 521 bits at most and the shortest digest 128.
        Wiped<std::array<std::uint8_t, 2 * maxDigestSize + 16>> bits{};
        std::size_t count = 0;
        while (count < nonce.size()) {
            step();
            std::ranges::copy(value(), bits.begin() + static_cast<std::ptrdiff_t>(count));
            count += mac_->macSize();
        }
        curve_.bitsToNumber(nonce, std::span(bits).first(count));
    } while (!curve_.isScalar(nonce));
}

} // namespace ccrypto
