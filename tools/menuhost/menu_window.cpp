#include "tools/menuhost/menu_window.h"

#include "shellext/com/owned_handles.h"

#include <map>

namespace ccrypto {

namespace {

struct ExplorerItem {
    const wchar_t* text; ///< null for a separator
    UINT identifier;
};

// Identifiers from 1000 up, beyond those given to the handler.
constexpr ExplorerItem itemsAbove[] = {{L"&Open", 1000}, {L"&Print", 1001}, {nullptr, 0}};
constexpr ExplorerItem itemsBelow[] = {
    {L"Cu&t", 1002},    {L"&Copy", 1003},   {nullptr, 0}, {L"Create &shortcut", 1004},
    {L"&Delete", 1005}, {L"Rena&me", 1006}, {nullptr, 0}, {L"P&roperties", 1007},
};

constexpr wchar_t windowClass[] = L"MenuHostWindow";
constexpr UINT_PTR closingTimer = 1;
constexpr int rowHeight = 24;
constexpr int margin = 12;
constexpr UINT pictureGap = 4;

struct WindowState {
    const std::vector<std::wstring>& files;
    const std::function<void()>& shown;
    std::map<UINT, HBITMAP> pictures; ///< by item identifier
    bool wasShown = false;
};

void Append(HMENU menu, const ExplorerItem& item)
{
    if (item.text != nullptr)
        AppendMenuW(menu, MF_STRING, item.identifier, item.text);
    else
        AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
}

/// Takes the drawing of the items' pictures over from the menu: Explorer blends them with what is below, a plain menu need not.
std::map<UINT, HBITMAP> TakePictures(HMENU menu)
{
    std::map<UINT, HBITMAP> pictures;
    const auto count = static_cast<UINT>(GetMenuItemCount(menu));
    for (UINT position = 0; position < count; ++position) {
        MENUITEMINFOW item = {};
        item.cbSize = sizeof item;
        item.fMask = MIIM_BITMAP | MIIM_ID;
        if (!GetMenuItemInfoW(menu, position, TRUE, &item) || GetObjectType(item.hbmpItem) != OBJ_BITMAP)
            continue;
        pictures[item.wID] = item.hbmpItem;
        item.hbmpItem = HBMMENU_CALLBACK;
        item.fMask = MIIM_BITMAP;
        SetMenuItemInfoW(menu, position, TRUE, &item);
    }
    return pictures;
}

BITMAP Describe(HBITMAP picture)
{
    BITMAP description = {};
    GetObjectW(picture, sizeof description, &description);
    return description;
}

void MeasurePicture(const WindowState& state, MEASUREITEMSTRUCT& item)
{
    const auto found = state.pictures.find(item.itemID);
    if (found == state.pictures.end())
        return;
    const BITMAP picture = Describe(found->second);
    item.itemWidth = static_cast<UINT>(picture.bmWidth) + pictureGap;
    item.itemHeight = static_cast<UINT>(picture.bmHeight);
}

void DrawPicture(const WindowState& state, const DRAWITEMSTRUCT& item)
{
    const auto found = state.pictures.find(item.itemID);
    if (found == state.pictures.end())
        return;
    const BITMAP picture = Describe(found->second);
    const OwnedDrawingContext source(CreateCompatibleDC(item.hDC));
    const HGDIOBJ before = SelectObject(source.get(), found->second);
    const BLENDFUNCTION blend = {AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
    GdiAlphaBlend(item.hDC, item.rcItem.left, item.rcItem.top, picture.bmWidth, picture.bmHeight, source.get(), 0, 0,
                  picture.bmWidth, picture.bmHeight, blend);
    SelectObject(source.get(), before);
}

void PaintFiles(HWND window, const std::vector<std::wstring>& files)
{
    PAINTSTRUCT paint;
    const HDC context = BeginPaint(window, &paint);
    SelectObject(context, GetStockObject(DEFAULT_GUI_FONT));
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, GetSysColor(COLOR_HIGHLIGHTTEXT));
    RECT row;
    GetClientRect(window, &row);
    row.left = margin;
    row.right -= margin;
    row.top = margin;
    for (const std::wstring& file : files) {
        row.bottom = row.top + rowHeight;
        FillRect(context, &row, GetSysColorBrush(COLOR_HIGHLIGHT));
        RECT text = row;
        text.left += margin / 2;
        const wchar_t* name = file.c_str() + file.find_last_of(L"\\/") + 1;
        DrawTextW(context, name, -1, &text, DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX);
        row.top = row.bottom + 2;
    }
    EndPaint(window, &paint);
}

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto* state = reinterpret_cast<WindowState*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_NCCREATE) {
        const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
    } else if (message == WM_PAINT && state != nullptr) {
        PaintFiles(window, state->files);
        return 0;
    } else if (message == WM_MEASUREITEM && state != nullptr) {
        MeasurePicture(*state, *reinterpret_cast<MEASUREITEMSTRUCT*>(lParam));
        return TRUE;
    } else if (message == WM_DRAWITEM && state != nullptr) {
        DrawPicture(*state, *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        return TRUE;
    } else if (message == WM_ENTERIDLE && wParam == MSGF_MENU && state != nullptr && !state->wasShown) {
        // The menu's own loop has nothing left to do, so it has been drawn.
        state->wasShown = true;
        state->shown();
    } else if (message == WM_TIMER && wParam == closingTimer) {
        EndMenu();
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace

UINT AddExplorerItems(HMENU menu)
{
    for (const ExplorerItem& item : itemsAbove)
        Append(menu, item);
    SetMenuDefaultItem(menu, itemsAbove[0].identifier, FALSE);
    const auto position = static_cast<UINT>(GetMenuItemCount(menu));
    for (const ExplorerItem& item : itemsBelow)
        Append(menu, item);
    return position;
}

std::optional<UINT> ShowMenu(HMENU menu, const std::vector<std::wstring>& files, UINT seconds, const std::function<void()>& shown)
{
    const HINSTANCE program = GetModuleHandleW(nullptr);
    WNDCLASSW description = {};
    description.lpfnWndProc = WindowProcedure;
    description.hInstance = program;
    description.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512)); // the arrow
    description.hbrBackground = GetSysColorBrush(COLOR_WINDOW);
    description.lpszClassName = windowClass;
    RegisterClassW(&description);

    WindowState state{files, shown, TakePictures(menu)};
    const HWND window =
        CreateWindowW(windowClass, L"Documents", WS_OVERLAPPEDWINDOW, 80, 60, 560, 420, nullptr, nullptr, program, &state);
    if (window == nullptr)
        return std::nullopt;
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    UpdateWindow(window);
    if (seconds > 0)
        SetTimer(window, closingTimer, seconds * 1000, nullptr);

    POINT corner = {margin * 8, margin + rowHeight / 2};
    ClientToScreen(window, &corner);
    const auto chosen =
        static_cast<UINT>(TrackPopupMenuEx(menu, TPM_RETURNCMD | TPM_RIGHTBUTTON, corner.x, corner.y, window, nullptr));
    DestroyWindow(window);
    UnregisterClassW(windowClass, program);
    return chosen;
}

} // namespace ccrypto
