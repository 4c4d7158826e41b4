#include "core/memory/out_of_memory.h"

#include "core/log/log_writers.h"

#include <cstdlib>

void EndOutOfMemory()
{
    WriteErrorEx_G("FATAL Memory allocation error!");
    WriteErrorEx_G("FATAL MEMORY ALLOCATION ERROR");
    std::exit(1);
}
