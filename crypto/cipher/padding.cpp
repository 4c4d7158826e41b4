#include "crypto/cipher/padding.h"

#include <algorithm>

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

void iso9797::Pad(std::span<std::uint8_t> block, std::size_t used)
{
    std::ranges::fill(block.subspan(used), std::uint8_t{0});
    block[used] = 0x80;
}

std::size_t iso9797::TextLength(std::span<const std::uint8_t> padded, std::size_t blockSize, Mask& good)
{
    good = Mask::False();
    if (padded.empty() || padded.size() % blockSize != 0)
        return 0;
    // From the end: zeros, then 0x80.
    Mask atEnd = Mask::True();
    std::uint64_t length = 0;
    for (std::size_t i = padded.size(); i-- > padded.size() - blockSize;) {
        const Mask isMarker = atEnd & Mask::Equal(padded[i], 0x80);
        length = isMarker.select<std::uint64_t>(i, length);
        good |= isMarker;
        atEnd &= Mask::IsZero(padded[i]);
    }
    return length;
}

} // namespace ccrypto
