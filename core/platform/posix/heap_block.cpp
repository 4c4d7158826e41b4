#include "core/platform/heap_block.h"

#include <malloc.h>

namespace ccrypto::platform {

std::size_t HeapBlockSize(void* block)
{
    return malloc_usable_size(block);
}

} // namespace ccrypto::platform
