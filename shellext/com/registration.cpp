#include "shellext/com/registration.h"

#include "shellext/com/bounded_text.h"
#include "shellext/com/hresult.h"
#include "shellext/com/owned_handles.h"

#include <objbase.h>

#include <string>

namespace ccrypto {

namespace {

/// "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}".
struct ClassIdText {
    explicit ClassIdText(const CLSID& clsid) { StringFromGUID2(clsid, text, textCapacity); }

    wchar_t text[textCapacity] = {};
};

HRESULT FormatClassKey(const CLSID& clsid, std::wstring_view below, wchar_t (&key)[textCapacity])
{
    return JoinBounded(key, {L"CLSID\\", ClassIdText(clsid).text, below});
}

/// The program identifier that the key of the extension `fileType` names.
class ProgramIdentifier {
public:
    /// \return `fileType` itself when it is not an extension or its key names nothing; valid while this lives.
    const wchar_t* resolve(const wchar_t* fileType)
    {
        if (fileType[0] != L'.' || FAILED(GetHKCRRegistryKeyAndValue(fileType, nullptr, text_, textCapacity * sizeof(wchar_t))))
            return fileType;
        return text_[0] != 0 ? text_ : fileType;
    }

private:
    // Stored text need not be terminated; the last character is never read into.
    wchar_t text_[textCapacity + 1] = {};
};

HRESULT FormatHandlerKey(const wchar_t* fileType, const CLSID& clsid, wchar_t (&key)[textCapacity])
{
    if (fileType == nullptr)
        return E_INVALIDARG;
    ProgramIdentifier identifier;
    return JoinBounded(key, {identifier.resolve(fileType), L"\\shellex\\ContextMenuHandlers\\", ClassIdText(clsid).text});
}

} // namespace

HRESULT RegisterInprocServer(const wchar_t* modulePath, const CLSID& clsid, const wchar_t* friendlyName,
                             const wchar_t* threadingModel)
{
    if (modulePath == nullptr || threadingModel == nullptr)
        return E_INVALIDARG;

    wchar_t key[textCapacity];
    HRESULT result = FormatClassKey(clsid, {}, key);
    if (SUCCEEDED(result))
        result = SetHKCRRegistryKeyAndValue(key, nullptr, friendlyName);
    if (SUCCEEDED(result))
        result = FormatClassKey(clsid, L"\\InprocServer32", key);
    if (SUCCEEDED(result))
        result = SetHKCRRegistryKeyAndValue(key, nullptr, modulePath);
    if (SUCCEEDED(result))
        result = SetHKCRRegistryKeyAndValue(key, L"ThreadingModel", threadingModel);
    return result;
}

HRESULT UnregisterInprocServer(const CLSID& clsid)
{
    wchar_t key[textCapacity];
    const HRESULT result = FormatClassKey(clsid, {}, key);
    return SUCCEEDED(result) ? ResultFromWin32(RegDeleteTreeW(HKEY_CLASSES_ROOT, key)) : result;
}

HRESULT RegisterShellExtContextMenuHandler(const wchar_t* fileType, const CLSID& clsid, const wchar_t* friendlyName)
{
    wchar_t key[textCapacity];
    const HRESULT result = FormatHandlerKey(fileType, clsid, key);
    return SUCCEEDED(result) ? SetHKCRRegistryKeyAndValue(key, nullptr, friendlyName) : result;
}

HRESULT UnregisterShellExtContextMenuHandler(const wchar_t* fileType, const CLSID& clsid)
{
    wchar_t key[textCapacity];
    const HRESULT result = FormatHandlerKey(fileType, clsid, key);
    return SUCCEEDED(result) ? ResultFromWin32(RegDeleteTreeW(HKEY_CLASSES_ROOT, key)) : result;
}

HRESULT SetHKCRRegistryKeyAndValue(const wchar_t* subKey, const wchar_t* valueName, const wchar_t* data)
{
    OwnedKey key;
    LSTATUS status =
        RegCreateKeyExW(HKEY_CLASSES_ROOT, subKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, key.receive(), nullptr);
    if (status == ERROR_SUCCESS && data != nullptr) {
        // The terminating zero is not stored. The system adds one that it finds right after the data, so a full stop follows.
        const std::wstring guarded = std::wstring(data) + L'.';
        const DWORD size = static_cast<DWORD>(lstrlenW(data)) * 2;
        status = RegSetValueExW(key.get(), valueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(guarded.data()), size);
    }
    return ResultFromWin32(status);
}

HRESULT GetHKCRRegistryKeyAndValue(const wchar_t* subKey, const wchar_t* valueName, void* buffer, DWORD bufferBytes)
{
    OwnedKey key;
    LSTATUS status = RegOpenKeyExW(HKEY_CLASSES_ROOT, subKey, 0, KEY_READ, key.receive());
    if (status == ERROR_SUCCESS)
        status = RegQueryValueExW(key.get(), valueName, nullptr, nullptr, static_cast<BYTE*>(buffer), &bufferBytes);
    return ResultFromWin32(status);
}

} // namespace ccrypto
