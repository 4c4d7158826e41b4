#include "crypto/cipher/pkcs7_padding.h"

namespace ccrypto {

using constant_time::Mask;

void pkcs7::Pad(std::uint8_t* block, std::size_t used, std::size_t size)
{
    for (std::size_t i = used; i < size; ++i)
        block[i] = static_cast<std::uint8_t>(size - used);
}

std::size_t pkcs7::TextLength(const std::uint8_t* block, std::size_t size, Mask& good)
{
    const std::uint64_t added = block[size - 1];
    good = Mask::IsNotZero(added) & ~Mask::Less(size, added);
    for (std::size_t i = 0; i < size; ++i) {
        const Mask isPadding = Mask::Less(i, added);
        good &= ~isPadding | Mask::Equal(block[size - 1 - i], added);
    }
    return good.select<std::uint64_t>(size - added, 0);
}

} // namespace ccrypto
