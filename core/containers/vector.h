#pragma once

#include "core/memory/out_of_memory.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

/// A vector of objects that it owns and destroys, of class T or derived from it, in the order in which they were added. An object
/// stays where it is until it is removed, however the vector grows.
///
/// It can be moved, not copied, since the objects may be of derived classes. It carries no lock. Without memory for the pointers
/// the process ends.
template <typename T>
class CCryptoVector {
public:
    CCryptoVector() = default;
    CCryptoVector(CCryptoVector&& other) noexcept = default;
    CCryptoVector& operator=(CCryptoVector&& other) noexcept = default;
    virtual ~CCryptoVector() = default;

    std::uint32_t size() const { return static_cast<std::uint32_t>(objects_.size()); }
    bool isEmpty() const { return objects_.empty(); }

    /// Takes over `object`; a null pointer is not stored. \return where it lies, null for nothing.
    T* append(std::unique_ptr<T> object)
    {
        if (!object)
            return nullptr;
        ccrypto::internal::OrEndOutOfMemory([&] { objects_.push_back(std::move(object)); });
        return objects_.back().get();
    }

    /// Null past the end.
    T* operator[](std::uint32_t index) { return index < objects_.size() ? objects_[index].get() : nullptr; }
    const T* operator[](std::uint32_t index) const { return index < objects_.size() ? objects_[index].get() : nullptr; }

    /// Removes the object at `index` and gives it to the caller; null past the end.
    [[nodiscard]] std::unique_ptr<T> take(std::uint32_t index)
    {
        if (index >= objects_.size())
            return nullptr;
        std::unique_ptr<T> object = std::move(objects_[index]);
        objects_.erase(objects_.begin() + index);
        return object;
    }
    /// Destroys the object at `index`. \return false past the end.
    bool removeAt(std::uint32_t index) { return take(index) != nullptr; }
    /// Destroys the objects, the one added first before the others.
    void clear()
    {
        for (std::unique_ptr<T>& object : objects_)
            object.reset();
        objects_.clear();
    }

    /// The pointers to the objects, none of them null.
    auto begin() const { return objects_.begin(); }
    auto end() const { return objects_.end(); }

private:
    std::vector<std::unique_ptr<T>> objects_;
};
