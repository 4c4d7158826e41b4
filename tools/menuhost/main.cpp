#include "core/platform/win32/wide.h"
#include "shellext/com/com_ptr.h"
#include "shellext/com/hresult.h"
#include "shellext/com/module.h"
#include "shellext/com/owned_handles.h"
#include "tools/menuhost/arguments.h"
#include "tools/menuhost/menu_window.h"
#include "tools/menuhost/report.h"
#include "tools/menuhost/shell_selection.h"

#include <fcntl.h>
#include <io.h>
#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>

#include <cstdio>

using namespace ccrypto;

namespace {

// The identifiers Explorer would give to one handler.
constexpr UINT firstIdentifier = 1;
constexpr UINT lastIdentifier = 999;

constexpr int exitRefused = 1;
constexpr int exitUsage = 2;

/// Explorer looks for handlers below the file type "*" and asks only those it finds there.
HRESULT FindRegistration()
{
    wchar_t classId[64];
    StringFromGUID2(CLSID_FileContextMenuExt, classId, 64);
    const std::wstring path = std::wstring(L"*\\shellex\\ContextMenuHandlers\\") + classId;
    ccrypto::OwnedKey key;
    return ResultFromWin32(RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, key.receive()));
}

std::wstring CommandText(IContextMenu& handler, UINT command, UINT kind)
{
    wchar_t text[260] = {};
    handler.GetCommandString(command, kind, nullptr, reinterpret_cast<char*>(text), 260);
    return text;
}

MenuItem ReadItem(HMENU menu, UINT position, IContextMenu& handler)
{
    wchar_t text[260] = {};
    MENUITEMINFOW info = {};
    info.cbSize = sizeof info;
    info.fMask = MIIM_FTYPE | MIIM_STRING | MIIM_ID | MIIM_BITMAP;
    info.dwTypeData = text;
    info.cch = 260;
    GetMenuItemInfoW(menu, position, TRUE, &info);

    MenuItem item;
    item.separator = (info.fType & MFT_SEPARATOR) != 0;
    if (item.separator)
        return item;
    item.text = text;
    item.command = info.wID - firstIdentifier;
    item.verb = CommandText(handler, item.command, GCS_VERBW);
    item.help = CommandText(handler, item.command, GCS_HELPTEXTW);
    BITMAP bitmap = {};
    item.hasBitmap = GetObjectW(info.hbmpItem, sizeof bitmap, &bitmap) != 0;
    item.width = bitmap.bmWidth;
    item.height = bitmap.bmHeight;
    item.bitsPerPixel = bitmap.bmBitsPixel;
    return item;
}

HRESULT Invoke(IContextMenu& handler, UINT command)
{
    CMINVOKECOMMANDINFO info = {};
    info.cbSize = sizeof info;
    info.lpVerb = reinterpret_cast<const char*>(static_cast<UINT_PTR>(command));
    info.nShow = SW_SHOWNORMAL;
    return handler.InvokeCommand(&info);
}

/// \return true when the handler took everything it was asked to take.
bool UseHandler(const Arguments& arguments, Report& report)
{
    const auto failed = [&](const char* name, HRESULT result) {
        report.call(name, result);
        return FAILED(result);
    };

    ComPtr<IDataObject> selection;
    ComPtr<IShellExtInit> initializer;
    ComPtr<IContextMenu> handler;
    if (failed("Selection", SelectInShell(arguments.files, selection)) || failed("Registration", FindRegistration()) ||
        failed("CoCreateInstance", CoCreateInstance(CLSID_FileContextMenuExt, nullptr, CLSCTX_INPROC_SERVER, IID_IShellExtInit,
                                                    initializer.receiveVoid())) ||
        failed("QueryInterface", initializer->QueryInterface(IID_IContextMenu, handler.receiveVoid())) ||
        failed("Initialize", initializer->Initialize(nullptr, selection.get(), nullptr)))
        return false;

    const ccrypto::OwnedMenu menu(CreatePopupMenu());
    const UINT position = arguments.show ? AddExplorerItems(menu.get()) : 0;
    const int before = GetMenuItemCount(menu.get());
    if (failed("QueryContextMenu",
               handler->QueryContextMenu(menu.get(), position, firstIdentifier, lastIdentifier, arguments.flags)))
        return false;
    const auto added = static_cast<UINT>(GetMenuItemCount(menu.get()) - before);
    for (UINT i = 0; i < added; ++i)
        report.item(ReadItem(menu.get(), position + i, *handler.get()));

    if (arguments.show) {
        const std::optional<UINT> chosen =
            ShowMenu(menu.get(), arguments.files, arguments.showSeconds, [&] { report.remark("shown"); });
        if (!chosen)
            return !failed("CreateWindow", HRESULT_FROM_WIN32(GetLastError()));
        if (*chosen >= firstIdentifier && *chosen <= lastIdentifier)
            return !failed("InvokeCommand", Invoke(*handler.get(), *chosen - firstIdentifier));
    } else if (arguments.invoke && added > 0) {
        return !failed("InvokeCommand", Invoke(*handler.get(), 0));
    }
    return added > 0;
}

std::vector<std::wstring> CommandLineWords()
{
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    if (words == nullptr || count < 1)
        return {};
    std::vector<std::wstring> result(words + 1, words + count);
    LocalFree(words);
    return result;
}

} // namespace

int main()
{
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    std::wstring problem;
    const std::optional<Arguments> arguments = ParseArguments(CommandLineWords(), problem);
    if (!arguments) {
        std::fprintf(stderr, "menuhost: %s (see --help)\n", platform::WideToUtf8(problem).c_str());
        return exitUsage;
    }
    if (arguments->help) {
        std::fputs(usageText, stdout);
        return 0;
    }

    Report report(arguments->json);
    // Handlers live on apartment threads, and the shell wants OLE there.
    const HRESULT started = OleInitialize(nullptr);
    int exitCode = exitRefused;
    if (FAILED(started)) {
        report.call("OleInitialize", started);
    } else {
        exitCode = UseHandler(*arguments, report) ? 0 : exitRefused;
        CoFreeUnusedLibraries();
        OleUninitialize();
    }
    report.finish(exitCode);
    return exitCode;
}
