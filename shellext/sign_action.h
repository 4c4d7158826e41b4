#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <string_view>

class CCryptoAutoLogger;

namespace ccrypto {

/// What the entry does, whichever menu offers it: its texts, the files it takes, and how the signing client gets them.

/// The texts of the entry in one language.
struct MenuTexts {
    const wchar_t* menu; ///< with the "&" before the access key
    const wchar_t* help; ///< without
};

/// The language-independent name of the command.
inline constexpr wchar_t commandName[] = L"PdfSignature";

/// The texts for a locale name such as "sv-FI": Finnish when it contains "fi" anywhere, otherwise Swedish when it contains "sv",
/// otherwise English. Case matters: "FI" as a region does not make a locale Finnish.
[[nodiscard]] const MenuTexts& MenuTextsFor(const wchar_t* localeName);

/// The texts for the user's default locale.
[[nodiscard]] const MenuTexts& UsersMenuTexts();

/// Whether the setting "pdfAllowMultiselect" lets the entry take several files at once. False without it.
[[nodiscard]] bool IsMultipleSelectionAllowed();

/// The paths that the user selected, in the order of the shell.
class SelectedPaths {
public:
    virtual ~SelectedPaths() = default;

    [[nodiscard]] virtual UINT count() const = 0;
    /// The path at `index`, cut to 259 characters; empty when there is none. Valid until the next call.
    [[nodiscard]] virtual std::wstring_view query(UINT index) = 0;
};

/// Appends the paths that contain ".pdf" to `files`, with "*" before each but one of index 0: no Windows path can contain it. The
/// reason for taking none is logged through `logger`.
/// \return whether the entry is to be offered: false when the first path does not contain ".pdf", when none does, and for several
/// files unless `multipleAllowed`.
[[nodiscard]] bool TakeFiles(SelectedPaths& paths, bool multipleAllowed, CCryptoString& files, CCryptoAutoLogger& logger);

/// Hands paths joined by "*" to the signing client. Waits for its server, minutes at worst.
/// \return false when the server cannot be reached; nothing is then sent. What happens after its greeting is in the log alone: a
/// connection that is lost, paths of more than 16 MiB, or what the server makes of the files.
[[nodiscard]] bool HandOver(const CCryptoString& files);

} // namespace ccrypto
