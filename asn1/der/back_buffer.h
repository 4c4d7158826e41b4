#pragma once

#include "core/memory/out_of_memory.h"
#include "core/platform/secure_wipe.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>

namespace ccrypto {

/// A buffer that grows at its front: encodings are written from the last byte to the first, so that the length of a value is known
/// when its header is written. The bytes are wiped at the end. A failed allocation ends the process.
class BackBuffer {
public:
    BackBuffer() = default;
    ~BackBuffer() { platform::SecureWipe(start_, length()); }
    BackBuffer(const BackBuffer&) = delete;
    BackBuffer& operator=(const BackBuffer&) = delete;

    std::size_t length() const { return static_cast<std::size_t>(end_ - start_); }
    std::span<const std::uint8_t> bytes() const { return {start_, length()}; }

    void prepend(std::uint8_t byte)
    {
        if (start_ == storage())
            grow(1);
        *--start_ = byte;
    }

    void prepend(std::span<const std::uint8_t> bytes)
    {
        if (bytes.empty())
            return;
        if (static_cast<std::size_t>(start_ - storage()) < bytes.size())
            grow(bytes.size());
        start_ -= bytes.size();
        std::memcpy(start_, bytes.data(), bytes.size());
    }

private:
    std::uint8_t* storage() { return large_ != nullptr ? large_.get() : small_; }

    void grow(std::size_t more)
    {
        const std::size_t used = length();
        const std::size_t size = 2 * (used + more) + sizeof small_;
        // Bytes before `start_` are never read.
        auto* const larger = static_cast<std::uint8_t*>(std::malloc(size));
        if (larger == nullptr)
            EndOutOfMemory();
        std::uint8_t* const start = larger + size - used;
        std::memcpy(start, start_, used);
        platform::SecureWipe(start_, used);
        large_.reset(larger);
        end_ = larger + size;
        start_ = start;
    }

    std::uint8_t small_[2048];
    struct Free {
        void operator()(std::uint8_t* storage) const { std::free(storage); }
    };
    std::unique_ptr<std::uint8_t[], Free> large_;
    std::uint8_t* end_ = small_ + sizeof small_;
    std::uint8_t* start_ = end_;
};

} // namespace ccrypto
