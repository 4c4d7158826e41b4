#pragma once

#include "shellext/com/module.h"

#include <unknwn.h>

#include <atomic>

/// Creates context-menu handlers. Starts with one reference; keeps the library loaded while it lives.
class ClassFactory final : public IClassFactory {
public:
    ClassFactory() = default;
    ClassFactory(const ClassFactory&) = delete;
    ClassFactory& operator=(const ClassFactory&) = delete;

    /// IClassFactory and IUnknown.
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) noexcept override;
    STDMETHODIMP_(ULONG) AddRef() noexcept override;
    STDMETHODIMP_(ULONG) Release() noexcept override;

    /// \return CLASS_E_NOAGGREGATION for any outer object, E_OUTOFMEMORY, or the new handler's answer to `riid`; on failure `*ppv`
    /// is null.
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** ppv) noexcept override;
    /// Locks or unlocks the library, not this object.
    STDMETHODIMP LockServer(BOOL lock) noexcept override;

private:
    ~ClassFactory() = default;

    std::atomic<ULONG> references_ = 1;
    ccrypto::module::ObjectReference counted_;
};
