#include "core/diagnostics/auto_logger.h"
#include "core/platform/win32/wide.h"
#include "shellext/com/com_ptr.h"
#include "shellext/context_menu/dropped_files.h"
#include "shellext/context_menu/file_context_menu_ext.h"
#include "tests/shellext/context_menu/memory_settings.h"
#include "tests/shellext/context_menu/scripted_data_object.h"
#include "tests/support/captured_log.h"
#include "tests/support/temporary_directory.h"
#include "tools/menuhost/shell_selection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <shellapi.h>

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <random>

using namespace ccrypto;

namespace {

using Names = std::vector<std::wstring>;
using Script = ScriptedDataObject::Script;

const InstalledSettings::Values multipleAllowed = {{"pdfAllowMultiselect", "1"}};

HRESULT Initialize(FileContextMenuExt& handler, IDataObject& selection)
{
    return handler.Initialize(nullptr, &selection, nullptr);
}

/// The path without short names, as the shell hands it out.
std::wstring LongForm(const std::filesystem::path& path)
{
    wchar_t text[textCapacity] = {};
    GetLongPathNameW(path.c_str(), text, textCapacity);
    return text;
}

std::wstring SystemsAnswer(HDROP drop, UINT index)
{
    wchar_t path[textCapacity] = {};
    return DragQueryFileW(drop, index, path, textCapacity) != 0 ? path : L"";
}

/// The paths that the handler should keep, joined as it joins them.
std::string Joined(const Names& paths)
{
    std::string text;
    for (const std::wstring& path : paths)
        text += (text.empty() ? "" : "*") + platform::WideToUtf8(path);
    return text;
}

} // namespace

TEST(Selection, FollowsTheFilesOfTheShell)
{
    struct Case {
        const char* name;
        Names files;
        Names accepted; ///< none: the handler takes no part
        const char* setting = "1";
    };
    const Case cases[] = {
        {"one document", {L"report.pdf"}, {L"report.pdf"}, nullptr},
        {"others are left out", {L"a.pdf", L"b.txt", L"c.pdf"}, {L"a.pdf", L"c.pdf"}},
        {"the first decides", {L"b.txt", L"a.pdf"}, {}},
        {"case matters", {L"REPORT.PDF"}, {}},
        {"anywhere in the name", {L"x.pdf.bak"}, {L"x.pdf.bak"}},
        {"anywhere in the path", {L"old.pdf files\\note.txt"}, {L"old.pdf files\\note.txt"}},
        {"beyond ASCII", {L"sopimus \u00E4\u20AC\U0001D11E.pdf"}, {L"sopimus \u00E4\u20AC\U0001D11E.pdf"}},
        {"several without the setting", {L"a.pdf", L"b.pdf"}, {}, nullptr},
        {"several with 0", {L"a.pdf", L"b.pdf"}, {}, "0"},
        {"several with 2", {L"a.pdf", L"b.pdf"}, {}, "2"},
        {"several with a word", {L"a.pdf", L"b.pdf"}, {}, "yes"},
        {"one with 0", {L"a.pdf"}, {L"a.pdf"}, "0"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const InstalledSettings settings(c.setting != nullptr ? InstalledSettings::Values{{"pdfAllowMultiselect", c.setting}}
                                                              : InstalledSettings::Values());
        const TemporaryDirectory folder;
        Names paths;
        Names accepted;
        for (const std::wstring& file : c.files) {
            paths.push_back(LongForm(folder.create(file)));
            if (std::find(c.accepted.begin(), c.accepted.end(), file) != c.accepted.end())
                accepted.push_back(paths.back());
        }
        ComPtr<IDataObject> selection;
        ASSERT_EQ(SelectInShell(paths, selection), S_OK);

        const ComPtr handler(new FileContextMenuExt);
        EXPECT_EQ(Initialize(*handler, *selection), accepted.empty() ? E_FAIL : S_OK);
        EXPECT_EQ(handler->selectedFiles().view(), Joined(accepted));
    }
}

TEST(Selection, SaysWhyItIsRefused)
{
    struct Case {
        Names files;
        const char* logged;
    };
    const Case cases[] = {
        {{L"C:\\a.pdf", L"C:\\b.pdf"}, "Multi selection is not supported in Ostra version"},
        {{L"C:\\\u00C4.PDF"}, "No entry; no \".pdf\" in the path of the first file: C:\\\xC3\x84.PDF"},
    };
    const InstalledSettings settings({});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.logged);
        const CapturedLog log;
        ScriptedDataObject selection(Script::wideList, c.files);
        const ComPtr handler(new FileContextMenuExt);
        EXPECT_EQ(Initialize(*handler, selection), E_FAIL);
        EXPECT_THAT(log.texts(), ::testing::Contains(c.logged));
    }

    for (const Script script : {Script::refuse, Script::cutShort}) {
        const CapturedLog log;
        ScriptedDataObject selection(script, {L"C:\\a.pdf"});
        const ComPtr handler(new FileContextMenuExt);
        EXPECT_EQ(Initialize(*handler, selection), E_FAIL);
        EXPECT_THAT(log.texts(), ::testing::Contains("WARNING: The selection holds no list of files, or a malformed one"));
    }
}

