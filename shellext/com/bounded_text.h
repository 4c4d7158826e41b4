#pragma once

#include <windows.h>

#include <cstddef>
#include <initializer_list>
#include <string_view>

namespace ccrypto {

/// The size of every fixed text buffer, terminating zero included.
constexpr std::size_t textCapacity = 260;

/// The largest capacity, in characters, that a caller may claim.
constexpr std::size_t maxTextCapacity = 0x7FFFFFFF;

/// Writes `parts` one after the other to `target`, which holds `capacity` characters: at most `capacity - 1` of them and a zero.
/// \return S_OK; 0x8007007A when the text was cut; E_INVALIDARG for no target or a capacity of 0 or above `maxTextCapacity`,
/// which sets the first character to zero where there is one.
[[nodiscard]] HRESULT JoinBounded(wchar_t* target, std::size_t capacity, std::initializer_list<std::wstring_view> parts) noexcept;

/// The same for one text.
inline HRESULT CopyBounded(wchar_t* target, std::size_t capacity, std::wstring_view text) noexcept
{
    return JoinBounded(target, capacity, {text});
}

/// The same for a buffer whose size is known.
template <std::size_t capacity>
[[nodiscard]] HRESULT JoinBounded(wchar_t (&target)[capacity], std::initializer_list<std::wstring_view> parts) noexcept
{
    return JoinBounded(target, capacity, parts);
}

} // namespace ccrypto
