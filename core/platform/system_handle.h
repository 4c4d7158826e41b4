#pragma once

#include <utility>

namespace ccrypto {

/// The one owner of every kind of system handle: it takes the handle on the line that obtains it and gives it back exactly once.
/// It can be moved, not copied; what was moved from is empty.
///
/// A `Kind` describes the handle:
///
///     struct KernelHandleKind {
///         using Value = HANDLE;
///         static Value none() { return INVALID_HANDLE_VALUE; }                        // what an empty owner holds
///         static bool isNone(Value value) { return !value || value == none(); }       // only where there are several
///         static void close(Value value) { CloseHandle(value); }                      // never called with none
///     };
///     using ScopedHandle = SystemHandle<KernelHandleKind>;
///
///     const ScopedHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
///     if (!event)
///         return fail();
///     HKEY and the like, handed out through a pointer:  RegOpenKeyExW(parent, path, 0, KEY_READ, key.receive())
///
/// A header for both systems keeps `void*` or a number as the Value, and each system's source file defines `close`.
template <typename Kind>
class SystemHandle {
public:
    using Value = typename Kind::Value;

    SystemHandle() noexcept = default;
    explicit SystemHandle(Value value) noexcept : value_(value) {}
    SystemHandle(SystemHandle&& other) noexcept : value_(other.release()) {}
    SystemHandle& operator=(SystemHandle&& other) noexcept
    {
        if (this != &other)
            reset(other.release());
        return *this;
    }
    ~SystemHandle() { reset(); }

    [[nodiscard]] Value get() const noexcept { return value_; }
    explicit operator bool() const noexcept { return !IsNone(value_); }

    /// Closes the handle held so far and takes over `value`.
    void reset(Value value = Kind::none()) noexcept
    {
        if (const Value held = std::exchange(value_, value); !IsNone(held))
            Kind::close(held);
    }
    /// Hands the handle over to the caller, who closes it.
    [[nodiscard]] Value release() noexcept { return std::exchange(value_, Kind::none()); }
    /// Closes the handle held so far. \return the place to which a system call writes the handle that this object then owns.
    [[nodiscard]] Value* receive() noexcept
    {
        reset();
        return &value_;
    }

private:
    static bool IsNone(Value value) noexcept
    {
        if constexpr (requires { Kind::isNone(value); })
            return Kind::isNone(value);
        else
            return value == Kind::none();
    }

    Value value_ = Kind::none();
};

} // namespace ccrypto
