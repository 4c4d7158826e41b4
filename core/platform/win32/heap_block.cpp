#include "core/platform/heap_block.h"

#include <malloc.h>

namespace ccrypto::platform {

std::size_t HeapBlockSize(void* block)
{
    return _msize(block);
}

} // namespace ccrypto::platform
