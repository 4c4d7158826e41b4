#pragma once

#include <windows.h>

/// What self-registration writes to and removes from `HKEY_CLASSES_ROOT`. Every routine stops at its first failing step, without
/// undoing earlier ones, and returns S_OK or that step's HRESULT. A null `friendlyName` leaves the key without a default value.

namespace ccrypto {

/// Writes `CLSID\{clsid}` and its `InprocServer32`. \return E_INVALIDARG when `modulePath` or `threadingModel` is null.
[[nodiscard]] HRESULT RegisterInprocServer(const wchar_t* modulePath, const CLSID& clsid, const wchar_t* friendlyName,
                                           const wchar_t* threadingModel);

/// Deletes `CLSID\{clsid}` with everything below it. \return 0x80070002 when it is not there.
[[nodiscard]] HRESULT UnregisterInprocServer(const CLSID& clsid);

/// Writes `fileType\shellex\ContextMenuHandlers\{clsid}`. A `fileType` that begins with "." is replaced by the program identifier
/// that the extension's key names, when it names one. \return E_INVALIDARG when `fileType` is null, 0x8007007A when the key's path
/// takes more than 259 characters.
[[nodiscard]] HRESULT RegisterShellExtContextMenuHandler(const wchar_t* fileType, const CLSID& clsid, const wchar_t* friendlyName);

/// Deletes what RegisterShellExtContextMenuHandler wrote for the same `fileType`. \return 0x80070002 when it is not there.
[[nodiscard]] HRESULT UnregisterShellExtContextMenuHandler(const wchar_t* fileType, const CLSID& clsid);

/// Creates or opens `subKey` and writes `data`, when it is not null, as the REG_SZ `valueName`; null names the default value. The
/// stored size counts the characters alone, not a terminating zero.
[[nodiscard]] HRESULT SetHKCRRegistryKeyAndValue(const wchar_t* subKey, const wchar_t* valueName, const wchar_t* data);

/// Reads the value `valueName` of `subKey`, as it is stored, into `buffer` of `bufferBytes` bytes; text need not be terminated.
[[nodiscard]] HRESULT GetHKCRRegistryKeyAndValue(const wchar_t* subKey, const wchar_t* valueName, void* buffer, DWORD bufferBytes);

} // namespace ccrypto
