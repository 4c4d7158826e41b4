#include "shellext/class_factory.h"

#include "core/diagnostics/auto_logger.h"
#include "shellext/com/com_ptr.h"
#include "shellext/com/hresult.h"
#include "shellext/context_menu/file_context_menu_ext.h"

#include <shlwapi.h>

#include <new>

using namespace ccrypto;

HRESULT ClassFactory::QueryInterface(REFIID riid, void** ppv) noexcept
{
    static const QITAB interfaces[] = {
        QITABENT(ClassFactory, IClassFactory),
        {nullptr, 0},
    };
    return QISearch(this, interfaces, riid, ppv);
}

ULONG ClassFactory::AddRef() noexcept
{
    return ++references_;
}

ULONG ClassFactory::Release() noexcept
{
    const ULONG left = --references_;
    if (left == 0)
        delete this;
    return left;
}

HRESULT ClassFactory::CreateInstance(IUnknown* outer, REFIID riid, void** ppv) noexcept
{
    return Guarded([&] {
        CCryptoAutoLogger logger("ClassFactory::CreateInstance");

        if (ppv != nullptr)
            *ppv = nullptr;
        if (outer != nullptr)
            return logger.fail(CLASS_E_NOAGGREGATION);
        const ComPtr handler(new (std::nothrow) FileContextMenuExt);
        if (!handler)
            return logger.fail(E_OUTOFMEMORY);
        const HRESULT result = handler->QueryInterface(riid, ppv);
        return logger.setRetValue(SUCCEEDED(result) ? ResultStatus::none : ResultStatus::error, result);
    });
}

HRESULT ClassFactory::LockServer(BOOL lock) noexcept
{
    if (lock)
        module::AddObject();
    else
        module::RemoveObject();
    return S_OK;
}
