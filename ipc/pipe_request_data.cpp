#include "ipc/pipe_request_data.h"

#include "core/log/log_writers.h"

#include <algorithm>
#include <bit>
#include <cstring>

using namespace ccrypto;

namespace {

// The header is sent as it lies in memory.
static_assert(std::endian::native == std::endian::little);

constexpr std::uint32_t integerSize = 4;
constexpr std::uint32_t itemHeaderSize = 5;
constexpr std::uint32_t growthStep = 100;

constexpr std::uint8_t valueInteger = 1;
constexpr std::uint8_t valueText = 2;

constexpr const char* noMoreData = "CCryptoPipe::GetDataPtr: No more data";

std::uint32_t LoadInteger(const std::uint8_t* bytes)
{
    std::uint32_t value;
    std::memcpy(&value, bytes, integerSize);
    return value;
}

void StoreInteger(std::uint8_t* bytes, std::uint32_t value)
{
    std::memcpy(bytes, &value, integerSize);
}

} // namespace

CCryptoPipeRequestData::CCryptoPipeRequestData(std::uint32_t requestType) : header_{requestType, statusGood, 0} {}

CCryptoPipeRequestData::~CCryptoPipeRequestData() = default;

void* CCryptoPipeRequestData::GetPart(std::uint32_t index)
{
    return index == 0 ? &header_ : nullptr;
}

std::uint32_t CCryptoPipeRequestData::GetPartSize(std::uint32_t index) const
{
    return index == 0 ? sizeof(Header) : 0;
}

void CCryptoPipeRequestData::StartMessage(std::int32_t status)
{
    header_.status = status;
    header_.position = 0;
    complete_ = true;
}

std::uint8_t* CCryptoPipeRequestData::AppendItem(std::uint8_t tag, std::uint64_t payload, std::uint32_t step)
{
    const std::uint64_t end = header_.position + itemHeaderSize + payload;
    if (end > maximumBody) {
        complete_ = false;
        WriteErrorEx_G("CCryptoPipeRequestData: An item of %llu bytes exceeds the limit of %u bytes a message",
                       static_cast<unsigned long long>(payload), maximumBody);
        return nullptr;
    }
    if (capacity_ < end) {
        capacity_ += step;
        body_.resize(std::max(capacity_, body_.length()));
    }

    std::uint8_t* item = body_.data() + header_.position;
    item[0] = tag;
    StoreInteger(item + 1, static_cast<std::uint32_t>(payload));
    header_.position = static_cast<std::uint32_t>(end);
    return item + itemHeaderSize;
}

bool CCryptoPipeRequestData::AddInt(std::uint32_t value)
{
    std::uint8_t* payload = AppendItem(tagInteger, integerSize, growthStep);
    if (payload == nullptr)
        return false;
    StoreInteger(payload, value);
    return true;
}

bool CCryptoPipeRequestData::AddData(const void* data, std::uint32_t length)
{
    std::uint64_t count = 0;
    if (data != nullptr)
        count = length == textLength ? std::strlen(static_cast<const char*>(data)) + 1 : length;

    const auto item = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, maximumBody) + itemHeaderSize);
    std::uint8_t* payload = AppendItem(tagData, count, std::max(item, growthStep));
    if (payload == nullptr)
        return false;
    if (count != 0)
        std::memcpy(payload, data, static_cast<std::size_t>(count));
    return true;
}

bool CCryptoPipeRequestData::AddValue(const PipeValue* value)
{
    const bool isInteger = value != nullptr && value->kind == PipeValue::Kind::integer;
    const char* text = value != nullptr && !isInteger ? value->text : nullptr;
    const std::uint64_t textSize = text != nullptr ? std::strlen(text) + 1 : 0;

    std::uint64_t count = 0;
    if (isInteger)
        count = 1 + integerSize;
    else if (text != nullptr)
        count = 1 + textSize;

    const auto item = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, maximumBody) + itemHeaderSize);
    std::uint8_t* payload = AppendItem(tagValue, count, std::max(item, growthStep));
    if (payload == nullptr)
        return false;
    if (isInteger) {
        payload[0] = valueInteger;
        StoreInteger(payload + 1, value->integer);
    } else if (text != nullptr) {
        payload[0] = valueText;
        std::memcpy(payload + 1, text, static_cast<std::size_t>(textSize));
    }
    return true;
}

