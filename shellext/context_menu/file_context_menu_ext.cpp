#include "shellext/context_menu/file_context_menu_ext.h"

#include "core/diagnostics/auto_logger.h"
#include "core/platform/win32/wide.h"
#include "core/settings/settings.h"
#include "ipc/gui_client.h"
#include "shellext/com/hresult.h"
#include "shellext/context_menu/dropped_files.h"

#include <shlwapi.h>

#include <cwchar>

namespace {

constexpr char pathSeparator[] = "*";

bool IsMultipleSelectionAllowed()
{
    std::uint32_t value = 0;
    ICryptoSettings* settings = CCryptoSettings::Instance();
    return settings != nullptr && settings->GetInteger("pdfAllowMultiselect", value, 0) && value == 1;
}

} // namespace

FileContextMenuExt::FileContextMenuExt()
{
    CCryptoAutoLogger logger("FileContextMenuExt::FileContextMenuExt");

    bitmap_ = MakeMenuBitmap();

    wchar_t localeName[LOCALE_NAME_MAX_LENGTH] = {};
    GetUserDefaultLocaleName(localeName, LOCALE_NAME_MAX_LENGTH);
    const MenuTexts& texts = MenuTextsFor(localeName);
    CopyBounded(menuText_, textCapacity, texts.menu);
    helpText_ = texts.help;

    multipleAllowed_ = IsMultipleSelectionAllowed();
    logger.setResult(true);
}

HRESULT FileContextMenuExt::QueryInterface(REFIID riid, void** ppv) noexcept
{
    // The first entry also answers for IUnknown.
    static const QITAB interfaces[] = {
        QITABENT(FileContextMenuExt, IContextMenu),
        QITABENT(FileContextMenuExt, IShellExtInit),
        {nullptr, 0},
    };
    return QISearch(this, interfaces, riid, ppv);
}

ULONG FileContextMenuExt::AddRef() noexcept
{
    return ++references_;
}

ULONG FileContextMenuExt::Release() noexcept
{
    const ULONG left = --references_;
    if (left == 0)
        delete this;
    return left;
}

HRESULT FileContextMenuExt::Initialize(PCIDLIST_ABSOLUTE, IDataObject* selection, HKEY) noexcept
{
    return Guarded([&] {
        CCryptoAutoLogger logger("FileContextMenuExt::Initialize");

        if (selection == nullptr)
            return logger.fail(E_INVALIDARG);
        DroppedFiles files(*selection);
        if (!files.isOpen())
            return logger.warn(E_FAIL);

        UINT count = files.count();
        if (count >= 2 && !multipleAllowed_) {
            logger.WriteLog("Multi selection is not supported in Ostra version");
            count = 0;
        }
        // A selection that is not for this handler is no failure of the operation.
        return logger.setRetValue(ResultStatus::none, takeFiles(files, count, logger));
    });
}

HRESULT FileContextMenuExt::takeFiles(DroppedFiles& files, UINT count, CCryptoAutoLogger& logger)
{
    HRESULT result = E_FAIL;
    for (UINT index = 0; index < count; ++index) {
        const std::size_t length = files.query(index, currentFileName_);
        if (length == 0)
            continue;
        if (std::wcsstr(currentFileName_, L".pdf") != nullptr) {
            if (index != 0)
                selectedFiles_ += pathSeparator;
            selectedFiles_.appendUtf16({platform::AsUtf16(currentFileName_), length});
            result = S_OK;
        } else if (index == 0) {
            // The first file decides whether the handler takes part; others without ".pdf" are left out.
            if (logging::Level() != 0)
                logger.WriteLog("No entry; no \".pdf\" in the path of the first file: %s",
                                platform::WideToUtf8(currentFileName_).c_str());
            return E_FAIL;
        }
    }
    return result;
}

HRESULT FileContextMenuExt::QueryContextMenu(HMENU menu, UINT index, UINT idCmdFirst, UINT, UINT flags) noexcept
{
    return Guarded([&] {
        CCryptoAutoLogger logger("FileContextMenuExt::QueryContextMenu");

        if ((flags & CMF_DEFAULTONLY) != 0)
            return logger.setRetValue(ResultStatus::none, S_OK);

        MENUITEMINFOW entry = {};
        static_assert(sizeof entry == 80);
        entry.cbSize = sizeof entry;
        entry.fMask = MIIM_FTYPE | MIIM_BITMAP | MIIM_STRING | MIIM_ID | MIIM_STATE;
        entry.fType = MFT_STRING;
        entry.fState = MFS_ENABLED;
        entry.wID = idCmdFirst;
        entry.dwTypeData = menuText_;
        entry.hbmpItem = bitmap_.get();

        MENUITEMINFOW separator = {};
        separator.cbSize = sizeof separator;
        separator.fMask = MIIM_TYPE;
        separator.fType = MFT_SEPARATOR;

        if (!InsertMenuItemW(menu, index, TRUE, &entry) || !InsertMenuItemW(menu, index + 1, TRUE, &separator))
            return logger.fail(ResultFromLastError());
        return logger.setRetValue(ResultStatus::none, MAKE_HRESULT(SEVERITY_SUCCESS, FACILITY_NULL, 1));
    });
}

HRESULT FileContextMenuExt::InvokeCommand(CMINVOKECOMMANDINFO* command) noexcept
{
    return Guarded([&] {
        CCryptoAutoLogger logger("FileContextMenuExt::InvokeCommand");

        if (command == nullptr)
            return logger.fail(E_INVALIDARG);
        // Only the low 16 bits are looked at: a verb by name is a pointer, and refused unless it is a multiple of 64 KiB.
        if (LOWORD(reinterpret_cast<UINT_PTR>(command->lpVerb)) != 0)
            return logger.fail(E_FAIL);

        CGUIClient client(false);
        if (client.status() != 0)
            return logger.fail(E_FAIL);
        client.SetPdfDocumentToSign(selectedFiles_);
        return logger.setRetValue(ResultStatus::none, S_OK);
    });
}

HRESULT FileContextMenuExt::GetCommandString(UINT_PTR command, UINT kind, UINT*, LPSTR name, UINT capacity) noexcept
{
    return Guarded([&] {
        CCryptoAutoLogger logger("FileContextMenuExt::GetCommandString");

        if (command != 0)
            return logger.fail(E_INVALIDARG);
        HRESULT result = S_OK;
        if (kind == GCS_VERBW)
            result = CopyBounded(reinterpret_cast<wchar_t*>(name), capacity, commandName);
        else if (kind == GCS_HELPTEXTW)
            result = CopyBounded(reinterpret_cast<wchar_t*>(name), capacity, helpText_);
        return logger.setRetValue(SUCCEEDED(result) ? ResultStatus::none : ResultStatus::warning, result);
    });
}
