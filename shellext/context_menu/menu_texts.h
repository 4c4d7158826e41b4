#pragma once

/// The texts of the menu entry in one language.
struct MenuTexts {
    const wchar_t* menu; ///< with the "&" before the access key
    const wchar_t* help; ///< without
};

/// The language-independent name of the command.
inline constexpr wchar_t commandName[] = L"PdfSignature";

/// The texts for a locale name such as "sv-FI": Finnish when it contains "fi" anywhere, otherwise Swedish when it contains "sv",
/// otherwise English. Case matters: "FI" as a region does not make a locale Finnish.
const MenuTexts& MenuTextsFor(const wchar_t* localeName);
