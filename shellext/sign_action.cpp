#include "shellext/sign_action.h"

#include "core/diagnostics/auto_logger.h"
#include "core/platform/win32/wide.h"
#include "core/settings/settings.h"
#include "ipc/gui_client.h"

#include <cwchar>

using namespace ccrypto;

namespace ccrypto {

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

constexpr std::wstring_view documentMark = L".pdf";
constexpr char fileListSeparator[] = "*";

} // namespace

const MenuTexts& MenuTextsFor(const wchar_t* localeName)
{
    for (const LanguageTexts& candidate : languages)
        if (std::wcsstr(localeName, candidate.language) != nullptr)
            return candidate.texts;
    return english;
}

const MenuTexts& UsersMenuTexts()
{
    wchar_t localeName[LOCALE_NAME_MAX_LENGTH] = {};
    GetUserDefaultLocaleName(localeName, LOCALE_NAME_MAX_LENGTH);
    return MenuTextsFor(localeName);
}

bool IsMultipleSelectionAllowed()
{
    std::uint32_t value = 0;
    ICryptoSettings* settings = CCryptoSettings::Instance();
    return settings != nullptr && settings->GetInteger("pdfAllowMultiselect", value, 0) && value == 1;
}

bool TakeFiles(SelectedPaths& paths, bool multipleAllowed, CCryptoString& files, CCryptoAutoLogger& logger)
{
    const UINT count = paths.count();
    if (count >= 2 && !multipleAllowed) {
        logger.WriteLog("Multi selection is not supported in Ostra version");
        return false;
    }

    bool taken = false;
    for (UINT index = 0; index < count; ++index) {
        const std::wstring_view path = paths.query(index);
        if (path.empty())
            continue;
        if (path.find(documentMark) != std::wstring_view::npos) {
            if (index != 0)
                files += fileListSeparator;
            files.appendUtf16({platform::AsUtf16(path.data()), path.size()});
            taken = true;
        } else if (index == 0) {
            // The first file decides whether the entry is offered; others without ".pdf" are left out.
            if (logging::Level() != 0)
                logger.WriteLog("No entry; no \".pdf\" in the path of the first file: %s", platform::WideToUtf8(path).c_str());
            return false;
        }
    }
    return taken;
}

bool HandOver(const CCryptoString& files)
{
    CGUIClient client(false);
    if (client.status() != CGUIClient::guiPresent)
        return false;
    // No reply is read, and a user who sees the server's window cares for that alone; a failure is in the log.
    static_cast<void>(client.SetPdfDocumentToSign(files));
    return true;
}

} // namespace ccrypto
