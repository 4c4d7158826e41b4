#include "shellext/context_menu/dropped_files.h"

#include "shellext/com/bounded_text.h"

#include <shlobj.h>

#include <algorithm>
#include <cstring>
#include <optional>

namespace ccrypto {

namespace {

/// A list of zero-terminated texts.
struct TextList {
    std::size_t units; ///< up to the empty text that ends it
    UINT count;
};

/// \return nothing when the list does not end, with an empty text, inside the `size` bytes from `list` on.
template <typename Unit>
std::optional<TextList> FindEnd(const char* list, std::size_t size)
{
    UINT count = 0;
    bool isTextStart = true;
    for (std::size_t index = 0; index < size / sizeof(Unit); ++index) {
        Unit unit;
        std::memcpy(&unit, list + index * sizeof unit, sizeof unit);
        if (unit == 0 && isTextStart)
            return TextList{index, count};
        isTextStart = unit == 0;
        count += isTextStart;
    }
    return std::nullopt;
}

/// The same texts, from 8-bit ones of the user's code page. Each keeps a zero of its own, whatever bytes it consists of.
std::wstring Widened(const char* text, UINT count)
{
    // A character has at most four bytes; what follows is cut off anyway.
    constexpr std::size_t maxBytes = 4 * textCapacity;
    std::wstring list;
    for (UINT index = 0; index < count; ++index) {
        const std::size_t length = std::strlen(text);
        wchar_t wide[maxBytes];
        const int size = static_cast<int>(std::min(length, maxBytes));
        list.append(wide, static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text, size, wide, maxBytes)));
        list += L'\0';
        text += length + 1;
    }
    return list;
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
    if (memory_ != nullptr)
        open();
}

DroppedFiles::~DroppedFiles()
{
    if (memory_ != nullptr)
        GlobalUnlock(medium_.hGlobal);
    ReleaseStgMedium(&medium_);
}

void DroppedFiles::open()
{
    const std::size_t size = GlobalSize(medium_.hGlobal);
    const auto* header = static_cast<const DROPFILES*>(memory_);
    if (size < sizeof(DROPFILES) || header->pFiles < sizeof(DROPFILES) || header->pFiles > size)
        return;
    const char* list = static_cast<const char*>(memory_) + header->pFiles;
    const std::size_t listSize = size - header->pFiles;
    const std::optional<TextList> found = header->fWide ? FindEnd<wchar_t>(list, listSize) : FindEnd<char>(list, listSize);
    if (!found)
        return;

    count_ = found->count;
    if (!header->fWide) {
        converted_ = Widened(list, found->count);
        first_ = converted_.c_str();
    } else if (header->pFiles % sizeof(wchar_t) != 0) {
        converted_.resize(found->units);
        std::memcpy(converted_.data(), list, found->units * sizeof(wchar_t));
        first_ = converted_.c_str();
    } else {
        first_ = reinterpret_cast<const wchar_t*>(list);
    }
    next_ = first_;
}

std::wstring_view DroppedFiles::query(UINT index)
{
    if (index >= count_)
        return {};
    if (index < nextIndex_) {
        next_ = first_;
        nextIndex_ = 0;
    }
    std::wstring_view path;
    for (; nextIndex_ <= index; ++nextIndex_) {
        path = next_;
        next_ += path.size() + 1;
    }
    return path.substr(0, textCapacity - 1);
}

} // namespace ccrypto
