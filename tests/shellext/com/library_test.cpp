#include "shellext/com/com_ptr.h"
#include "shellext/com/module.h"
#include "shellext/com/owned_handles.h"
#include "tests/shellext/com/footprint.h"
#include "tests/shellext/com/loaded_library.h"
#include "tests/shellext/context_menu/scripted_data_object.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <memory>
#include <vector>

using namespace ccrypto;

namespace {

/// The thread-local slot the system would give out next; a process has some thousand.
DWORD FirstFreeSlot()
{
    const DWORD slot = TlsAlloc();
    TlsFree(slot);
    return slot;
}

/// Loads the library, right-clicks a document and lets go of everything.
void UseOnce()
{
    ScriptedDataObject selection(ScriptedDataObject::Script::wideList, {L"C:\\report.pdf"});
    const OwnedMenu menu(CreatePopupMenu());
    const LoadedLibrary library;
    ComPtr<IClassFactory> factory;
    ComPtr<IShellExtInit> initializer;
    ComPtr<IContextMenu> handler;
    ASSERT_EQ(library.getClassObject(CLSID_FileContextMenuExt, IID_IClassFactory, factory.receiveVoid()), S_OK);
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IShellExtInit, initializer.receiveVoid()), S_OK);
    ASSERT_EQ(initializer->QueryInterface(IID_IContextMenu, handler.receiveVoid()), S_OK);
    EXPECT_EQ(initializer->Initialize(nullptr, &selection, nullptr), S_OK);
    EXPECT_EQ(handler->QueryContextMenu(menu.get(), 0, 1, 1, CMF_NORMAL), 1);
    EXPECT_EQ(library.call("DllCanUnloadNow"), S_FALSE);
    initializer.reset();
    handler.reset();
    factory.reset();
    EXPECT_EQ(library.call("DllCanUnloadNow"), S_OK);
}

/// The rival in plain C: loads it, has it add its entry to a menu and lets go of everything.
void UsePlainOnce()
{
    const OwnedMenu menu(CreatePopupMenu());
    const OwnedModule library(LoadLibraryA(PROGRAM_DIR "/plain_library.dll"));
    ASSERT_TRUE(library);
    const auto find = [&](const char* name) { return reinterpret_cast<void*>(GetProcAddress(library.get(), name)); };
    const auto bitmap = reinterpret_cast<HBITMAP (*)(HMENU)>(find("AddEntry"))(menu.get());
    EXPECT_NE(bitmap, nullptr);
    reinterpret_cast<void (*)(HBITMAP)>(find("RemoveEntry"))(bitmap);
}

/// What 1,000 times leave, after some that fill the system's own caches.
Footprint LeftBy(void (*use)())
{
    for (int round = 0; round < 50; ++round)
        use();
    const Footprint before = Footprint::Now();
    for (int round = 0; round < 1000; ++round)
        use();
    return Footprint::Now() - before;
}

/// What a second handler and all later ones may leave is nothing.
class RightClicks : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(library_.getClassObject(CLSID_FileContextMenuExt, IID_IClassFactory, factory_.receiveVoid()), S_OK);
    }

    void MakeHandler(ComPtr<IContextMenu>& handler)
    {
        ASSERT_EQ(factory_->CreateInstance(nullptr, IID_IContextMenu, handler.receiveVoid()), S_OK);
    }

    /// The picture of the entry that `handler` adds to a menu.
    static HBITMAP PictureOf(IContextMenu& handler)
    {
        const OwnedMenu menu(CreatePopupMenu());
        EXPECT_EQ(handler.QueryContextMenu(menu.get(), 0, 1, 1, CMF_NORMAL), 1);
        MENUITEMINFOW item = {};
        item.cbSize = sizeof item;
        item.fMask = MIIM_BITMAP;
        EXPECT_TRUE(GetMenuItemInfoW(menu.get(), 0, TRUE, &item));
        return item.hbmpItem;
    }

    /// As the system would draw it, whichever way the rows lie in memory.
    static std::vector<std::uint32_t> PixelsFromTheTop(HBITMAP bitmap)
    {
        BITMAPINFO description = {{sizeof(BITMAPINFOHEADER), 16, -16, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {}};
        std::vector<std::uint32_t> pixels(256);
        const OwnedDrawingContext context(CreateCompatibleDC(nullptr));
        EXPECT_EQ(GetDIBits(context.get(), bitmap, 0, 16, pixels.data(), &description, DIB_RGB_COLORS), 16);
        return pixels;
    }

    LoadedLibrary library_;
    ComPtr<IClassFactory> factory_;
};

} // namespace

