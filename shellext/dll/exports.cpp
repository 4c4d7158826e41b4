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
    const DWORD length = GetModuleFileNameW(module::Handle(), path, textCapacity);
    if (length == 0)
        return ResultFromLastError();
    // A path that was cut would name another file.
    return length < textCapacity ? S_OK : insufficientBuffer;
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
        CCryptoAutoLogger logger("DllGetClassObject");

        if (ppv != nullptr)
            *ppv = nullptr;
        const ComPtr factory(new (std::nothrow) ClassFactory);
        if (!factory)
            return logger.fail(E_OUTOFMEMORY);
        const HRESULT result = factory->QueryInterface(riid, ppv);
        return SUCCEEDED(result) ? logger.succeed(result) : logger.fail(result);
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
