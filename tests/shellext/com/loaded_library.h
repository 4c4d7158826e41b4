#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

namespace ccrypto {

/// The shell extension itself, loaded as COM loads it.
class LoadedLibrary {
public:
    LoadedLibrary() : module_(LoadLibraryExA(PROGRAM_DIR "/explorermenuhandler.dll", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH))
    {
        if (module_ == nullptr)
            throw std::runtime_error("the library cannot be loaded: error " + std::to_string(GetLastError()));
    }
    ~LoadedLibrary() { FreeLibrary(module_); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    HRESULT call(const char* name) const { return find<HRESULT(WINAPI*)()>(name)(); }

    HRESULT getClassObject(const CLSID& clsid, const IID& interfaceId, void** object) const
    {
        using Export = HRESULT(WINAPI*)(const CLSID&, const IID&, void**);
        return find<Export>("DllGetClassObject")(clsid, interfaceId, object);
    }

    HMODULE module() const { return module_; }
    std::wstring path() const
    {
        wchar_t path[MAX_PATH];
        GetModuleFileNameW(module_, path, MAX_PATH);
        return path;
    }

private:
    template <typename Export>
    Export find(const char* name) const
    {
        const auto found = GetProcAddress(module_, name);
        if (found == nullptr)
            throw std::runtime_error(std::string(name) + " is not exported");
        return reinterpret_cast<Export>(reinterpret_cast<void*>(found));
    }

    HMODULE module_;
};

} // namespace ccrypto
