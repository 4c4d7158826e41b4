#pragma once

#include "core/memory/out_of_memory.h"
#include "core/platform/secure_wipe.h"

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>

/// Storage for secrets that is wiped before it is released.
namespace ccrypto {

/// A plain value, an array of such values above all, that is wiped before its storage is released; so is every copy. It is
/// initialised as the value itself is: not at all without braces.
template <typename Value>
struct Wiped : Value {
    static_assert(std::is_trivially_copyable_v<Value>);

    ~Wiped() { platform::SecureWipe(this, sizeof *this); }
};

/// A fixed number of plain values on the heap, zero at first and wiped before release. Without memory the process ends.
template <typename Value>
class WipedArray {
public:
    explicit WipedArray(std::size_t count) : values_(new (std::nothrow) Value[count]()), count_(count)
    {
        if (values_ == nullptr)
            EndOutOfMemory();
    }
    WipedArray(const WipedArray&) = delete;
    WipedArray& operator=(const WipedArray&) = delete;
    ~WipedArray() { platform::SecureWipe(values_.get(), count_ * sizeof(Value)); }

    Value* data() { return values_.get(); }
    const Value* data() const { return values_.get(); }
    std::size_t size() const { return count_; }
    Value* begin() { return data(); }
    const Value* begin() const { return data(); }
    Value* end() { return data() + count_; }
    const Value* end() const { return data() + count_; }
    Value& operator[](std::size_t index) { return values_[index]; }
    const Value& operator[](std::size_t index) const { return values_[index]; }

private:
    std::unique_ptr<Value[]> values_;
    std::size_t count_;
};

} // namespace ccrypto
