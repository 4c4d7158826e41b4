#include "core/diagnostics/auto_logger.h"
#include "shellext/class_factory.h"
#include "shellext/com/bounded_text.h"
#include "shellext/com/com_ptr.h"
#include "shellext/com/hresult.h"
#include "shellext/com/module.h"
#include "shellext/com/registration.h"

#include <new>

using namespace ccrypto;

namespace {

constexpr wchar_t allFileTypes[] = L"*";

/// \return S_OK with the library's full path in `path`, or the reason why it is not known.
HRESULT ModulePath(wchar_t (&path)[textCapacity])
{
    if (GetModuleFileNameW(module::Handle(), path, textCapacity) == 0)
        return ResultFromLastError();
    return S_OK;
}

HRESULT Register()
{
    wchar_t path[textCapacity];
    HRESULT result = ModulePath(path);
    if (SUCCEEDED(result)) {
        result =
            RegisterInprocServer(path, CLSID_FileContextMenuExt, L"ExplorerMenuHandler.FileContextMenuExt Class", L"Apartment");
    }
    // Registered for every file type; the handler itself picks out the PDF files.
    if (SUCCEEDED(result)) {
        result =
            RegisterShellExtContextMenuHandler(allFileTypes, CLSID_FileContextMenuExt, L"ExplorerMenuHandler.FileContextMenuExt");
    }
    return result;
}

HRESULT Unregister()
{
    wchar_t path[textCapacity];
    HRESULT result = ModulePath(path);
    if (SUCCEEDED(result))
        result = UnregisterInprocServer(CLSID_FileContextMenuExt);
    if (SUCCEEDED(result))
        result = UnregisterShellExtContextMenuHandler(allFileTypes, CLSID_FileContextMenuExt);
    return result;
}

HRESULT Logged(const char* name, HRESULT (*operation)())
{
    return Guarded([&] {
        CCryptoAutoLogger logger(name);
        const HRESULT result = operation();
        if (FAILED(result))
            logger.setWindowsError(static_cast<std::uint32_t>(result));
        else
            logger.setResult(true);
        return result;
    });
}

} // namespace

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv)
{
    if (!IsEqualCLSID(rclsid, CLSID_FileContextMenuExt))
        return CLASS_E_CLASSNOTAVAILABLE;
    return Guarded([&] {
        if (ppv != nullptr)
            *ppv = nullptr;
        const ComPtr factory(new (std::nothrow) ClassFactory);
        if (!factory)
            return E_OUTOFMEMORY;
        return factory->QueryInterface(riid, ppv);
    });
}

STDAPI DllCanUnloadNow()
{
    return module::ObjectCount() > 0 ? S_FALSE : S_OK;
}

STDAPI DllRegisterServer()
{
    return Logged("DllRegisterServer", Register);
}

STDAPI DllUnregisterServer()
{
    return Logged("DllUnregisterServer", Unregister);
}
