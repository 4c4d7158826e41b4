#pragma once

#include <windows.h>

#include <objidl.h>
#include <shlobj.h>

#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

/// A data object that does what the shell's own never does, and counts the media it has handed out and not got back.
class ScriptedDataObject final : public IDataObject {
public:
    enum class Script {
        wideList,
        byteList,      ///< names of 8-bit characters
        cutShort,      ///< a list whose last name is not followed by a second zero, at the very end of its memory
        refuse,        ///< GetData fails
        noMemory,      ///< success with a handle that cannot be locked
        anotherMedium, ///< success with a stream
        failure,       ///< GetData throws
    };

    ScriptedDataObject(Script script, const std::vector<std::wstring>& names);
    /// Hands out a list of 16-bit names with whatever its header says.
    ScriptedDataObject(DROPFILES header, std::wstring_view list);
    /// Hands out these bytes, header and list.
    explicit ScriptedDataObject(std::string_view block);
    ~ScriptedDataObject();
    ScriptedDataObject(const ScriptedDataObject&) = delete;
    ScriptedDataObject& operator=(const ScriptedDataObject&) = delete;

    LONG mediaOutstanding() const { return media_.count; }
    UINT locks() const { return GlobalFlags(memory_) & GMEM_LOCKCOUNT; }

    STDMETHODIMP QueryInterface(REFIID, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetData(FORMATETC* format, STGMEDIUM* medium) override;
    STDMETHODIMP GetDataHere(FORMATETC*, STGMEDIUM*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryGetData(FORMATETC*) override { return E_NOTIMPL; }
    STDMETHODIMP GetCanonicalFormatEtc(FORMATETC*, FORMATETC*) override { return E_NOTIMPL; }
    STDMETHODIMP SetData(FORMATETC*, STGMEDIUM*, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFormatEtc(DWORD, IEnumFORMATETC**) override { return E_NOTIMPL; }
    STDMETHODIMP DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP DUnadvise(DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP EnumDAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }

private:
    /// What ReleaseStgMedium releases instead of freeing the memory.
    struct MediumCount final : IUnknown {
        STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
        STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++count); }
        STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--count); }

        LONG count = 0;
    };

    void fill(std::string_view block);

    Script script_;
    HGLOBAL memory_ = nullptr;
    MediumCount media_;
};

} // namespace ccrypto
