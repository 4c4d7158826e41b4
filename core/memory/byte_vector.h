#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

/// A run of bytes for the network layer; wiped when it is released.
class CCryptoByteVector {
public:
    CCryptoByteVector() = default;
    CCryptoByteVector(const void* bytes, std::size_t length);
    CCryptoByteVector(const CCryptoByteVector& other);
    CCryptoByteVector(CCryptoByteVector&& other) noexcept;
    CCryptoByteVector& operator=(CCryptoByteVector other) noexcept;
    virtual ~CCryptoByteVector();

    std::size_t length() const { return length_; }
    std::size_t capacity() const { return capacity_; }
    const std::uint8_t* data() const { return bytes_.get(); }
    std::span<const std::uint8_t> bytes() const { return {bytes_.get(), length_}; }

    void append(const void* bytes, std::size_t length);

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t length_ = 0;
    std::size_t capacity_ = 0;
};
