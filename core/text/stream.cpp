#include "core/text/stream.h"

#include "core/text/string.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

bool IsTerminator(std::uint8_t byte)
{
    return byte == '\n' || byte == '\r';
}

/// CR LF and LF CR each end one line.
bool AreOneTerminator(std::uint8_t first, std::uint8_t second)
{
    return IsTerminator(first) && IsTerminator(second) && first != second;
}

} // namespace

std::uint8_t CCryptoStream::ReadByte()
{
    return atEnd() ? std::uint8_t{0} : buffer_->data()[position_++];
}

bool CCryptoStream::Read(element& target, std::uint32_t count)
{
    const bool remains = hasData();
    const std::uint32_t available = std::min(count, remaining());
    // Of a buffer that is read into itself nothing but what was read remains.
    element bytes(target.type());
    bytes.append(buffer_->data() + position_, available);
    position_ += available;
    target = std::move(bytes);
    return remains;
}

bool CCryptoStream::ReadExactly(std::uint8_t* target, std::uint32_t count)
{
    if (count > remaining())
        return false;
    if (count != 0)
        std::memcpy(target, buffer_->data() + position_, count);
    position_ += count;
    return true;
}

bool CCryptoStream::ReadWord16(std::uint16_t& unit)
{
    std::uint8_t bytes[2];
    if (!ReadExactly(bytes, 2))
        return false;
    unit = static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
    return true;
}

bool CCryptoStream::ReadWord16LittleEndian(std::uint16_t& unit)
{
    std::uint8_t bytes[2];
    if (!ReadExactly(bytes, 2))
        return false;
    unit = static_cast<std::uint16_t>(bytes[1] << 8 | bytes[0]);
    return true;
}

void CCryptoStream::WriteByte(std::uint8_t byte)
{
    buffer_->append(byte);
}

void CCryptoStream::Write(const void* bytes, std::uint32_t count)
{
    buffer_->append(bytes, count);
}

void CCryptoStream::writeBigEndian(std::uint64_t value, std::uint32_t count)
{
    std::uint8_t bytes[8];
    for (std::uint32_t index = 0; index < count; ++index)
        bytes[index] = static_cast<std::uint8_t>(value >> (8 * (count - 1 - index)));
    buffer_->append(bytes, count);
}

bool CCryptoStream::ReadLine(CCryptoString& line)
{
    line.clear();
    if (atEnd())
        return false;
    const std::uint8_t* const start = buffer_->data() + position_;
    const std::uint8_t* const end = buffer_->data() + buffer_->length();
    const std::uint8_t* const terminator = std::find_if(start, end, IsTerminator);
    line.append({reinterpret_cast<const char*>(start), static_cast<std::size_t>(terminator - start)});
    position_ += static_cast<std::uint32_t>(terminator - start);
    if (terminator == end)
        return true;
    ++position_;
    // A pair at the very end of the buffer is not joined: the next read yields the empty line between its halves.
    if (remaining() > 1 && AreOneTerminator(*terminator, buffer_->data()[position_]))
        ++position_;
    return true;
}

bool CCryptoStream::ReadPreviousLine(CCryptoString& line)
{
    line.clear();
    std::uint32_t end = std::min(position_, buffer_->length());
    if (end == 0)
        return false;
    const std::uint8_t* const bytes = buffer_->data();
    if (IsTerminator(bytes[end - 1])) {
        --end;
        if (end > 0 && AreOneTerminator(bytes[end - 1], bytes[end]))
            --end;
    }
    std::uint32_t start = end;
    while (start > 0 && !IsTerminator(bytes[start - 1]))
        --start;
    line.append({reinterpret_cast<const char*>(bytes + start), end - start});
    position_ = start;
    return true;
}

void CCryptoStream::reset()
{
    position_ = 0;
    buffer_->clear();
}
