#include "core/platform/win32/wide.h"
#include "ipc/pipe_server.h"
#include "ipc/session.h"
#include "shellext/class_factory.h"
#include "shellext/com/com_ptr.h"
#include "shellext/com/owned_handles.h"
#include "shellext/context_menu/file_context_menu_ext.h"
#include "shellext/sign_action.h"
#include "tests/shellext/context_menu/memory_settings.h"
#include "tests/shellext/context_menu/scripted_data_object.h"
#include "tests/support/replaced_import.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>

using namespace ccrypto;

namespace {

using Script = ScriptedDataObject::Script;

class Command : public ::testing::Test {
protected:
    HRESULT invoke(const void* verb)
    {
        CMINVOKECOMMANDINFO command = {};
        command.cbSize = sizeof command;
        command.lpVerb = static_cast<const char*>(verb);
        return handler_->InvokeCommand(&command);
    }

    InstalledSettings settings_{{{"pdfAllowMultiselect", "1"}}};
    ComPtr<FileContextMenuExt> handler_{new FileContextMenuExt};
};

const void* Offset(UINT_PTR offset)
{
    return reinterpret_cast<const void*>(offset);
}

/// What a GUI server receives: each request's type and body. It acknowledges the requests that wait for it.
struct GuiServer {
    struct Request {
        std::uint32_t type;
        std::string body;
        bool operator==(const Request&) const = default;
    };

    /// Serves until a farewell.
    void serve()
    {
        while (requests.empty() || requests.back().type != farewell) {
            if (!pipe.Read())
                return;
            const auto body = pipe.body();
            requests.push_back({pipe.requestType(), std::string(body.begin(), body.end())});
            if (pipe.requestType() == documents) {
                pipe.Disconnect();
            } else {
                pipe.StartMessage();
                pipe.Write();
            }
        }
    }

    static constexpr std::uint32_t greeting = 1;
    static constexpr std::uint32_t farewell = 12;
    static constexpr std::uint32_t documents = 22;

    CCryptoPipeServer pipe{"\\\\.\\pipe\\PennwickGUIServer", false, true};
    std::vector<Request> requests;
};

/// An item of a message that holds a text.
std::string TextItem(const std::string& text)
{
    const auto length = static_cast<std::uint32_t>(text.size() + 1);
    std::string item = "\x02";
    for (int shift = 0; shift < 32; shift += 8)
        item += static_cast<char>(length >> shift);
    return item + text + '\0';
}

} // namespace

TEST_F(Command, EntersTheMenuWithASeparatorAfterIt)
{
    const OwnedMenu menu(CreatePopupMenu());
    AppendMenuW(menu.get(), MF_STRING, 500, L"first");
    AppendMenuW(menu.get(), MF_STRING, 501, L"last");

    EXPECT_EQ(handler_->QueryContextMenu(menu.get(), 1, 40, 60, CMF_DEFAULTONLY | CMF_EXPLORE), S_OK);
    ASSERT_EQ(GetMenuItemCount(menu.get()), 2);
    EXPECT_EQ(handler_->QueryContextMenu(menu.get(), 1, 40, 60, CMF_NORMAL), 1);
    ASSERT_EQ(GetMenuItemCount(menu.get()), 4);

    wchar_t text[textCapacity];
    EXPECT_EQ(GetMenuItemID(menu.get(), 0), 500U);
    EXPECT_EQ(GetMenuItemID(menu.get(), 1), 40U);
    EXPECT_GT(GetMenuStringW(menu.get(), 1, text, textCapacity, MF_BYPOSITION), 0);
    EXPECT_EQ(text[0], L'&');
    EXPECT_EQ(GetMenuState(menu.get(), 1, MF_BYPOSITION) & (MF_DISABLED | MF_GRAYED), 0U);
    EXPECT_NE(GetMenuState(menu.get(), 2, MF_BYPOSITION) & MF_SEPARATOR, 0U);
    EXPECT_EQ(GetMenuItemID(menu.get(), 3), 501U);

    const HMENU gone = CreatePopupMenu();
    DestroyMenu(gone);
    SetLastError(ERROR_INVALID_MENU_HANDLE); // Wine does not say it
    EXPECT_EQ(handler_->QueryContextMenu(gone, 0, 40, 60, CMF_NORMAL),
              static_cast<HRESULT>(0x80070000 | ERROR_INVALID_MENU_HANDLE));
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(handler_->QueryContextMenu(gone, 0, 40, 60, CMF_NORMAL), S_OK) << "no reason, no command";
}

