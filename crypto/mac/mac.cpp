#include "crypto/mac/mac.h"

#include "core/diagnostics/auto_logger.h"
#include "core/memory/wiped.h"
#include "crypto/base/constant_time.h"

#include <array>

using namespace ccrypto;

namespace {

using WholeMAC = Wiped<std::array<std::uint8_t, maxMACSize>>;

} // namespace

element ICryptoMAC::final()
{
    WholeMAC mac{};
    return final(mac.data()) ? element(mac.data(), macSize()) : element();
}

element ICryptoMAC::macOf(std::span<const std::uint8_t> bytes)
{
    reset();
    update(bytes);
    return final();
}

bool ICryptoMAC::verify(std::span<const std::uint8_t> mac, std::size_t length)
{
    CCryptoAutoLogger logger("ICryptoMAC::verify");

    WholeMAC own{};
    if (!final(own.data()))
        return logger.setResult(false);
    const bool isLength = length >= minTruncatedMAC && length <= macSize() && mac.size() == length;
    if (!isLength || !constant_time::Declassify(constant_time::EqualBytes(own.data(), mac.data(), length)))
        return logger.warn(false, "The authentication code is wrong");
    return logger.setResult(true);
}
