#pragma once

#include "core/text/string.h"
#include "shellext/com/bounded_text.h"
#include "shellext/com/module.h"
#include "shellext/context_menu/menu_bitmap.h"

#include <windows.h>

#include <shlobj.h>

#include <atomic>

/// The context-menu handler: takes selections whose first path contains ".pdf", offers one entry in the user's language, and hands
/// the paths to the signing client when the entry is chosen.
///
/// Explorer makes one for each menu it opens, on an apartment thread, and calls `Initialize`, `QueryContextMenu` and, for the
/// chosen entry, `InvokeCommand`. Starts with one reference; keeps the library loaded while it lives. Nothing is thrown out of any
/// method.
class FileContextMenuExt final : public IShellExtInit, public IContextMenu {
public:
    /// Makes the bitmap, chooses the language and reads the setting "pdfAllowMultiselect".
    FileContextMenuExt();
    FileContextMenuExt(const FileContextMenuExt&) = delete;
    FileContextMenuExt& operator=(const FileContextMenuExt&) = delete;

    /// IContextMenu, which also answers for IUnknown, and IShellExtInit.
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) noexcept override;
    STDMETHODIMP_(ULONG) AddRef() noexcept override;
    STDMETHODIMP_(ULONG) Release() noexcept override;

    /// Takes the selection; the paths are added to those of an earlier call.
    /// \return E_INVALIDARG without a data object; E_FAIL when it holds no file list or a malformed one, when the first path does
    /// not contain ".pdf", or when there are several files and the settings do not allow that.
    STDMETHODIMP Initialize(PCIDLIST_ABSOLUTE folder, IDataObject* selection, HKEY programIdKey) noexcept override;

    /// Inserts the entry, as command `idCmdFirst`, and a separator after it.
    /// \return 1, the number of commands; 0 under CMF_DEFAULTONLY, which inserts nothing; the system's error when the menu refuses,
    /// 0 where the system gives none.
    STDMETHODIMP QueryContextMenu(HMENU menu, UINT index, UINT idCmdFirst, UINT idCmdLast, UINT flags) noexcept override;

    /// \return S_OK once the paths were handed to the signing client, whatever it makes of them; E_FAIL for any command but offset
    /// 0, and when the signing client cannot be reached; E_INVALIDARG without a command.
    STDMETHODIMP InvokeCommand(CMINVOKECOMMANDINFO* command) noexcept override;

    /// Writes the command's name (GCS_VERBW) or help text (GCS_HELPTEXTW) to `name`, which holds `capacity` 16-bit units; the other
    /// kinds are accepted and write nothing. \return E_INVALIDARG for any command but 0 and without a `name`; otherwise as
    /// CopyBounded.
    STDMETHODIMP GetCommandString(UINT_PTR command, UINT kind, UINT* reserved, LPSTR name, UINT capacity) noexcept override;

    /// The accepted paths joined by "*", which no Windows path can contain.
    const CCryptoString& selectedFiles() const { return selectedFiles_; }

private:
    ~FileContextMenuExt() = default;

    std::atomic<ULONG> references_ = 1;
    CCryptoString selectedFiles_;
    ccrypto::module::ObjectReference counted_;
    bool multipleAllowed_ = true;
    wchar_t menuText_[ccrypto::textCapacity] = {};
    ccrypto::OwnedBitmap bitmap_;
    const wchar_t* helpText_ = nullptr;
};