TEST_F(Command, AnswersForItsTexts)
{
    constexpr auto cut = static_cast<HRESULT>(0x8007007A);
    const std::wstring untouched(40, L'#');
    struct Case {
        const char* name;
        UINT_PTR command;
        UINT kind;
        UINT capacity;
        HRESULT result;
        std::wstring written; ///< as a text; what follows its zero must be untouched
    };
    const Case cases[] = {
        {"name", 0, GCS_VERBW, 13, S_OK, L"PdfSignature"},
        {"name, no space for the zero", 0, GCS_VERBW, 12, cut, L"PdfSignatur"},
        {"name cut", 0, GCS_VERBW, 5, cut, L"PdfS"},
        {"space for the zero alone", 0, GCS_VERBW, 1, cut, L""},
        {"no space", 0, GCS_VERBW, 0, E_INVALIDARG, untouched},
        {"too much space", 0, GCS_VERBW, 0x80000000, E_INVALIDARG, L""},
        {"8-bit name", 0, GCS_VERBA, 40, S_OK, untouched},
        {"8-bit help", 0, GCS_HELPTEXTA, 40, S_OK, untouched},
        {"asked whether it exists", 0, GCS_VALIDATEW, 40, S_OK, untouched},
        {"another command", 1, GCS_VERBW, 40, E_INVALIDARG, untouched},
        {"a large number", static_cast<UINT_PTR>(1) << 32, GCS_VERBW, 40, E_INVALIDARG, untouched},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::wstring buffer = untouched;
        EXPECT_EQ(handler_->GetCommandString(c.command, c.kind, nullptr, reinterpret_cast<char*>(buffer.data()), c.capacity),
                  c.result);
        std::wstring expected = untouched;
        if (c.written != untouched)
            expected.replace(0, c.written.size() + 1, c.written.c_str(), c.written.size() + 1);
        EXPECT_EQ(buffer, expected);
    }

    // The help text is the menu's without its access key.
    const OwnedMenu menu(CreatePopupMenu());
    ASSERT_EQ(handler_->QueryContextMenu(menu.get(), 0, 1, 1, CMF_NORMAL), 1);
    wchar_t inMenu[textCapacity];
    wchar_t asHelp[textCapacity];
    ASSERT_GT(GetMenuStringW(menu.get(), 0, inMenu, textCapacity, MF_BYPOSITION), 0);
    EXPECT_EQ(handler_->GetCommandString(0, GCS_HELPTEXTW, nullptr, reinterpret_cast<char*>(asHelp), textCapacity), S_OK);
    EXPECT_STREQ(asHelp, inMenu + 1);
}

TEST_F(Command, IsRefusedWithoutServer)
{
    EXPECT_EQ(invoke(Offset(0)), E_FAIL);
    EXPECT_EQ(handler_->InvokeCommand(nullptr), E_INVALIDARG);
}

