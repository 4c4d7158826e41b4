#include "crypto/rc4.h"

#include "core/auto_logger.h"

#include <cstring>
#include <utility>

bool CCryptoRC4::start(CipherDirection, std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv)
{
    CCryptoAutoLogger logger("CCryptoRC4::start");

    forget();
    if (key.empty() || key.size() > 256)
        return logger.setRetValue(3, false, "RC4 has no keys of %zu bytes", key.size());
    if (!iv.empty())
        return logger.setRetValue(3, false, "RC4 has no initialisation vector");
    for (std::uint32_t i = 0; i < 256; ++i)
        state_.permutation[i] = i;
    std::uint32_t j = 0;
    for (std::size_t i = 0; i < 256; ++i) {
        j = (j + state_.permutation[i] + key[i % key.size()]) & 0xFF;
        std::swap(state_.permutation[i], state_.permutation[j]);
    }
    started_ = true;
    return logger.setResult(true);
}

bool CCryptoRC4::update(std::span<const std::uint8_t> in, std::uint8_t* out, std::size_t& written)
{
    written = 0;
    if (!started_) {
        CCryptoAutoLogger logger("CCryptoRC4::update");
        return logger.setRetValue(3, false, "No text was started");
    }
    std::uint32_t* const s = state_.permutation.data();
    std::uint32_t i = state_.i;
    std::uint32_t j = state_.j;
    const auto next = [s, &i, &j] {
        i = (i + 1) & 0xFF;
        const std::uint32_t a = s[i];
        j = (j + a) & 0xFF;
        const std::uint32_t b = s[j];
        s[i] = b;
        s[j] = a;
        return s[(a + b) & 0xFF];
    };
    const std::uint8_t* from = in.data();
    std::size_t length = in.size();
    for (; length >= 8; length -= 8, from += 8, out += 8) {
        std::uint64_t stream = 0;
        for (int byte = 0; byte < 64; byte += 8)
            stream |= std::uint64_t{next()} << byte;
        std::uint64_t text = 0;
        std::memcpy(&text, from, 8);
        text ^= stream;
        std::memcpy(out, &text, 8);
    }
    for (; length > 0; --length)
        *out++ = static_cast<std::uint8_t>(*from++ ^ next());
    state_.i = i;
    state_.j = j;
    written = in.size();
    return true;
}

bool CCryptoRC4::final(std::uint8_t*, std::size_t& written)
{
    CCryptoAutoLogger logger("CCryptoRC4::final");

    written = 0;
    if (!started_)
        return logger.setRetValue(3, false, "No text was started");
    forget();
    return logger.setResult(true);
}

void CCryptoRC4::forget()
{
    started_ = false;
    platform::SecureWipe(&state_, sizeof state_);
}
