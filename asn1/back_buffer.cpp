#include "asn1/back_buffer.h"

void BackBuffer::grow(std::size_t more)
{
    const std::size_t used = length();
    const std::size_t size = 2 * (used + more) + sizeof small_;
    // Bytes in front of `start_` are never read.
    auto larger = std::make_unique_for_overwrite<std::uint8_t[]>(size);
    std::uint8_t* const start = larger.get() + size - used;
    std::memcpy(start, start_, used);
    platform::SecureWipe(start_, used);
    large_ = std::move(larger);
    end_ = large_.get() + size;
    start_ = start;
}
