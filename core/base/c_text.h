#pragma once

/// Lets the compiler hold a printf format against its arguments. Positions count from 1; a member function's `this` counts.
#if defined(__clang__)
#define CORE_PRINTF_FORMAT(formatPosition, firstArgument) __attribute__((format(printf, formatPosition, firstArgument)))
#else
#define CORE_PRINTF_FORMAT(formatPosition, firstArgument) __attribute__((format(gnu_printf, formatPosition, firstArgument)))
#endif

namespace ccrypto {

/// A terminated text that may be missing: a null pointer becomes the empty text.
constexpr const char* OrEmpty(const char* text)
{
    return text != nullptr ? text : "";
}

} // namespace ccrypto
