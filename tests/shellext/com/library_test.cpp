#include "shellext/com/module.h"
#include "shellext/com/com_ptr.h"
#include "tests/shellext/com/loaded_library.h"
#include "tests/shellext/context_menu/gdi_objects.h"
#include "tests/shellext/context_menu/scripted_data_object.h"
#include "tests/shellext/owned.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <algorithm>
#include <memory>

namespace {

DWORD OpenHandles()
{
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}

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
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
}

TEST(Library, ComesAndGoesWithoutATrace)
{
    for (int i = 0; i < 5; ++i)
        UseOnce();
    ASSERT_EQ(GetModuleHandleW(L"explorermenuhandler.dll"), nullptr) << "somebody else keeps the library";
    const DWORD handles = OpenHandles();
    const DWORD slot = FirstFreeSlot();
    for (int i = 0; i < 195; ++i)
        UseOnce();
    EXPECT_EQ(OpenHandles(), handles);
    EXPECT_EQ(FirstFreeSlot(), slot);
}

TEST(Library, MakesAPictureAndGivesItBack)
{
    const LoadedLibrary library;
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(library.getClassObject(CLSID_FileContextMenuExt, IID_IClassFactory, factory.receiveVoid()), S_OK);
    ComPtr<IContextMenu> handler;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IContextMenu, handler.receiveVoid()), S_OK);
    const OwnedMenu menu(CreatePopupMenu());
    ASSERT_EQ(handler->QueryContextMenu(menu.get(), 0, 1, 1, CMF_NORMAL), 1);

    MENUITEMINFOW item = {};
    item.cbSize = sizeof item;
    item.fMask = MIIM_BITMAP;
    ASSERT_TRUE(GetMenuItemInfoW(menu.get(), 0, TRUE, &item));
    DIBSECTION picture = {};
    ASSERT_EQ(GetObjectW(item.hbmpItem, sizeof picture, &picture), static_cast<int>(sizeof picture));
    EXPECT_EQ(picture.dsBm.bmWidth, 16);
    EXPECT_EQ(picture.dsBm.bmHeight, 16);
    EXPECT_EQ(picture.dsBm.bmBitsPixel, 32);

    // The picture has clear and opaque places, and its first row is the icon's: a page that starts left and ends before the right.
    const auto* const pixels = static_cast<const std::uint32_t*>(picture.dsBm.bmBits);
    const auto isClear = [](std::uint32_t pixel) { return pixel >> 24 == 0; };
    EXPECT_GT(std::count_if(pixels, pixels + 256, isClear), 20);
    EXPECT_GT(std::count_if(pixels, pixels + 256, [](std::uint32_t pixel) { return pixel >> 24 == 0xFF; }), 100);
    EXPECT_FALSE(isClear(pixels[4]));
    EXPECT_TRUE(isClear(pixels[15]));

    const HBITMAP bitmap = item.hbmpItem;
    handler.reset();
    EXPECT_EQ(GetObjectType(bitmap), 0U) << "the bitmap goes with the handler";
}

TEST(Library, KeepsNoDeviceContextOrBitmapOfItsOwn)
{
    const LoadedLibrary library;
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(library.getClassObject(CLSID_FileContextMenuExt, IID_IClassFactory, factory.receiveVoid()), S_OK);
    const auto makeOne = [&](ComPtr<IContextMenu>& handler) {
        ASSERT_EQ(factory->CreateInstance(nullptr, IID_IContextMenu, handler.receiveVoid()), S_OK);
    };
    ComPtr<IContextMenu> handler;
    makeOne(handler);
    handler.reset();

    // DeleteObject, by which the handler hands back its icon, leaves an icon's own bitmaps to the system.
    const int bitmapsBefore = CountGdiObjects().bitmaps;
    const HANDLE icon = LoadImageW(library.module(), MAKEINTRESOURCEW(105), IMAGE_ICON, 16, 16, LR_DEFAULTCOLOR);
    const int bitmapsOfIcon = CountGdiObjects().bitmaps - bitmapsBefore;
    DestroyIcon(static_cast<HICON>(icon));

    constexpr int rounds = 50;
    const GdiObjects before = CountGdiObjects();
    for (int i = 0; i < rounds; ++i)
        makeOne(handler);
    EXPECT_EQ(CountGdiObjects().bitmaps, before.bitmaps + rounds * bitmapsOfIcon + 1) << "the last handler still has its own";
    handler.reset();
    EXPECT_EQ(CountGdiObjects().bitmaps, before.bitmaps + rounds * bitmapsOfIcon);
    EXPECT_EQ(CountGdiObjects().contexts, before.contexts);
}
