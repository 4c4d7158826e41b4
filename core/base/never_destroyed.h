#pragma once

#include <utility>

namespace ccrypto {

/// Storage for a process-wide object that static initialisers may use before main and static destructors after it: it is built in
/// place, by constant initialisation where T allows it, and its destructor never runs. What such an object holds at the end of the
/// process, or when the library is unloaded, is its owner's to give back.
template <typename T>
class NeverDestroyed {
public:
    template <typename... Arguments>
    constexpr explicit NeverDestroyed(Arguments&&... arguments) : value_(std::forward<Arguments>(arguments)...)
    {
    }
    constexpr ~NeverDestroyed() {}
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& operator*() { return value_; }
    const T& operator*() const { return value_; }
    T* operator->() { return &value_; }

private:
    union {
        T value_;
    };
};

} // namespace ccrypto
