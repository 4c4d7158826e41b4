#pragma once

#include "ipc/pipe_request_data.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

/// Messages and items put together by hand, so that a test never takes the code's word for what is on the wire.
namespace ccrypto::wire {

inline std::string Integer32(std::uint32_t value)
{
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift);
    return bytes;
}

inline std::string Item(std::uint8_t tag, std::string_view payload)
{
    return std::string(1, static_cast<char>(tag)) + Integer32(static_cast<std::uint32_t>(payload.size())) + std::string(payload);
}

inline std::string Int(std::uint32_t value)
{
    return Item(1, Integer32(value));
}

inline std::string Data(std::string_view bytes)
{
    return Item(2, bytes);
}

inline std::string Text(std::string_view text)
{
    return Item(2, std::string(text) + '\0');
}

inline std::string Header(std::uint32_t type, std::int32_t status, std::uint32_t bodyLength)
{
    return Integer32(type) + Integer32(static_cast<std::uint32_t>(status)) + Integer32(bodyLength);
}

/// A message outside a pipe: what would be sent is looked at, what would be received is put in.
class Message : public CCryptoPipeRequestData {
public:
    explicit Message(std::uint32_t type = 0) : CCryptoPipeRequestData(type) {}

    std::string Sent()
    {
        return std::string(static_cast<const char*>(GetPart(0)), GetPartSize(0)) +
               std::string(reinterpret_cast<const char*>(bodyBytes()), position());
    }

    bool Receive(std::string_view bodyReceived)
    {
        if (!Announce(static_cast<std::uint32_t>(bodyReceived.size())))
            return false;
        if (!bodyReceived.empty())
            std::memcpy(bodyBytes(), bodyReceived.data(), bodyReceived.size());
        return true;
    }

    bool Announce(std::uint32_t length)
    {
        const std::string header = wire::Header(requestType(), 0, length);
        std::memcpy(GetPart(0), header.data(), header.size());
        return ReceiveBody();
    }

    using CCryptoPipeRequestData::bodyBytes;
    using CCryptoPipeRequestData::isComplete;
    using CCryptoPipeRequestData::setStatus;
};

} // namespace ccrypto::wire
