#include "shellext/context_menu/menu_texts.h"

#include <cwchar>

namespace {

struct LanguageTexts {
    const wchar_t* language;
    MenuTexts texts;
};

// The first language whose name is part of the locale's name is taken.
constexpr LanguageTexts languages[] = {
    {L"fi", {L"&Allekirjoita .pdf-dokumentti", L"Allekirjoita .pdf-dokumentti"}},
    {L"sv", {L"&Signera .PDF med elektronisk signatur", L"Signera .PDF med elektronisk signatur"}},
};

constexpr MenuTexts english = {L"&Sign .pdf document", L"Sign .pdf document"};

} // namespace

const MenuTexts& MenuTextsFor(const wchar_t* localeName)
{
    for (const LanguageTexts& candidate : languages)
        if (std::wcsstr(localeName, candidate.language) != nullptr)
            return candidate.texts;
    return english;
}
