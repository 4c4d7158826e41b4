#include "crypto/cipher/rc4.h"

#include "core/diagnostics/auto_logger.h"

#include <cstring>
#include <utility>

using namespace ccrypto;

bool CCryptoRC4::start(CipherDirection, std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv)
{
    CCryptoAutoLogger logger("CCryptoRC4::start");

    forget();
    if (key.empty() || key.size() > 256)
        return logger.fail(false, "RC4 has no keys of %zu bytes", key.size());
    if (!iv.empty())
        return logger.fail(false, "RC4 has no initialisation vector");
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
        return logger.fail(false, "No text was started");
    }
    std::uint32_t* const s = state_.permutation.data();
    std::uint32_t i = (state_.i + 1) & 0xFF;
    std::uint32_t j = state_.j;
    std::uint32_t a = s[i];
    // The next entry, `after`, is read before the two are exchanged, so that it need not wait for where the exchange goes.
    const auto next = [ s, &j, &a ](std::uint32_t * here, std::uint32_t * after) __attribute__((always_inline))
    {
        j = (j + a) & 0xFF;
        const std::uint32_t b = s[j];
        std::uint32_t c = *after;
        *here = b;
        s[j] = a;
        const std::uint32_t result = s[(a + b) & 0xFF];
        if (s + j == after) [[unlikely]] {
            asm("" : "+r"(a));
            c = a;
        }
        a = c;
        return result;
    };
    const auto single = [s, &i, &next] {
        std::uint32_t* const here = s + i;
        i = (i + 1) & 0xFF;
        return next(here, s + i);
    };
    const std::uint8_t* from = in.data();
    std::size_t length = in.size();
    for (; length > 0 && i % 8 != 0; --length)
        *out++ = static_cast<std::uint8_t>(*from++ ^ single());
    for (; length >= 8; length -= 8, from += 8, out += 8) {
        std::uint32_t* const p = s + i;
        i = (i + 8) & 0xFF;
        std::uint64_t stream = next(p, p + 1);
        stream |= std::uint64_t{next(p + 1, p + 2)} << 8;
        stream |= std::uint64_t{next(p + 2, p + 3)} << 16;
        stream |= std::uint64_t{next(p + 3, p + 4)} << 24;
        stream |= std::uint64_t{next(p + 4, p + 5)} << 32;
        stream |= std::uint64_t{next(p + 5, p + 6)} << 40;
        stream |= std::uint64_t{next(p + 6, p + 7)} << 48;
        stream |= std::uint64_t{next(p + 7, s + i)} << 56;
        std::uint64_t text = 0;
        std::memcpy(&text, from, 8);
        text ^= stream;
        std::memcpy(out, &text, 8);
    }
    for (; length > 0; --length)
        *out++ = static_cast<std::uint8_t>(*from++ ^ single());
    state_.i = (i - 1) & 0xFF;
    state_.j = j;
    written = in.size();
    return true;
}

bool CCryptoRC4::final(std::uint8_t*, std::size_t& written)
{
    CCryptoAutoLogger logger("CCryptoRC4::final");

    written = 0;
    if (!started_)
        return logger.fail(false, "No text was started");
    forget();
    return logger.setResult(true);
}

void CCryptoRC4::forget()
{
    started_ = false;
    platform::SecureWipe(&state_, sizeof state_);
}
