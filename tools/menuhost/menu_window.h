#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ccrypto {

/// Puts the items that Explorer itself shows for a file into `menu`, an empty popup.
/// \return the position at which Explorer lets handlers insert theirs.
UINT AddExplorerItems(HMENU menu);

/// Opens `menu` in a window that lists `files` as selected, and waits until it is closed or, unless `seconds` is 0, that time is
/// over. `shown` is called once, when the menu is on the screen.
/// \return the identifier of the item the user chose, 0 when none was; nothing when the window could not be made, with the reason
/// in GetLastError().
std::optional<UINT> ShowMenu(HMENU menu, const std::vector<std::wstring>& files, UINT seconds, const std::function<void()>& shown);

} // namespace ccrypto
