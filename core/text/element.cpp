#include "core/text/element.h"

#include "core/log/log_writers.h"
#include "core/memory/out_of_memory.h"
#include "core/platform/heap_block.h"
#include "core/platform/secure_wipe.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <utility>

using namespace ccrypto;

namespace {

constexpr std::uint32_t minGrowth = 256;
/// Storage of this size is doubled when it has to grow again.
constexpr std::uint32_t doubledFrom = 4096;

} // namespace

element::element(const char* text) : element(text != nullptr ? std::string_view(text) : std::string_view()) {}

element::element(std::string_view text) : element(text.data(), LengthOf(text.size()), ElementType::text) {}

element::element(const void* bytes, std::uint32_t length, ElementType type) : element(type)
{
    append(bytes, length);
}

void element::appendNumber(std::uint32_t number)
{
    const std::uint8_t bytes[] = {static_cast<std::uint8_t>(number >> 24), static_cast<std::uint8_t>(number >> 16),
                                  static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
    std::uint32_t leading = 0;
    while (leading < 3 && bytes[leading] == 0)
        ++leading;
    append(bytes + leading, 4 - leading);
}

element element::FromTruth(bool value)
{
    element truth(ElementType::truth);
    truth.append(static_cast<std::uint8_t>(value ? 1 : 0));
    return truth;
}

element::element(const element& other) : type_(other.type_), negative_(other.negative_)
{
    append(other.data_, other.length_);
}

element& element::operator=(const element& other)
{
    if (this != &other) {
        assign(other.data_, other.length_);
        type_ = other.type_;
        negative_ = other.negative_;
    }
    return *this;
}

element& element::operator=(element&& other) noexcept
{
    if (this != &other) {
        release();
        takeStorage(other);
        type_ = other.type_;
        negative_ = other.negative_;
    }
    return *this;
}

void element::releaseStorage() noexcept
{
    if (wipeReleased.load(std::memory_order_relaxed))
        platform::SecureWipe(data_, capacity_);
    std::free(data_);
}

void element::grow(std::uint32_t size)
{
    std::uint64_t capacity = size;
    std::uint64_t room = 0;
    std::uint64_t wanted = size;
    if (data_ != nullptr) {
        capacity = std::min<std::uint64_t>(size + std::max<std::uint64_t>(minGrowth, size / 5), maxLength);
        room = isInline() ? sizeof inline_ : platform::HeapBlockSize(data_);
        wanted = room < doubledFrom ? capacity : std::max(capacity, 2 * room);
    } else if (size <= sizeof inline_) {
        data_ = inline_;
        room = sizeof inline_;
    }
    if (capacity > room) {
        auto* storage = static_cast<std::uint8_t*>(std::malloc(wanted));
        if (storage == nullptr)
            EndOutOfMemory();
        if (length_ != 0)
            std::memcpy(storage, data_, length_);
        release();
        data_ = storage;
    }
    capacity_ = static_cast<std::uint32_t>(capacity);
}

std::uint8_t element::operator[](std::uint32_t index) const
{
    if (index >= length_) {
        WriteErrorEx_G("Const buffer overflow access: %d>%d", static_cast<int>(index), static_cast<int>(length_));
        return 0;
    }
    return data_[index];
}

void element::resize(std::uint32_t length)
{
    if (length > length_) {
        reserve(length);
        std::memset(data_ + length_, 0, length - length_);
    } else if (length < length_) {
        platform::SecureWipe(data_ + length, length_ - length);
    }
    length_ = length;
}

void element::EndTooLong()
{
    EndOutOfMemory();
}

void element::appendGrowing(const void* bytes, std::uint32_t length, std::uint32_t spare)
{
    if (bytes == nullptr)
        length = 0;
    // The bytes may lie in the storage that growth is about to give up.
    const std::less<> isBefore;
    const auto* source = static_cast<const std::uint8_t*>(bytes);
    const bool own = data_ != nullptr && !isBefore(source, data_) && isBefore(source, data_ + length_);
    const std::ptrdiff_t offset = own ? source - data_ : 0;
    makeRoom(std::uint64_t{length} + spare);
    if (length != 0)
        std::memmove(data_ + length_, own ? data_ + offset : source, length);
    length_ += length;
}

void element::assign(const void* bytes, std::uint32_t length)
{
    if (length > capacity_) {
        // More than the capacity cannot be bytes of this element.
        clear();
        append(bytes, length);
        return;
    }
    if (bytes == nullptr)
        length = 0;
    if (length != 0)
        std::memmove(data_, bytes, length);
    if (length < length_)
        platform::SecureWipe(data_ + length, length_ - length);
    length_ = length;
}

void element::erase(std::uint32_t index, std::uint32_t count)
{
    if (index >= length_ || count == 0)
        return;
    count = std::min(count, length_ - index);
    std::memmove(data_ + index, data_ + index + count, length_ - index - count);
    resize(length_ - count);
}

void element::clear()
{
    resize(0);
}

const char* element::terminate()
{
    makeRoom(1);
    data_[length_] = 0;
    return reinterpret_cast<const char*>(data_);
}

bool element::operator==(const element& other) const
{
    if (type_ != other.type_ || negative_ != other.negative_ || length_ != other.length_)
        return false;
    std::uint8_t difference = 0;
    for (std::uint32_t index = 0; index < length_; ++index)
        difference = static_cast<std::uint8_t>(difference | (data_[index] ^ other.data_[index]));
    return difference == 0;
}

void element::WipeReleasedBuffers(bool wipe)
{
    wipeReleased = wipe;
}
