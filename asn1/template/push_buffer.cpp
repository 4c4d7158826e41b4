#include "asn1/template/push_buffer.h"

#include "core/log/log_writers.h"

bool CPushBuffer::CheckLength(std::uint32_t expected) const
{
    if (expected <= buffer_.length())
        return true;
    WriteErrorEx_G("expected length %d > buffer length%d", static_cast<int>(expected), static_cast<int>(buffer_.length()));
    return false;
}
