#include "shellext/com/module.h"
#include "shellext/context_menu/menu_bitmap.h"
#include "tests/shellext/com/loaded_library.h"
#include "tests/support/captured_log.h"
#include "tests/support/replaced_import.h"

#include <commctrl.h>
#include <gmock/gmock.h>
#include <objbase.h>

#include <algorithm>
#include <thread>
#include <vector>

using namespace ccrypto;

namespace {

std::vector<HICON> loadedIcons;
std::vector<HGDIOBJ> deletedObjects;

HRESULT WINAPI CountLoad(HINSTANCE module, PCWSTR name, int width, int height, HICON* icon)
{
    const auto system = reinterpret_cast<decltype(&LoadIconWithScaleDown)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"comctl32.dll"), "LoadIconWithScaleDown")));
    const HRESULT result = system(module, name, width, height, icon);
    loadedIcons.push_back(*icon);
    return result;
}

HRESULT WINAPI LoadNothing(HINSTANCE, PCWSTR, int, int, HICON*)
{
    SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
    return E_FAIL;
}

BOOL WINAPI KeepDeleted(HGDIOBJ object)
{
    deletedObjects.push_back(object);
    return TRUE;
}

HDC WINAPI NoContext(HWND)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

/// A picture that no other test has had decoded, of the library's own icon.
class MenuPictureTest : public ::testing::Test {
protected:
    MenuPictureTest() { module::SetHandle(library_.module()); }
    ~MenuPictureTest() override { module::SetHandle(nullptr); }

    /// Fails, with `line` in the log.
    void ExpectFailure(const char* line)
    {
        const CapturedLog log;
        EXPECT_FALSE(picture_.makeBitmap());
        EXPECT_THAT(log.texts(), ::testing::Contains(line));
    }

    LoadedLibrary library_;
    MenuPicture picture_;
};

} // namespace

TEST_F(MenuPictureTest, IsDecodedOnceButForFailures)
{
    {
        const ReplacedImport load(nullptr, "LoadIconWithScaleDown", LoadNothing);
        ExpectFailure("Cannot load icon from resource 1812");
    }
    loadedIcons.clear();
    const ReplacedImport load(nullptr, "LoadIconWithScaleDown", CountLoad);
    // COM is not up on this thread.
    std::thread([&] {
        ExpectFailure("Cannot create imaging factory 0x800401f0");
        ExpectFailure("Cannot create imaging factory 0x800401f0");
    }).join();
    {
        const ReplacedImport screen(nullptr, "GetDC", NoContext);
        ExpectFailure("Cannot get DC for entire screen 8");
        ExpectFailure("Cannot get DC for entire screen 8");
    }
    EXPECT_TRUE(picture_.makeBitmap());
    std::thread([&] { EXPECT_TRUE(picture_.makeBitmap()) << "needs no COM any more"; }).join();
    EXPECT_EQ(loadedIcons.size(), 1U) << "each one loaded stays with the process";
}

TEST_F(MenuPictureTest, HandsTheIconToDeleteObject)
{
    loadedIcons.clear();
    deletedObjects.clear();
    const ReplacedImport load(nullptr, "LoadIconWithScaleDown", CountLoad);
    const ReplacedImport deletion(nullptr, "DeleteObject", KeepDeleted);
    const ccrypto::OwnedBitmap bitmap = picture_.makeBitmap();
    ASSERT_EQ(loadedIcons.size(), 1U);
    EXPECT_THAT(deletedObjects, ::testing::ElementsAre(static_cast<HGDIOBJ>(loadedIcons[0])));
}

TEST_F(MenuPictureTest, IsDecodedByThreadsAtOnce)
{
    std::vector<std::thread> threads(4);
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            for (int round = 0; round < 10; ++round)
                EXPECT_TRUE(picture_.makeBitmap());
            CoUninitialize();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}
