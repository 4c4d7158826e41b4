#pragma once

#include <windows.h>

#include <new>

namespace ccrypto {

/// A Win32 status as an HRESULT: 0 stays S_OK, and what is an HRESULT already passes through.
constexpr HRESULT ResultFromWin32(LONG status)
{
    if (status <= 0)
        return status;
    return static_cast<HRESULT>((static_cast<ULONG>(status) & 0xFFFF) | 0x80070000);
}

/// The calling thread's last error as an HRESULT.
inline HRESULT ResultFromLastError()
{
    return ResultFromWin32(static_cast<LONG>(GetLastError()));
}

constexpr HRESULT insufficientBuffer = ResultFromWin32(ERROR_INSUFFICIENT_BUFFER);

/// The edge of the library: runs `operation` and lets no exception out of it.
/// \return its result, or E_OUTOFMEMORY, or E_UNEXPECTED for anything else that was thrown.
template <typename Operation>
HRESULT Guarded(Operation&& operation) noexcept
{
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

} // namespace ccrypto
