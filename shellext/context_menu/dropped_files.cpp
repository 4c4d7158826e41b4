#include "shellext/context_menu/dropped_files.h"

#include <shlobj.h>

#include <algorithm>
#include <cwchar>

DroppedFiles::DroppedFiles(IDataObject& source)
{
    FORMATETC format = {CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    if (FAILED(source.GetData(&format, &medium_))) {
        medium_ = {};
        return;
    }
    if (medium_.tymed == TYMED_HGLOBAL)
        memory_ = GlobalLock(medium_.hGlobal);
    if (memory_ != nullptr)
        findFirst();
}

DroppedFiles::~DroppedFiles()
{
    if (memory_ != nullptr)
        GlobalUnlock(medium_.hGlobal);
    ReleaseStgMedium(&medium_);
}

void DroppedFiles::findFirst()
{
    const std::size_t size = GlobalSize(medium_.hGlobal);
    const auto* header = static_cast<const DROPFILES*>(memory_);
    if (size < sizeof(DROPFILES) || !header->fWide || header->pFiles > size || header->pFiles % sizeof(wchar_t) != 0)
        return;
    const auto* bytes = static_cast<const char*>(memory_);
    next_ = reinterpret_cast<const wchar_t*>(bytes + header->pFiles);
    end_ = next_ + (size - header->pFiles) / sizeof(wchar_t);
}

UINT DroppedFiles::count() const
{
    return DragQueryFileW(drop(), 0xFFFFFFFF, nullptr, 0);
}

std::size_t DroppedFiles::querySystem(UINT index, wchar_t (&path)[textCapacity]) const
{
    return DragQueryFileW(drop(), index, path, textCapacity) != 0 ? std::wcslen(path) : 0;
}

std::size_t DroppedFiles::query(UINT index, wchar_t (&path)[textCapacity])
{
    // DragQueryFileW walks the list from its start for every index, which takes seconds for ten thousand files.
    if (next_ == nullptr || index != nextIndex_)
        return querySystem(index, path);

    const wchar_t* const terminator = std::find(next_, end_, L'\0');
    if (terminator == end_ || terminator == next_) {
        next_ = nullptr;
        return querySystem(index, path);
    }
    const auto length = static_cast<std::size_t>(terminator - next_);
    CopyBounded(path, textCapacity, {next_, length});
    next_ = terminator + 1;
    ++nextIndex_;
    return std::min(length, textCapacity - 1);
}
