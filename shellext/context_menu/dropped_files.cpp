#include "shellext/context_menu/dropped_files.h"

#include <shlobj.h>

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace ccrypto {

namespace {

/// Whether a list of zero-terminated texts ends, with an empty text, inside the `size` bytes from `list` on.
template <typename Unit>
bool EndsInside(const char* list, std::size_t size)
{
    bool isTextStart = true;
    for (std::size_t offset = 0; size - offset >= sizeof(Unit); offset += sizeof(Unit)) {
        Unit unit;
        std::memcpy(&unit, list + offset, sizeof unit);
        if (unit == 0 && isTextStart)
            return true;
        isTextStart = unit == 0;
    }
    return false;
}

} // namespace

DroppedFiles::DroppedFiles(IDataObject& source)
{
    FORMATETC format = {CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    if (FAILED(source.GetData(&format, &medium_))) {
        medium_ = {};
        return;
    }
    if (medium_.tymed == TYMED_HGLOBAL)
        memory_ = GlobalLock(medium_.hGlobal);
    isBounded_ = memory_ != nullptr && findFirst();
}

DroppedFiles::~DroppedFiles()
{
    if (memory_ != nullptr)
        GlobalUnlock(medium_.hGlobal);
    ReleaseStgMedium(&medium_);
}

bool DroppedFiles::findFirst()
{
    const std::size_t size = GlobalSize(medium_.hGlobal);
    const auto* header = static_cast<const DROPFILES*>(memory_);
    if (size < sizeof(DROPFILES) || header->pFiles > size)
        return false;
    const char* list = static_cast<const char*>(memory_) + header->pFiles;
    const std::size_t listSize = size - header->pFiles;
    if (!header->fWide)
        return EndsInside<char>(list, listSize);
    if (!EndsInside<wchar_t>(list, listSize))
        return false;
    if (header->pFiles % sizeof(wchar_t) == 0) {
        next_ = reinterpret_cast<const wchar_t*>(list);
        end_ = next_ + listSize / sizeof(wchar_t);
    }
    return true;
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
    if (terminator == next_) {
        next_ = nullptr;
        return querySystem(index, path);
    }
    const auto length = static_cast<std::size_t>(terminator - next_);
    CopyBounded(path, textCapacity, {next_, length});
    next_ = terminator + 1;
    ++nextIndex_;
    return std::min(length, textCapacity - 1);
}

} // namespace ccrypto
