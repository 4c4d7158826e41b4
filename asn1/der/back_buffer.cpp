#include "asn1/der/back_buffer.h"

#include "core/memory/out_of_memory.h"

namespace ccrypto {

void BackBuffer::grow(std::size_t more)
{
    const std::size_t used = length();
    const std::size_t size = 2 * (used + more) + sizeof small_;
    // Bytes before `start_` are never read.
    auto* const larger = static_cast<std::uint8_t*>(std::malloc(size));
    if (larger == nullptr)
        EndOutOfMemory();
    std::uint8_t* const start = larger + size - used;
    std::memcpy(start, start_, used);
    platform::SecureWipe(start_, used);
    large_.reset(larger);
    end_ = larger + size;
    start_ = start;
}

} // namespace ccrypto
