#include "shellext/com/module.h"
#include "shellext/com/registration.h"
#include "tests/shellext/com/classes_hive.h"
#include "tests/shellext/com/loaded_library.h"
#include "tests/support/replaced_import.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include <algorithm>

using namespace ccrypto;

namespace {

constexpr auto notFound = static_cast<HRESULT>(0x80070002);
constexpr auto tooLong = static_cast<HRESULT>(0x8007007A);

std::wstring ClassText()
{
    wchar_t text[64];
    StringFromGUID2(CLSID_FileContextMenuExt, text, 64);
    return text;
}

std::wstring HandlerKey(const std::wstring& fileType)
{
    return fileType + L"\\shellex\\ContextMenuHandlers\\" + ClassText();
}

class Registration : public ::testing::Test {
protected:
    LoadedLibrary library_;
    ClassesHive hive_;
};

} // namespace

TEST_F(Registration, WritesFourValuesAndRemovesThemAll)
{
    ASSERT_EQ(library_.call("DllRegisterServer"), S_OK);

    const std::wstring classKey = L"CLSID\\" + ClassText();
    const ClassesHive::Contents expected = {
        {L"*", {}},
        {L"*\\shellex", {}},
        {L"*\\shellex\\ContextMenuHandlers", {}},
        {HandlerKey(L"*"), {{L"", L"ExplorerMenuHandler.FileContextMenuExt"}}},
        {L"CLSID", {}},
        {classKey, {{L"", L"ExplorerMenuHandler.FileContextMenuExt Class"}}},
        {classKey + L"\\InprocServer32", {{L"", library_.path()}, {L"ThreadingModel", L"Apartment"}}},
    };
    EXPECT_EQ(hive_.contents(), expected);

    // Again over what is there.
    ASSERT_EQ(library_.call("DllRegisterServer"), S_OK);
    EXPECT_EQ(hive_.contents(), expected);

    ASSERT_EQ(library_.call("DllUnregisterServer"), S_OK);
    const ClassesHive::Contents left = {{L"*", {}}, {L"*\\shellex", {}}, {L"*\\shellex\\ContextMenuHandlers", {}}, {L"CLSID", {}}};
    EXPECT_EQ(hive_.contents(), left);
}

TEST_F(Registration, StopsAtTheFirstKeyThatIsNotThere)
{
    EXPECT_EQ(library_.call("DllUnregisterServer"), notFound);

    ASSERT_EQ(library_.call("DllRegisterServer"), S_OK);
    ASSERT_EQ(UnregisterInprocServer(CLSID_FileContextMenuExt), S_OK);
    EXPECT_EQ(library_.call("DllUnregisterServer"), notFound);
    EXPECT_EQ(hive_.contents().count(HandlerKey(L"*")), 1U) << "the second deletion is not attempted";

    EXPECT_EQ(UnregisterShellExtContextMenuHandler(L"*", CLSID_FileContextMenuExt), S_OK);
    EXPECT_EQ(UnregisterShellExtContextMenuHandler(L"*", CLSID_FileContextMenuExt), notFound);
}

TEST_F(Registration, PassesOnWhatTheRegistrySays)
{
    // No lasting key can be made below one that vanishes.
    hive_.createVolatile(L"CLSID");
    constexpr auto childMustBeVolatile = static_cast<HRESULT>(0x80070000 | ERROR_CHILD_MUST_BE_VOLATILE);
    EXPECT_EQ(library_.call("DllRegisterServer"), childMustBeVolatile);
    EXPECT_EQ(hive_.contents().count(HandlerKey(L"*")), 0U);
}

TEST_F(Registration, IsRefusedWithoutAWholePath)
{
    {
        const ReplacedImport none(
            library_.module(), "GetModuleFileNameW", +[](HMODULE, LPWSTR, DWORD) -> DWORD {
                SetLastError(ERROR_MOD_NOT_FOUND);
                return 0;
            });
        EXPECT_EQ(library_.call("DllRegisterServer"), static_cast<HRESULT>(0x80070000 | ERROR_MOD_NOT_FOUND));
        EXPECT_EQ(library_.call("DllUnregisterServer"), static_cast<HRESULT>(0x80070000 | ERROR_MOD_NOT_FOUND));
    }
    const ReplacedImport cut(
        library_.module(), "GetModuleFileNameW", +[](HMODULE, LPWSTR path, DWORD size) -> DWORD {
            std::fill_n(path, size - 1, L'x');
            path[size - 1] = 0;
            return size;
        });
    EXPECT_EQ(library_.call("DllRegisterServer"), tooLong);
    EXPECT_EQ(hive_.contents(), ClassesHive::Contents());
}

