#include "core/log/log_text.h"

#include <cstdio>
#include <cstring>

namespace ccrypto {

bool LogText::append(std::string_view piece)
{
    if (piece.size() >= sizeof bytes_ - length_)
        return false;
    std::memcpy(bytes_ + length_, piece.data(), piece.size());
    length_ += piece.size();
    bytes_[length_] = '\0';
    return true;
}

bool LogText::appendFormatted(const char* format, std::va_list arguments)
{
    const std::size_t room = sizeof bytes_ - length_;
    const int needed = std::vsnprintf(bytes_ + length_, room, format, arguments);
    const bool fits = needed >= 0 && static_cast<std::size_t>(needed) < room;
    if (fits)
        length_ += static_cast<std::size_t>(needed);
    bytes_[length_] = '\0';
    return fits;
}

} // namespace ccrypto
