#pragma once

#include "core/platform/system_handle.h"

#include <windows.h>

#include <stdexcept>
#include <string>

namespace ccrypto {

struct ModuleKind {
    using Value = HMODULE;
    static Value none() { return nullptr; }
    static void close(Value value) { FreeLibrary(value); }
};
using OwnedModule = SystemHandle<ModuleKind>;

/// The shell extension itself, loaded as COM loads it.
class LoadedLibrary {
public:
    LoadedLibrary() : module_(LoadLibraryExA(PROGRAM_DIR "/explorermenuhandler.dll", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH))
    {
        if (!module_)
            throw std::runtime_error("the library cannot be loaded: error " + std::to_string(GetLastError()));
    }

    HRESULT call(const char* name) const { return find<HRESULT(WINAPI*)()>(name)(); }

    HRESULT getClassObject(const CLSID& clsid, const IID& interfaceId, void** object) const
    {
        using Export = HRESULT(WINAPI*)(const CLSID&, const IID&, void**);
        return find<Export>("DllGetClassObject")(clsid, interfaceId, object);
    }

    HMODULE module() const { return module_.get(); }
    std::wstring path() const
    {
        wchar_t path[MAX_PATH];
        GetModuleFileNameW(module_.get(), path, MAX_PATH);
        return path;
    }

private:
    template <typename Export>
    Export find(const char* name) const
    {
        const auto found = GetProcAddress(module_.get(), name);
        if (found == nullptr)
            throw std::runtime_error(std::string(name) + " is not exported");
        return reinterpret_cast<Export>(reinterpret_cast<void*>(found));
    }

    OwnedModule module_;
};

} // namespace ccrypto