TEST_F(Command, HandsTheFilesToTheServer)
{
    ScriptedDataObject selection(Script::wideList, {L"C:\\\u00E4.pdf", L"C:\\note.txt", L"D:\\b.pdf"});
    ASSERT_EQ(handler_->Initialize(nullptr, &selection, nullptr), S_OK);

    GuiServer server;
    ASSERT_TRUE(server.pipe.isListening());
    std::thread thread([&] { server.serve(); });
    // Refused before the server hears of it.
    EXPECT_EQ(invoke(Offset(1)), E_FAIL);
    EXPECT_EQ(invoke(Offset(0x10001)), E_FAIL);
    EXPECT_EQ(invoke(Offset(0)), S_OK);
    thread.join();

    const std::vector<GuiServer::Request> expected = {
        {GuiServer::greeting, ""},
        {GuiServer::documents, TextItem("C:\\\xC3\xA4.pdf*D:\\b.pdf")},
        {GuiServer::farewell, ""},
    };
    EXPECT_EQ(server.requests, expected);
}

TEST_F(Command, LooksAtTheLowHalfOfTheVerbAlone)
{
    ScriptedDataObject selection(Script::wideList, {L"C:\\a.pdf"});
    ASSERT_EQ(handler_->Initialize(nullptr, &selection, nullptr), S_OK);
    GuiServer server;
    std::thread thread([&] { server.serve(); });
    EXPECT_EQ(invoke(Offset(0x7FFF0000)), S_OK);
    thread.join();
    ASSERT_EQ(server.requests.size(), 3U);
    EXPECT_EQ(server.requests[1].body, TextItem("C:\\a.pdf"));
}

[[noreturn]] void Throw()
{
    throw std::runtime_error("no host expects this");
}

TEST_F(Command, LetsNoExceptionOut)
{
    const LONG before = module::ObjectCount();
    const Session session = CurrentSession();
    CurrentSession().hasInputDesktop = [] { return Throw(), true; };
    EXPECT_EQ(invoke(Offset(0)), E_UNEXPECTED);
    CurrentSession().hasInputDesktop = [] { return throw std::bad_alloc(), true; };
    EXPECT_EQ(invoke(Offset(0)), E_OUTOFMEMORY);
    CurrentSession() = session;

    ScriptedDataObject selection(Script::failure, {});
    EXPECT_EQ(handler_->Initialize(nullptr, &selection, nullptr), E_UNEXPECTED);

    const ReplacedImport insertion(
        nullptr, "InsertMenuItemW", +[](HMENU, UINT, BOOL, const MENUITEMINFOW*) -> BOOL { Throw(); });
    EXPECT_EQ(handler_->QueryContextMenu(nullptr, 0, 1, 1, CMF_NORMAL), E_UNEXPECTED);

    const ReplacedImport locale(
        nullptr, "GetUserDefaultLocaleName", +[](LPWSTR, int) -> int { Throw(); });
    const ComPtr factory(new ClassFactory);
    void* handler = nullptr;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IContextMenu, &handler), E_UNEXPECTED);
    EXPECT_EQ(module::ObjectCount(), before + 1) << "the factory";
}

TEST(MenuTexts, FollowTheLocaleName)
{
    struct Case {
        const wchar_t* locale;
        const wchar_t* menu;
        const wchar_t* help;
    };
    const wchar_t* const finnish = L"&Allekirjoita .pdf-dokumentti";
    const wchar_t* const swedish = L"&Signera .PDF med elektronisk signatur";
    const wchar_t* const english = L"&Sign .pdf document";
    const Case cases[] = {
        {L"fi-FI", finnish, finnish + 1},  {L"sv-SE", swedish, swedish + 1}, {L"sv-FI", swedish, swedish + 1},
        {L"en-US", english, english + 1},  {L"de-DE", english, english + 1}, {L"", english, english + 1},
        {L"fil-PH", finnish, finnish + 1}, // part of the name is enough
        {L"sv-fi", finnish, finnish + 1},  // Finnish is looked for first
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(platform::WideToUtf8(c.locale));
        EXPECT_STREQ(ccrypto::MenuTextsFor(c.locale).menu, c.menu);
        EXPECT_STREQ(ccrypto::MenuTextsFor(c.locale).help, c.help);
    }
}
