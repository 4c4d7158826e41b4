#include "core/memory/byte_vector.h"

#include "core/memory/out_of_memory.h"
#include "core/platform/secure_wipe.h"

#include <cstring>
#include <new>
#include <utility>

using namespace ccrypto;

CCryptoByteVector::CCryptoByteVector(const void* bytes, std::size_t length)
{
    append(bytes, length);
}

CCryptoByteVector::CCryptoByteVector(const CCryptoByteVector& other) : CCryptoByteVector(other.data(), other.length()) {}

CCryptoByteVector::CCryptoByteVector(CCryptoByteVector&& other) noexcept
    : bytes_(std::move(other.bytes_)), length_(std::exchange(other.length_, 0)), capacity_(std::exchange(other.capacity_, 0))
{
}

CCryptoByteVector& CCryptoByteVector::operator=(CCryptoByteVector other) noexcept
{
    std::swap(bytes_, other.bytes_);
    std::swap(length_, other.length_);
    std::swap(capacity_, other.capacity_);
    return *this;
}

CCryptoByteVector::~CCryptoByteVector()
{
    platform::SecureWipe(bytes_.get(), capacity_);
}

void CCryptoByteVector::append(const void* bytes, std::size_t length)
{
    if (length == 0 || bytes == nullptr)
        return;
    if (length_ + length > capacity_) {
        const std::size_t capacity = capacity_ == 0 ? length : (length_ + length) * 2;
        CCryptoByteVector larger;
        larger.bytes_.reset(new (std::nothrow) std::uint8_t[capacity]);
        if (larger.bytes_ == nullptr)
            EndOutOfMemory();
        larger.capacity_ = capacity;
        larger.length_ = length_;
        if (length_ != 0)
            std::memcpy(larger.bytes_.get(), bytes_.get(), length_);
        // The bytes may lie in the storage that the old vector still holds, so they are copied before it goes.
        std::memcpy(larger.bytes_.get() + length_, bytes, length);
        larger.length_ += length;
        *this = std::move(larger);
        return;
    }
    std::memmove(bytes_.get() + length_, bytes, length);
    length_ += length;
}
