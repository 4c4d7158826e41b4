#include "tests/shellext/context_menu/scripted_data_object.h"

#include <cstring>

using namespace ccrypto;

namespace ccrypto {

ScriptedDataObject::ScriptedDataObject(Script script, const std::vector<std::wstring>& names) : script_(script)
{
    std::wstring list;
    for (const std::wstring& name : names)
        list += name + L'\0';
    if (script != Script::cutShort)
        list += L'\0';

    std::string bytes(reinterpret_cast<const char*>(list.data()), list.size() * sizeof(wchar_t));
    if (script == Script::byteList) {
        bytes.clear();
        for (const wchar_t unit : list)
            bytes += static_cast<char>(unit);
    }

    DROPFILES header = {};
    header.pFiles = sizeof header;
    header.fWide = script != Script::byteList;
    fill(header, bytes);
}

ScriptedDataObject::ScriptedDataObject(DROPFILES header, std::wstring_view list) : script_(Script::wideList)
{
    fill(header, {reinterpret_cast<const char*>(list.data()), list.size() * sizeof(wchar_t)});
}

void ScriptedDataObject::fill(const DROPFILES& header, std::string_view bytes)
{
    memory_ = GlobalAlloc(GMEM_MOVEABLE, sizeof header + bytes.size());
    auto* target = static_cast<char*>(GlobalLock(memory_));
    std::memcpy(target, &header, sizeof header);
    bytes.copy(target + sizeof header, bytes.size());
    GlobalUnlock(memory_);
}

ScriptedDataObject::~ScriptedDataObject()
{
    GlobalFree(memory_);
}

HRESULT ScriptedDataObject::QueryInterface(REFIID, void** ppv)
{
    *ppv = nullptr;
    return E_NOINTERFACE;
}

HRESULT ScriptedDataObject::GetData(FORMATETC* format, STGMEDIUM* medium)
{
    const bool understood = format->cfFormat == CF_HDROP && format->ptd == nullptr && format->dwAspect == DVASPECT_CONTENT &&
                            format->lindex == -1 && format->tymed == TYMED_HGLOBAL;
    if (!understood || script_ == Script::refuse) {
        // Whoever looks into the medium of a failed call sees this.
        std::memset(medium, 0xCC, sizeof *medium);
        return DV_E_FORMATETC;
    }
    medium->tymed = script_ == Script::anotherMedium ? TYMED_ISTREAM : TYMED_HGLOBAL;
    medium->hGlobal = script_ == Script::noMemory ? nullptr : memory_;
    medium->pUnkForRelease = &media_;
    media_.AddRef();
    if (script_ == Script::anotherMedium)
        medium->pstm = nullptr;
    return S_OK;
}

} // namespace ccrypto
