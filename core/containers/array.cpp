#include "core/containers/array.h"

#include "core/log/log_writers.h"

namespace ccrypto {

void ReportAccessPastEnd(std::uint32_t index, std::uint32_t size)
{
    WriteErrorEx_G("Array access past the end: %u>=%u", index, size);
}

} // namespace ccrypto
