#pragma once

#include "core/element.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>

/// Bytes collected from the last to the first, so that the length of what is already there is known when its header is written.
class BackBuffer {
public:
    std::uint32_t length() const { return storage_.length() - start_; }
    std::span<const std::uint8_t> bytes() const { return storage_.bytes().subspan(start_); }

    void prepend(std::uint8_t byte)
    {
        if (start_ == 0)
            grow(1);
        storage_.data()[--start_] = byte;
    }

    void prepend(std::span<const std::uint8_t> bytes)
    {
        if (bytes.empty())
            return;
        if (start_ < bytes.size())
            grow(bytes.size());
        start_ -= static_cast<std::uint32_t>(bytes.size());
        std::memcpy(storage_.data() + start_, bytes.data(), bytes.size());
    }

private:
    void grow(std::size_t more)
    {
        constexpr std::size_t leastStorage = 4096;
        const std::size_t used = length();
        // Bytes in front of `start_` are never read. The element ends the process when the sum exceeds what it can hold.
        element larger;
        larger.makeRoom(std::min<std::size_t>(std::max(leastStorage, (used + more) * 2), UINT32_MAX));
        larger.lengthen(larger.spare());
        const auto start = static_cast<std::uint32_t>(larger.length() - used);
        if (used != 0)
            std::memcpy(larger.data() + start, storage_.data() + start_, used);
        storage_ = std::move(larger);
        start_ = start;
    }

    element storage_;
    std::uint32_t start_ = 0;
};