TEST(Library, HandsOutItsFactoryAlone)
{
    const LoadedLibrary library;
    CLSID almost = CLSID_FileContextMenuExt;
    almost.Data4[7] ^= 1;
    struct Case {
        const char* name;
        const CLSID& clsid;
        const IID& interfaceId;
        HRESULT result;
        bool untouched;
    };
    const Case cases[] = {
        {"another class", almost, IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE, true},
        {"another interface", CLSID_FileContextMenuExt, IID_IContextMenu, E_NOINTERFACE, false},
        {"its factory", CLSID_FileContextMenuExt, IID_IClassFactory, S_OK, false},
        {"its factory as IUnknown", CLSID_FileContextMenuExt, IID_IUnknown, S_OK, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        int mark = 0;
        void* object = &mark;
        EXPECT_EQ(library.getClassObject(c.clsid, c.interfaceId, &object), c.result);
        EXPECT_EQ(object == &mark, c.untouched);
        EXPECT_EQ(library.call("DllCanUnloadNow"), c.result == S_OK ? S_FALSE : S_OK);
        if (c.result == S_OK) {
            EXPECT_EQ(static_cast<IUnknown*>(object)->Release(), 0U);
        }
        EXPECT_EQ(library.call("DllCanUnloadNow"), S_OK);
    }
}

TEST(Library, StaysWhileItIsLocked)
{
    const LoadedLibrary library;
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(library.getClassObject(CLSID_FileContextMenuExt, IID_IClassFactory, factory.receiveVoid()), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(7), S_OK);
    IClassFactory* const locked = factory.get();
    locked->AddRef();
    EXPECT_EQ(locked->Release(), 1U) << "locks are no references";
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    factory.reset();
    EXPECT_EQ(library.call("DllCanUnloadNow"), S_FALSE);

    ASSERT_EQ(library.getClassObject(CLSID_FileContextMenuExt, IID_IClassFactory, factory.receiveVoid()), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    // One unlocking too many counts against the factory, and then stays below zero.
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(library.call("DllCanUnloadNow"), S_OK);
    factory.reset();
    EXPECT_EQ(library.call("DllCanUnloadNow"), S_OK) << "below zero";
    ASSERT_EQ(library.getClassObject(CLSID_FileContextMenuExt, IID_IClassFactory, factory.receiveVoid()), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
}

TEST(Library, LeavesWhatAPlainLibraryLeaves)
{
    const Footprint plain = LeftBy(UsePlainOnce);
    const DWORD slot = FirstFreeSlot();
    const Footprint own = LeftBy(UseOnce);
    ASSERT_EQ(GetModuleHandleW(L"explorermenuhandler.dll"), nullptr) << "somebody else keeps the library";
    SCOPED_TRACE(::testing::Message() << "plain: " << plain << "; own: " << own);
    // A block of the smallest size that stays with each load would take more.
    EXPECT_LT(static_cast<std::ptrdiff_t>(own.heapBytes - plain.heapBytes), 4000);
    EXPECT_LT(static_cast<std::ptrdiff_t>(own.privateBytes - plain.privateBytes), 1 << 20);
    EXPECT_EQ(own.gdiObjects, plain.gdiObjects);
    EXPECT_EQ(own.userObjects, plain.userObjects);
    EXPECT_EQ(own.kernelHandles, plain.kernelHandles);
    EXPECT_EQ(FirstFreeSlot(), slot);
}

TEST_F(RightClicks, LeaveNothing)
{
    ComPtr<IContextMenu> handler;
    const auto click = [&] {
        MakeHandler(handler);
        PictureOf(*handler.get());
        handler.reset();
    };
    for (int round = 0; round < 10; ++round)
        click();
    const Footprint before = Footprint::Now();
    for (int round = 0; round < 1000; ++round)
        click();
    const Footprint left = Footprint::Now() - before;
    SCOPED_TRACE(::testing::Message() << left);
    EXPECT_LT(static_cast<std::ptrdiff_t>(left.heapBytes), 4000);
    EXPECT_LT(static_cast<std::ptrdiff_t>(left.privateBytes), 1 << 20);
    EXPECT_EQ(left.gdiObjects, 0U);
    EXPECT_EQ(left.userObjects, 0U);
    EXPECT_EQ(left.kernelHandles, 0U);
}

TEST_F(RightClicks, ShowThePictureOfTheIcon)
{
    struct Pixel {
        int x;
        int y;
        std::uint32_t value;
    };
    // Of the 16-pixel icon: a page whose upper right corner is folded, and a pen. The edge of the fold is #5B6675 at 112 of 255, so
    // its colours are multiplied by that.
    const Pixel expected[] = {
        {0, 0, 0}, {1, 0, 0xFF5B6675}, {9, 0, 0x70282D33}, {15, 0, 0}, {2, 1, 0xFFFFFFFF}, {14, 5, 0x4E091529}, {13, 15, 0},
    };
    // The first handler decodes the icon, the second does not.
    ComPtr<IContextMenu> handlers[2];
    HBITMAP bitmaps[2] = {};
    for (int index = 0; index < 2; ++index) {
        SCOPED_TRACE(index);
        MakeHandler(handlers[index]);
        bitmaps[index] = PictureOf(*handlers[index].get());
        DIBSECTION picture = {};
        ASSERT_EQ(GetObjectW(bitmaps[index], sizeof picture, &picture), static_cast<int>(sizeof picture));
        EXPECT_EQ(picture.dsBm.bmWidth, 16);
        EXPECT_EQ(picture.dsBm.bmHeight, 16);
        EXPECT_EQ(picture.dsBm.bmBitsPixel, 32);
        const std::vector<std::uint32_t> pixels = PixelsFromTheTop(bitmaps[index]);
        for (const Pixel& pixel : expected)
            EXPECT_EQ(pixels[static_cast<std::size_t>(pixel.y * 16 + pixel.x)], pixel.value) << pixel.x << ", " << pixel.y;
    }
    EXPECT_NE(bitmaps[0], bitmaps[1]);
    handlers[0].reset();
    EXPECT_EQ(GetObjectType(bitmaps[0]), 0U) << "the bitmap goes with its handler";
    EXPECT_EQ(GetObjectType(bitmaps[1]), static_cast<DWORD>(OBJ_BITMAP));
}