const std::uint8_t* CCryptoPipeRequestData::Refuse(const char* reason, std::uint32_t& length)
{
    header_.status = statusMalformed;
    length = 0;
    WriteLog_G("%s", reason);
    return nullptr;
}

std::size_t CCryptoPipeRequestData::BytesFrom(const std::uint8_t* place) const
{
    return static_cast<std::size_t>(body_.data() + capacity_ - place);
}

void CCryptoPipeRequestData::RefuseShortItem()
{
    std::uint32_t length;
    Refuse(noMoreData, length);
}

const std::uint8_t* CCryptoPipeRequestData::GetDataPtr(std::uint8_t expectedTag, std::uint32_t& length)
{
    if (header_.position >= capacity_)
        return Refuse(noMoreData, length);

    const std::uint8_t* item = body_.data() + header_.position;
    const std::uint32_t remaining = capacity_ - header_.position;
    if (item[0] != expectedTag) {
        ++header_.position;
        return Refuse("CCryptoPipe::GetDataPtr: Unexpected data type", length);
    }
    if (remaining < itemHeaderSize || LoadInteger(item + 1) > remaining - itemHeaderSize) {
        ++header_.position;
        return Refuse(noMoreData, length);
    }

    length = LoadInteger(item + 1);
    header_.position += itemHeaderSize + length;
    return length != 0 ? item + itemHeaderSize : nullptr;
}

bool CCryptoPipeRequestData::CheckStatus(bool last)
{
    if (header_.status == statusGood && !last)
        return true;
    if (header_.status == statusGood && header_.position != capacity_) {
        header_.status = statusMalformed;
        WriteLog_G("CCryptoPipe::CheckStatus: Unhandled data");
    }
    header_.position = 0;
    return header_.status == statusGood;
}

bool CCryptoPipeRequestData::GetInt(std::uint32_t& value, bool last)
{
    std::uint32_t length;
    const std::uint8_t* payload = GetDataPtr(tagInteger, length);
    if (payload == nullptr)
        return false;
    if (BytesFrom(payload) < integerSize) {
        RefuseShortItem();
        return false;
    }

    const std::uint32_t received = LoadInteger(payload);
    if (!CheckStatus(last))
        return false;
    value = received;
    return true;
}

bool CCryptoPipeRequestData::GetString(const char*& text, bool last)
{
    std::uint32_t length;
    const std::uint8_t* payload = GetDataPtr(tagData, length);
    if (payload != nullptr && std::memchr(payload, 0, BytesFrom(payload)) == nullptr)
        RefuseShortItem();

    const bool good = CheckStatus(last);
    text = good ? reinterpret_cast<const char*>(payload) : nullptr;
    return good;
}

bool CCryptoPipeRequestData::GetData(const std::uint8_t*& data, std::uint32_t& length, bool last)
{
    const std::uint8_t* payload = GetDataPtr(tagData, length);
    const bool good = CheckStatus(last);
    data = good ? payload : nullptr;
    if (!good)
        length = 0;
    return good;
}

bool CCryptoPipeRequestData::GetValue(std::unique_ptr<PipeValue>& value, bool last)
{
    value.reset();
    std::uint32_t length;
    const std::uint8_t* payload = GetDataPtr(tagValue, length);

    PipeValue received;
    if (payload != nullptr && payload[0] == valueInteger) {
        if (BytesFrom(payload + 1) < integerSize)
            RefuseShortItem();
        else
            received.integer = LoadInteger(payload + 1);
    } else if (payload != nullptr) {
        received.kind = PipeValue::Kind::text;
        received.text = reinterpret_cast<const char*>(payload + 1);
        if (std::memchr(payload + 1, 0, BytesFrom(payload + 1)) == nullptr)
            RefuseShortItem();
    }

    if (!CheckStatus(last))
        return false;
    if (payload != nullptr)
        value = std::make_unique<PipeValue>(received);
    return true;
}

std::uint8_t CCryptoPipeRequestData::NextTag() const
{
    return header_.position < capacity_ ? body_.data()[header_.position] : std::uint8_t{0};
}

bool CCryptoPipeRequestData::ReceiveBody()
{
    const std::uint32_t announced = header_.position;
    DropBody();
    if (announced > maximumBody)
        return false;
    if (announced != 0) {
        body_ = element();
        body_.resize(announced);
        capacity_ = announced;
    }
    return true;
}

void CCryptoPipeRequestData::DropBody()
{
    header_.position = 0;
    capacity_ = 0;
    complete_ = true;
}
