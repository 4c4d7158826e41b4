#include "tests/shellext/context_menu/scripted_data_object.h"

#include <cstring>
#include <stdexcept>

using namespace ccrypto;

namespace ccrypto {

namespace {

std::string Bytes(const DROPFILES& header)
{
    return {reinterpret_cast<const char*>(&header), sizeof header};
}

} // namespace

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
    fill(Bytes(header) + bytes);
}

ScriptedDataObject::ScriptedDataObject(DROPFILES header, std::wstring_view list) : script_(Script::wideList)
{
    fill(Bytes(header).append(reinterpret_cast<const char*>(list.data()), list.size() * sizeof(wchar_t)));
}

ScriptedDataObject::ScriptedDataObject(std::string_view block) : script_(Script::wideList)
{
    fill(block);
}

void ScriptedDataObject::fill(std::string_view block)
{
    memory_ = GlobalAlloc(GMEM_MOVEABLE, block.size());
    block.copy(static_cast<char*>(GlobalLock(memory_)), block.size());
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
    if (script_ == Script::failure)
        throw std::runtime_error("a data object of another program");
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
