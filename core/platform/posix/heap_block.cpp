#include "core/platform/heap_block.h"

#include <malloc.h>

namespace platform {

std::size_t HeapBlockSize(void* block)
{
    return malloc_usable_size(block);
}

} // namespace platform