TEST_F(Registration, FindsTheProgramIdentifierOfAnExtension)
{
    const std::wstring long259(259, L'x');
    struct Case {
        const char* name;
        const wchar_t* extension;
        const wchar_t* stored; ///< null: the key has no default value
        bool terminated;
        std::wstring writtenBelow;
    };
    const Case cases[] = {
        {"stored with its zero", L".one", L"Pennwick.Document", true, L"Pennwick.Document"},
        {"stored without", L".two", L"Pennwick.Document", false, L"Pennwick.Document"},
        {"empty", L".three", L"", true, L".three"},
        {"no default value", L".four", nullptr, true, L".four"},
        {"longer than the buffer", L".five", L"a", true, L".five"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::wstring stored = c.stored != nullptr ? c.stored : L"";
        if (stored == L"a")
            stored = std::wstring(260, L'a');
        hive_.create(c.extension);
        if (c.stored != nullptr)
            hive_.setDefault(c.extension, stored, c.terminated);

        EXPECT_EQ(RegisterShellExtContextMenuHandler(c.extension, CLSID_FileContextMenuExt, L"name"), S_OK);
        EXPECT_EQ(hive_.contents().count(HandlerKey(c.writtenBelow)), 1U);
        EXPECT_EQ(UnregisterShellExtContextMenuHandler(c.extension, CLSID_FileContextMenuExt), S_OK);
        EXPECT_EQ(hive_.contents().count(HandlerKey(c.writtenBelow)), 0U);
    }

    EXPECT_EQ(RegisterShellExtContextMenuHandler(L".absent", CLSID_FileContextMenuExt, nullptr), S_OK);
    EXPECT_EQ(hive_.contents()[HandlerKey(L".absent")], ClassesHive::Values()) << "no name, no default value";
}

TEST_F(Registration, RefusesWhatItCannotWrite)
{
    EXPECT_EQ(RegisterInprocServer(nullptr, CLSID_FileContextMenuExt, L"name", L"Apartment"), E_INVALIDARG);
    EXPECT_EQ(RegisterInprocServer(L"path", CLSID_FileContextMenuExt, L"name", nullptr), E_INVALIDARG);
    EXPECT_EQ(RegisterShellExtContextMenuHandler(nullptr, CLSID_FileContextMenuExt, L"name"), E_INVALIDARG);
    EXPECT_EQ(UnregisterShellExtContextMenuHandler(nullptr, CLSID_FileContextMenuExt), E_INVALIDARG);

    // The identifier and the fixed text around the file type take 67 of 259 characters.
    EXPECT_EQ(RegisterShellExtContextMenuHandler(std::wstring(193, L'x').c_str(), CLSID_FileContextMenuExt, nullptr), tooLong);
    EXPECT_EQ(hive_.contents(), ClassesHive::Contents());
    EXPECT_EQ(RegisterShellExtContextMenuHandler(std::wstring(192, L'x').c_str(), CLSID_FileContextMenuExt, nullptr), S_OK);
}

TEST_F(Registration, ReadsAValueAsItIsStored)
{
    ASSERT_EQ(SetHKCRRegistryKeyAndValue(L"key", L"value", L"text"), S_OK);
    wchar_t text[] = L"########";
    EXPECT_EQ(GetHKCRRegistryKeyAndValue(L"key", L"value", text, sizeof text), S_OK);
    EXPECT_STREQ(text, L"text");
    EXPECT_EQ(GetHKCRRegistryKeyAndValue(L"key", L"value", text, 4), static_cast<HRESULT>(0x80070000 | ERROR_MORE_DATA));
    EXPECT_EQ(GetHKCRRegistryKeyAndValue(L"key", L"other", text, sizeof text), notFound);
    EXPECT_EQ(GetHKCRRegistryKeyAndValue(L"nowhere", L"value", text, sizeof text), notFound);
}
