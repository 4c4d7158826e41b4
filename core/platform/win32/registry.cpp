#include "core/platform/registry.h"

#include "core/platform/win32/registry_view.h"

#include <windows.h>

namespace ccrypto::platform {

namespace {

std::uint16_t NativeArchitecture()
{
    SYSTEM_INFO info{};
    using Query = void(WINAPI*)(SYSTEM_INFO*);
    const HMODULE kernel = GetModuleHandleA("kernel32.dll");
    const FARPROC found = kernel != nullptr ? GetProcAddress(kernel, "GetNativeSystemInfo") : nullptr;
    if (found != nullptr)
        reinterpret_cast<Query>(reinterpret_cast<void*>(found))(&info);
    else
        GetSystemInfo(&info);
    return info.wProcessorArchitecture;
}

REGSAM AccessMask(RegistryAccess access)
{
    const REGSAM mask = access == RegistryAccess::query ? KEY_QUERY_VALUE : access == RegistryAccess::read ? KEY_READ : KEY_WRITE;
    return mask | RegistryViewFlag();
}

HKEY RootOf(RegistryHive hive)
{
    return hive == RegistryHive::currentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

} // namespace

std::uint32_t RegistryViewFlag()
{
    // The version number is fixed at 6.2 for programs that do not name a later one, which is all this asks.
    static const std::uint32_t flag = RegistryViewFlag(LOBYTE(LOWORD(GetVersion())), NativeArchitecture());
    return flag;
}

void RegistryKey::Kind::close(Value value)
{
    RegCloseKey(static_cast<HKEY>(value));
}

std::uint32_t RegistryKey::open(RegistryHive hive, const char* path, RegistryAccess access)
{
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExA(RootOf(hive), path, 0, AccessMask(access), &key);
    handle_.reset(key);
    return static_cast<std::uint32_t>(status);
}

std::uint32_t RegistryKey::openBelow(const RegistryKey& parent, const char* path, RegistryAccess access)
{
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExA(static_cast<HKEY>(parent.handle_.get()), path, 0, AccessMask(access), &key);
    handle_.reset(key);
    return static_cast<std::uint32_t>(status);
}

std::uint32_t RegistryKey::create(RegistryHive hive, const char* path, bool isVolatile)
{
    HKEY key = nullptr;
    const DWORD options = isVolatile ? REG_OPTION_VOLATILE : REG_OPTION_NON_VOLATILE;
    const LSTATUS status =
        RegCreateKeyExA(RootOf(hive), path, 0, nullptr, options, AccessMask(RegistryAccess::write), nullptr, &key, nullptr);
    handle_.reset(key);
    return static_cast<std::uint32_t>(status);
}

std::uint32_t RegistryKey::queryValue(const char* name, void* buffer, std::uint32_t& size, bool& isText) const
{
    DWORD type = 0;
    DWORD length = size;
    const LSTATUS status =
        RegQueryValueExA(static_cast<HKEY>(handle_.get()), name, nullptr, &type, static_cast<BYTE*>(buffer), &length);
    isText = type == REG_SZ;
    // Text may be stored with its terminator, or without.
    if (status == ERROR_SUCCESS && isText && buffer != nullptr && length != 0 &&
        static_cast<const char*>(buffer)[length - 1] == '\0')
        --length;
    size = length;
    return static_cast<std::uint32_t>(status);
}

std::uint32_t RegistryKey::setText(const char* name, const char* text, std::uint32_t length)
{
    return static_cast<std::uint32_t>(
        RegSetValueExA(static_cast<HKEY>(handle_.get()), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text), length));
}

std::uint32_t RegistryKey::enumerate(std::uint32_t index, char* name, std::uint32_t size) const
{
    return static_cast<std::uint32_t>(RegEnumKeyA(static_cast<HKEY>(handle_.get()), index, name, size));
}

} // namespace ccrypto::platform
