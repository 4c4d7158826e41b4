#include "shellext/class_factory.h"
#include "shellext/com/com_ptr.h"
#include "tests/shellext/context_menu/memory_settings.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <cstdlib>
#include <new>

using namespace ccrypto;

namespace {

bool memoryIsShort = false;

}

// In place of the library's, for this program.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return memoryIsShort ? nullptr : std::malloc(size);
}

TEST(ClassFactory, LeavesNothingBehindWhenItRefuses)
{
    const InstalledSettings settings({});
    const LONG before = module::ObjectCount();
    {
        const ComPtr factory(new ClassFactory);
        EXPECT_EQ(module::ObjectCount(), before + 1);

        struct Case {
            const char* name;
            IUnknown* outer;
            const IID& interfaceId;
            HRESULT result;
        };
        const Case cases[] = {
            {"aggregation", factory.get(), IID_IUnknown, CLASS_E_NOAGGREGATION},
            {"an interface the handler lacks", nullptr, IID_IContextMenu2, E_NOINTERFACE},
            {"the factory's own interface", nullptr, IID_IClassFactory, E_NOINTERFACE},
        };
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name);
            void* object = factory.get();
            EXPECT_EQ(factory->CreateInstance(c.outer, c.interfaceId, &object), c.result);
            EXPECT_EQ(object, nullptr);
            EXPECT_EQ(module::ObjectCount(), before + 1);
        }
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IContextMenu, nullptr), E_POINTER);
        EXPECT_EQ(factory->CreateInstance(factory.get(), IID_IContextMenu, nullptr), CLASS_E_NOAGGREGATION);
        EXPECT_EQ(module::ObjectCount(), before + 1);
    }
    EXPECT_EQ(module::ObjectCount(), before);
}

TEST(ClassFactory, HandsOutOneObjectUnderAllItsInterfaces)
{
    const InstalledSettings settings({});
    const LONG before = module::ObjectCount();
    const ComPtr factory(new ClassFactory);

    IUnknown* unknown = nullptr;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&unknown)), S_OK);
    EXPECT_EQ(module::ObjectCount(), before + 2);

    IContextMenu* menu = nullptr;
    IShellExtInit* initializer = nullptr;
    IUnknown* again = nullptr;
    EXPECT_EQ(unknown->QueryInterface(IID_IShellExtInit, reinterpret_cast<void**>(&initializer)), S_OK);
    EXPECT_EQ(initializer->QueryInterface(IID_IContextMenu, reinterpret_cast<void**>(&menu)), S_OK);
    EXPECT_EQ(initializer->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&again)), S_OK);
    EXPECT_EQ(again, unknown);
    EXPECT_EQ(static_cast<void*>(menu), static_cast<void*>(unknown)) << "the first interface stands for IUnknown";

    EXPECT_EQ(again->Release(), 3U);
    EXPECT_EQ(menu->Release(), 2U);
    EXPECT_EQ(initializer->Release(), 1U);
    EXPECT_EQ(unknown->Release(), 0U);
    EXPECT_EQ(module::ObjectCount(), before + 1);
}

TEST(ClassFactory, SaysThatThereIsNoMemory)
{
    const InstalledSettings settings({});
    const LONG before = module::ObjectCount();
    const ComPtr factory(new ClassFactory);
    void* handler = factory.get();
    void* secondFactory = factory.get();
    memoryIsShort = true;
    const HRESULT handlerMade = factory->CreateInstance(nullptr, IID_IContextMenu, &handler);
    const HRESULT factoryMade = DllGetClassObject(CLSID_FileContextMenuExt, IID_IClassFactory, &secondFactory);
    memoryIsShort = false;
    EXPECT_EQ(handlerMade, E_OUTOFMEMORY);
    EXPECT_EQ(handler, nullptr);
    EXPECT_EQ(factoryMade, E_OUTOFMEMORY);
    EXPECT_EQ(secondFactory, nullptr);
    EXPECT_EQ(module::ObjectCount(), before + 1);
}
