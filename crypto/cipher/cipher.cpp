#include "crypto/cipher/cipher.h"

#include "core/diagnostics/auto_logger.h"

#include <algorithm>
#include <limits>
#include <utility>

using namespace ccrypto;

namespace {

/// More than any cipher adds at the end of a text.
constexpr std::size_t maxEnd = 64;

bool FitsElement(const element& out, std::size_t more)
{
    constexpr std::size_t maxLength = std::numeric_limits<std::uint32_t>::max() - maxEnd;
    return more <= maxLength - std::min<std::size_t>(maxLength, out.length());
}

} // namespace

bool ICryptoCipher::setEffectiveKeyBits(std::uint32_t)
{
    CCryptoAutoLogger logger("ICryptoCipher::setEffectiveKeyBits");

    return logger.fail(false, "%s takes no such number of effective key bits", name());
}

bool ICryptoCipher::update(std::span<const std::uint8_t> in, element& out)
{
    const std::size_t size = updateSize(in.size());
    if (!FitsElement(out, size)) {
        CCryptoAutoLogger logger("ICryptoCipher::update");
        forget();
        return logger.fail(false, "The text is too long for one buffer");
    }
    out.makeRoom(size);
    std::size_t written = 0;
    const bool ok = update(in, out.data() + out.length(), written);
    out.lengthen(static_cast<std::uint32_t>(written));
    return ok;
}

bool ICryptoCipher::final(element& out)
{
    const std::size_t size = finalSize();
    if (!FitsElement(out, size)) {
        CCryptoAutoLogger logger("ICryptoCipher::final");
        forget();
        return logger.fail(false, "The text is too long for one buffer");
    }
    out.makeRoom(size);
    std::size_t written = 0;
    const bool ok = final(out.data() + out.length(), written);
    out.lengthen(static_cast<std::uint32_t>(written));
    return ok;
}

bool ICryptoCipher::encrypt(std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv, std::span<const std::uint8_t> text,
                            element& out)
{
    CCryptoAutoLogger logger("ICryptoCipher::encrypt");

    return logger.setResult(transform(CipherDirection::encrypt, key, iv, text, out));
}

bool ICryptoCipher::decrypt(std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv, std::span<const std::uint8_t> text,
                            element& out)
{
    CCryptoAutoLogger logger("ICryptoCipher::decrypt");

    return logger.setResult(transform(CipherDirection::decrypt, key, iv, text, out));
}

bool ICryptoCipher::transform(CipherDirection direction, std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv,
                              std::span<const std::uint8_t> text, element& out)
{
    // A buffer of its own: `text` may be what `out` holds.
    element result;
    const bool ok = start(direction, key, iv) && update(text, result) && final(result);
    if (!ok)
        result.clear();
    out = std::move(result);
    return ok;
}
