#include "fuzz/require.h"
#include "tests/ipc/wire_bytes.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

using namespace ccrypto;

// Input: the number of reads, one byte for each (its low bits choose the reader and whether it is the last), then the body.

namespace {

void RequireInside(const wire::Message& message, const std::uint8_t* bytes, std::size_t count)
{
    const auto body = message.body();
    Require(bytes >= body.data() && count <= body.size() && static_cast<std::size_t>(bytes - body.data()) <= body.size() - count);
}

void RequireText(const wire::Message& message, const char* text)
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text);
    RequireInside(message, bytes, 1);
    const auto remaining = static_cast<std::size_t>(message.body().data() + message.body().size() - bytes);
    Require(std::memchr(bytes, 0, remaining) != nullptr);
}

void ReadOne(wire::Message& message, std::uint8_t choice)
{
    const bool last = (choice & 4) != 0;
    const bool failedBefore = message.status() != 0;
    std::uint32_t number = 0;
    const char* text = nullptr;
    const std::uint8_t* data = nullptr;
    std::unique_ptr<PipeValue> value;
    bool good = false;
    switch (choice & 3) {
    case 0:
        good = message.GetInt(number, last);
        break;
    case 1:
        good = message.GetString(text, last);
        break;
    case 2:
        good = message.GetData(data, number, last);
        Require((data == nullptr) == (number == 0));
        break;
    default:
        good = message.GetValue(value, last);
    }
    Require(good ? message.status() == 0 && !failedBefore : text == nullptr && data == nullptr && value == nullptr);
    if (text != nullptr)
        RequireText(message, text);
    if (data != nullptr)
        RequireInside(message, data, number);
    if (value != nullptr && value->kind == PipeValue::Kind::text)
        RequireText(message, value->text);
    Require(message.position() <= message.body().size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size)
{
    std::string_view bytes(reinterpret_cast<const char*>(input), size);
    if (bytes.empty())
        return 0;
    const std::size_t reads = static_cast<unsigned char>(bytes[0]);
    bytes.remove_prefix(1);
    const std::string_view choices = bytes.substr(0, reads);
    bytes.remove_prefix(choices.size());

    wire::Message message(22);
    message.AddInt(1);
    Require(message.Receive(bytes));
    for (const char choice : choices)
        ReadOne(message, static_cast<std::uint8_t>(choice));

    // Whatever was read, the message can be filled again.
    message.StartMessage();
    Require(message.AddData(bytes.data(), static_cast<std::uint32_t>(bytes.size())) && message.AddInt(7));
    Require(message.Sent().size() == 12 + 5 + bytes.size() + 9);
    return 0;
}
