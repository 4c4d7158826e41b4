#include "core/array.h"

#include "core/log_writers.h"

void ReportAccessPastEnd(std::uint32_t index, std::uint32_t size)
{
    WriteErrorEx_G("Array access past the end: %u>=%u", index, size);
}
