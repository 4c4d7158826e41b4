#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace ccrypto {

/// What the command line asks for.
struct Arguments {
    std::vector<std::wstring> files;
    UINT flags = 0; ///< CMF_ flags for QueryContextMenu
    bool invoke = false;
    bool show = false;
    UINT showSeconds = 0; ///< 0: until the user closes the menu
    bool json = false;
    bool help = false;
};

extern const char usageText[];

/// \return nothing, with the reason in `problem`, when the words make no sense.
std::optional<Arguments> ParseArguments(const std::vector<std::wstring>& words, std::wstring& problem);

} // namespace ccrypto
