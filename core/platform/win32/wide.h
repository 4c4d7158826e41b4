#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Between the UTF-8 of the library and the 16-bit text of Windows calls.
namespace ccrypto::platform {

/// A surrogate without its partner becomes a three-byte sequence of its own, so that every Windows name survives the way there and
/// back.
std::string WideToUtf8(std::wstring_view wide);

/// The way back. Bytes that are not UTF-8 as a whole are taken as Latin-1, as the library's texts are.
std::wstring Utf8ToWide(std::string_view utf8);

/// The same 16-bit units under the type the other side uses.
inline const wchar_t* AsWide(const char16_t* units)
{
    static_assert(sizeof(wchar_t) == sizeof(char16_t));
    return reinterpret_cast<const wchar_t*>(units);
}

inline const char16_t* AsUtf16(const wchar_t* units)
{
    return reinterpret_cast<const char16_t*>(units);
}

} // namespace ccrypto::platform
