#include "crypto/cipher/padding.h"
#include "fuzz/require.h"

#include <algorithm>
#include <cstdint>

using namespace ccrypto;

namespace {

/// PKCS#7 as one would write it without a thought of time. \return the length of the text, or -1.
int NaiveTextLength(const std::uint8_t* block, std::size_t size)
{
    const std::size_t added = block[size - 1];
    if (added == 0 || added > size)
        return -1;
    const bool same = std::all_of(block + size - added, block + size, [added](std::uint8_t byte) { return byte == added; });
    return same ? static_cast<int>(size - added) : -1;
}

} // namespace

/// The bytes are one block.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0 || size > 255)
        return 0;
    constant_time::Mask good = constant_time::Mask::False();
    const std::size_t length = pkcs7::TextLength(data, size, good);
    const int expected = NaiveTextLength(data, size);
    Require(constant_time::Declassify(good) == (expected >= 0));
    Require(length == static_cast<std::size_t>(std::max(expected, 0)));

    std::uint8_t padded[255];
    std::copy_n(data, size, padded);
    pkcs7::Pad(padded, data[0] % size, size);
    Require(pkcs7::TextLength(padded, size, good) == data[0] % size && constant_time::Declassify(good));
    return 0;
}
