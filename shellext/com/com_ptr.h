#pragma once

#include <unknwn.h>

namespace ccrypto {

/// Owns one reference to a COM object.
template <typename Interface>
class ComPtr {
public:
    ComPtr() = default;
    /// Takes over the caller's reference; null for none.
    explicit ComPtr(Interface* object) : object_(object) {}
    ~ComPtr() { reset(); }
    ComPtr(const ComPtr&) = delete;
    ComPtr& operator=(const ComPtr&) = delete;

    /// Where a call that hands out a reference puts it; what was owned is released first.
    Interface** receive()
    {
        reset();
        return &object_;
    }
    /// The same for calls that take `void**`.
    void** receiveVoid() { return reinterpret_cast<void**>(receive()); }

    void reset()
    {
        if (object_ != nullptr)
            object_->Release();
        object_ = nullptr;
    }

    Interface* get() const { return object_; }
    Interface* operator->() const { return object_; }
    Interface& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    Interface* object_ = nullptr;
};

} // namespace ccrypto
