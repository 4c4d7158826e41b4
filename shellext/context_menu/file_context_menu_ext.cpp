#include "shellext/context_menu/file_context_menu_ext.h"

#include "core/diagnostics/auto_logger.h"
#include "shellext/com/hresult.h"
#include "shellext/context_menu/dropped_files.h"
#include "shellext/sign_action.h"

#include <shlwapi.h>

using namespace ccrypto;

FileContextMenuExt::FileContextMenuExt()
{
    CCryptoAutoLogger logger("FileContextMenuExt::FileContextMenuExt");

    bitmap_ = ProcessMenuPicture().makeBitmap();
    const MenuTexts& texts = UsersMenuTexts();
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
            return logger.warn(E_FAIL, "The selection holds no list of files, or a malformed one");

        // A selection that is not for this handler is no failure of the operation.
        const bool taken = TakeFiles(files, multipleAllowed_, selectedFiles_, logger);
        return logger.succeed(taken ? S_OK : E_FAIL);
    });
}

HRESULT FileContextMenuExt::QueryContextMenu(HMENU menu, UINT index, UINT idCmdFirst, UINT, UINT flags) noexcept
{
    return Guarded([&] {
        CCryptoAutoLogger logger("FileContextMenuExt::QueryContextMenu");

        if ((flags & CMF_DEFAULTONLY) != 0)
            return logger.succeed(S_OK);

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

        // A refusal for which the system has no reason is S_OK: no command was added.
        if (!InsertMenuItemW(menu, index, TRUE, &entry) || !InsertMenuItemW(menu, index + 1, TRUE, &separator))
            return logger.fail(ResultFromLastError());
        return logger.succeed(MAKE_HRESULT(SEVERITY_SUCCESS, FACILITY_NULL, 1));
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

        if (!HandOver(selectedFiles_))
            return logger.fail(E_FAIL);
        return logger.succeed(S_OK);
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
