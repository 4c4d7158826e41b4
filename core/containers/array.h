#pragma once

#include "core/log/log_writers.h"
#include "core/memory/out_of_memory.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <utility>

/// A resizable array of values, each of which has a default. It grows to exactly the size asked for and keeps its storage when it
/// shrinks, so a caller that knows the final size sets it once instead of appending.
///
/// It carries no lock. References and iterators hold until the array grows. setSize and append answer false when there is no
/// memory; a copy that finds none ends the process, since nothing could report it.
template <typename T>
class CCryptoArray {
public:
    CCryptoArray() = default;
    CCryptoArray(std::initializer_list<T> values) { assign(values.begin(), static_cast<std::uint32_t>(values.size())); }
    CCryptoArray(const CCryptoArray& other) { assign(other.begin(), other.size_); }
    CCryptoArray(CCryptoArray&& other) noexcept { swap(other); }
    CCryptoArray& operator=(const CCryptoArray& other)
    {
        if (this != &other) {
            clear();
            assign(other.begin(), other.size_);
        }
        return *this;
    }
    CCryptoArray& operator=(CCryptoArray&& other) noexcept
    {
        swap(other);
        return *this;
    }
    virtual ~CCryptoArray() = default;

    std::uint32_t size() const { return size_; }
    std::uint32_t capacity() const { return capacity_; }
    bool isEmpty() const { return size_ == 0; }

    /// Items that fall away are reset to the default value; items that are new have it.
    /// \return false, the array unchanged, when there is no memory.
    [[nodiscard]] bool setSize(std::uint32_t size)
    {
        if (size > capacity_)
            return grow(size);
        for (std::uint32_t index = size; index < size_; ++index)
            items_[index] = T();
        size_ = size;
        return true;
    }

    /// \return false, the array unchanged, when there is no memory.
    [[nodiscard]] bool append(T value)
    {
        if (size_ == UINT32_MAX || !setSize(size_ + 1))
            return false;
        items_[size_ - 1] = std::move(value);
        return true;
    }

    /// Keeps the storage.
    void clear() { static_cast<void>(setSize(0)); }

    /// The item at `index`. Past the end, which is logged, a default value that belongs to no item: what is written to it is lost.
    T& operator[](std::uint32_t index) { return index < size_ ? items_[index] : stray(index); }
    const T& operator[](std::uint32_t index) const
    {
        static const T none{};
        if (index < size_)
            return items_[index];
        reportPastEnd(index);
        return none;
    }

    T* begin() { return items_.get(); }
    T* end() { return items_.get() + size_; }
    const T* begin() const { return items_.get(); }
    const T* end() const { return items_.get() + size_; }

    friend bool operator==(const CCryptoArray& first, const CCryptoArray& second)
    {
        return std::equal(first.begin(), first.end(), second.begin(), second.end());
    }

private:
    bool grow(std::uint32_t size)
    {
        std::unique_ptr<T[]> items(new (std::nothrow) T[size]());
        if (!items)
            return false;
        std::move(begin(), end(), items.get());
        items_ = std::move(items);
        size_ = capacity_ = size;
        return true;
    }

    void assign(const T* values, std::uint32_t count)
    {
        if (!setSize(count))
            ccrypto::EndOutOfMemory();
        std::copy_n(values, count, items_.get());
    }

    void reportPastEnd(std::uint32_t index) const { WriteErrorEx_G("Array access past the end: %u>=%u", index, size_); }

    T& stray(std::uint32_t index)
    {
        reportPastEnd(index);
        if (stray_) {
            *stray_ = T();
        } else {
            stray_.reset(new (std::nothrow) T());
            if (!stray_)
                ccrypto::EndOutOfMemory();
        }
        return *stray_;
    }

    void swap(CCryptoArray& other) noexcept
    {
        std::swap(items_, other.items_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
        std::swap(stray_, other.stray_);
    }

    std::unique_ptr<T[]> items_;
    std::uint32_t size_ = 0;
    std::uint32_t capacity_ = 0;
    std::unique_ptr<T> stray_;
};
