#include "deflate/bit_output.h"

#include <algorithm>
#include <cstring>

namespace ccrypto {

void BitOutput::putBytes(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const std::size_t count = std::min(bytes.size(), pieceSize - position_);
        std::memcpy(bytes_.data() + position_, bytes.data(), count);
        position_ += count;
        bytes = bytes.subspan(count);
        if (position_ >= pieceSize - sizeof(std::uint64_t))
            flush();
    }
}

bool BitOutput::flush()
{
    if (!stopped_ && position_ != 0)
        stopped_ = !sink_({bytes_.data(), position_});
    position_ = 0;
    return !stopped_;
}

} // namespace ccrypto