TEST(Selection, SkipsPathsThatAreNotThere)
{
    class Paths : public SelectedPaths {
    public:
        explicit Paths(Names names) : names_(std::move(names)) {}
        UINT count() const override { return static_cast<UINT>(names_.size()); }
        std::wstring_view query(UINT index) override { return names_[index]; }

    private:
        Names names_;
    };
    struct Case {
        Names names;
        const char* taken; ///< null: no entry
    };
    const Case cases[] = {
        {{L"C:\\a.pdf", L"", L"C:\\b.pdf"}, "C:\\a.pdf*C:\\b.pdf"},
        {{L"", L"C:\\b.pdf"}, "*C:\\b.pdf"}, // the separator stands before all but a first file
        {{L"", L"C:\\b.txt"}, nullptr},
        {{L""}, nullptr},
    };
    CCryptoAutoLogger logger("test");
    for (const Case& c : cases) {
        Paths paths(c.names);
        CCryptoString files;
        EXPECT_EQ(TakeFiles(paths, true, files, logger), c.taken != nullptr);
        EXPECT_EQ(files.view(), c.taken != nullptr ? c.taken : "");
    }
}

TEST(Selection, SurvivesStrangeDataObjects)
{
    const InstalledSettings settings(multipleAllowed);
    struct Case {
        const char* name;
        Script script;
        Names names;
        const char* accepted; ///< null: E_FAIL
    };
    const Case cases[] = {
        {"no file list", Script::refuse, {L"C:\\a.pdf"}, nullptr},
        {"nothing to lock", Script::noMemory, {L"C:\\a.pdf"}, nullptr},
        {"a stream", Script::anotherMedium, {L"C:\\a.pdf"}, nullptr},
        {"an empty list", Script::wideList, {}, nullptr},
        {"a list without its end", Script::cutShort, {L"C:\\a.pdf"}, nullptr},
        {"8-bit names", Script::byteList, {L"C:\\a.pdf", L"C:\\b.txt", L"C:\\c.pdf"}, "C:\\a.pdf*C:\\c.pdf"},
        {"16-bit names", Script::wideList, {L"C:\\a.pdf", L"C:\\b.txt", L"C:\\c.pdf"}, "C:\\a.pdf*C:\\c.pdf"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ScriptedDataObject selection(c.script, c.names);
        const ComPtr handler(new FileContextMenuExt);
        EXPECT_EQ(Initialize(*handler, selection), c.accepted != nullptr ? S_OK : E_FAIL);
        EXPECT_EQ(handler->selectedFiles().view(), c.accepted != nullptr ? c.accepted : "");
        EXPECT_EQ(selection.mediaOutstanding(), 0);
        EXPECT_EQ(selection.locks(), 0U);
    }

    const ComPtr handler(new FileContextMenuExt);
    EXPECT_EQ(handler->Initialize(nullptr, nullptr, nullptr), E_INVALIDARG);
}

TEST(Selection, RefusesListsThatLeaveTheirMemory)
{
    const InstalledSettings settings(multipleAllowed);
    constexpr std::wstring_view oneName(L"C:\\a.pdf\0\0", 10);
    struct Case {
        const char* name;
        DWORD offset;
        bool wide;
        std::wstring_view list;
        bool taken;
    };
    const Case cases[] = {
        {"as it should be", 20, true, oneName, true},
        {"from the middle of a name", 24, true, oneName, true},
        {"far away", 0x7FFFFFFF, true, oneName, false},
        {"far away, 8-bit", 0x7FFFFFFF, false, oneName, false},
        {"a negative distance", 0xFFFFFFF0, true, oneName, false},
        {"one byte after the end", 41, true, oneName, false},
        {"at the end", 40, true, oneName, false},
        {"half a unit before the end", 39, true, oneName, false},
        {"the end is a name", 20, true, oneName.substr(0, 8), false},
        {"the name ends, the list does not", 20, true, oneName.substr(0, 9), false},
        {"nothing but the header", 20, true, {}, false},
        {"the header itself", 0, true, oneName, false},
        {"the end of the header", 18, true, oneName, false},
        {"8-bit, without its end", 20, false, L"\x2E61\x6470\x0066", false},
        {"8-bit, with its end", 20, false, {L"\x2E61\x6470\x0066\0", 4}, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ScriptedDataObject selection({c.offset, {}, FALSE, c.wide}, c.list);
        const ComPtr handler(new FileContextMenuExt);
        EXPECT_EQ(Initialize(*handler, selection), c.taken ? S_OK : E_FAIL);
        EXPECT_EQ(selection.mediaOutstanding(), 0);
        EXPECT_EQ(selection.locks(), 0U);
    }

    // A name inside the header, whole or without its last byte.
    for (const std::size_t size : {19U, 20U, 24U}) {
        SCOPED_TRACE(size);
        ScriptedDataObject selection(std::string_view("\4\0\0\0a.pdf\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", size));
        const ComPtr handler(new FileContextMenuExt);
        EXPECT_EQ(Initialize(*handler, selection), E_FAIL);
    }
}

TEST(Selection, CutsPathsAsTheSystemDoes)
{
    const InstalledSettings settings({});
    struct Case {
        const char* name;
        std::wstring path;
        std::wstring accepted;
    };
    const std::wstring beyond = L"C:\\" + std::wstring(293, L'x') + L".pdf";
    const std::wstring before = L"C:\\a.pdf\\" + std::wstring(291, L'x');
    const std::wstring longest = L"C:\\" + std::wstring(252, L'x') + L".pdf";
    const Case cases[] = {
        {"the suffix falls off", beyond, {}},
        {"the suffix stays", before, before.substr(0, 259)},
        {"just short enough", longest, longest},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ScriptedDataObject selection(Script::wideList, {c.path});
        const ComPtr handler(new FileContextMenuExt);
        EXPECT_EQ(Initialize(*handler, selection), c.accepted.empty() ? E_FAIL : S_OK);
        EXPECT_EQ(handler->selectedFiles().view(), platform::WideToUtf8(c.accepted));
    }
}

TEST(Selection, AddsToWhatIsThere)
{
    const InstalledSettings settings(multipleAllowed);
    ScriptedDataObject first(Script::wideList, {L"C:\\a.pdf", L"C:\\b.pdf"});
    ScriptedDataObject refused(Script::wideList, {L"C:\\c.txt"});
    ScriptedDataObject second(Script::wideList, {L"C:\\d.pdf"});
    const ComPtr handler(new FileContextMenuExt);
    EXPECT_EQ(Initialize(*handler, first), S_OK);
    EXPECT_EQ(Initialize(*handler, refused), E_FAIL);
    EXPECT_EQ(Initialize(*handler, second), S_OK);
    EXPECT_EQ(handler->selectedFiles().view(), "C:\\a.pdf*C:\\b.pdfC:\\d.pdf")
        << "the separator stands before all but a first file";
}

TEST(Selection, TakesTenThousandFiles)
{
    const InstalledSettings settings(multipleAllowed);
    Names paths;
    for (int i = 0; i < 10000; ++i)
        paths.push_back(L"C:\\Users\\user\\Documents\\document " + std::to_wstring(i) + L".pdf");
    ScriptedDataObject selection(Script::wideList, paths);
    const ComPtr handler(new FileContextMenuExt);
    EXPECT_EQ(Initialize(*handler, selection), S_OK);
    EXPECT_EQ(handler->selectedFiles().view(), Joined(paths));
}

// The list is walked without the system's help where that is faster; what comes out must be the same.
TEST(DroppedFiles, AgreesWithTheSystem)
{
    std::mt19937 random(20210525);
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        Names names(1 + random() % 8);
        for (std::wstring& name : names) {
            name.resize(1 + random() % 300);
            std::generate(name.begin(), name.end(), [&] { return static_cast<wchar_t>(1 + random() % 0xD000); });
        }
        const Script script = round % 10 == 0 ? Script::byteList : Script::wideList;
        if (script == Script::byteList)
            for (std::wstring& name : names)
                std::generate(name.begin(), name.end(), [&] { return static_cast<wchar_t>(1 + random() % 0x7F); });
        // Now and then the list begins at an odd address.
        std::string block = " ";
        for (const std::wstring& name : names)
            block.append(reinterpret_cast<const char*>(name.c_str()), (name.size() + 1) * sizeof(wchar_t));
        const DROPFILES oddHeader = {sizeof oddHeader + 1, {}, FALSE, TRUE};
        block.insert(0, reinterpret_cast<const char*>(&oddHeader), sizeof oddHeader);
        block.append(sizeof(wchar_t), '\0');
        ScriptedDataObject odd(block);
        ScriptedDataObject even(script, names);
        ScriptedDataObject& selection = round % 10 == 1 ? odd : even;

        FORMATETC format = {CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
        STGMEDIUM medium = {};
        ASSERT_EQ(selection.GetData(&format, &medium), S_OK);
        const auto drop = static_cast<HDROP>(medium.hGlobal);

        DroppedFiles files(selection);
        ASSERT_TRUE(files.isOpen());
        const UINT count = DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0);
        EXPECT_EQ(files.count(), count);
        for (UINT index = 0; index < count + 2; ++index) {
            EXPECT_EQ(files.query(index), SystemsAnswer(drop, index));
            // Now and then one out of turn.
            if (random() % 4 == 0 && count > 0) {
                const auto other = static_cast<UINT>(random() % count);
                EXPECT_EQ(files.query(other), SystemsAnswer(drop, other));
            }
        }
        ReleaseStgMedium(&medium);
    }
}
