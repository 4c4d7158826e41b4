#include "core/memory/out_of_memory.h"

#include "core/log/log_writers.h"

#include <atomic>
#include <cstdlib>

namespace ccrypto {

void EndOutOfMemory()
{
    // What runs at exit may need memory, too.
    static constinit std::atomic<bool> ending{false};
    if (ending.exchange(true))
        std::_Exit(1);
    WriteErrorEx_G("FATAL Memory allocation error!");
    WriteErrorEx_G("FATAL MEMORY ALLOCATION ERROR");
    std::exit(1);
}

} // namespace ccrypto
