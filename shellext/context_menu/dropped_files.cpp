#include "shellext/context_menu/dropped_files.h"

#include <shlobj.h>

#include <cstring>
#include <optional>

namespace ccrypto {

namespace {

/// The texts in a list of zero-terminated ones that ends, with an empty text, inside the `size` bytes from `list` on.
/// \return nothing when it does not end there.
template <typename Unit>
std::optional<UINT> CountTexts(const char* list, std::size_t size)
{
    UINT count = 0;
    bool isTextStart = true;
    for (std::size_t offset = 0; size - offset >= sizeof(Unit); offset += sizeof(Unit)) {
        Unit unit;
        std::memcpy(&unit, list + offset, sizeof unit);
        if (unit == 0 && isTextStart)
            return count;
        isTextStart = unit == 0;
        count += isTextStart;
    }
    return std::nullopt;
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
    isBounded_ = memory_ != nullptr && countInside();
}

DroppedFiles::~DroppedFiles()
{
    if (memory_ != nullptr)
        GlobalUnlock(medium_.hGlobal);
    ReleaseStgMedium(&medium_);
}

bool DroppedFiles::countInside()
{
    const std::size_t size = GlobalSize(medium_.hGlobal);
    const auto* header = static_cast<const DROPFILES*>(memory_);
    if (size < sizeof(DROPFILES) || header->pFiles > size)
        return false;
    const char* list = static_cast<const char*>(memory_) + header->pFiles;
    const std::size_t listSize = size - header->pFiles;
    const std::optional<UINT> count = header->fWide ? CountTexts<wchar_t>(list, listSize) : CountTexts<char>(list, listSize);
    if (header->fWide && header->pFiles % sizeof(wchar_t) == 0)
        next_ = reinterpret_cast<const wchar_t*>(list);
    count_ = count.value_or(0);
    return count.has_value();
}

std::wstring_view DroppedFiles::querySystem(UINT index)
{
    return DragQueryFileW(drop(), index, systemsAnswer_, textCapacity) != 0 ? systemsAnswer_ : std::wstring_view();
}

std::wstring_view DroppedFiles::query(UINT index)
{
    if (index >= count_)
        return {};
    // DragQueryFileW walks the list from its start for every index, which takes seconds for ten thousand files.
    if (next_ == nullptr || index != nextIndex_)
        return querySystem(index);

    const std::wstring_view path = next_;
    next_ += path.size() + 1;
    ++nextIndex_;
    return path.substr(0, textCapacity - 1);
}

} // namespace ccrypto
