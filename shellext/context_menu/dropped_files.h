#pragma once

#include "shellext/com/bounded_text.h"
#include "shellext/sign_action.h"

#include <windows.h>

#include <objidl.h>
#include <shellapi.h>

namespace ccrypto {

/// The files of a selection: the CF_HDROP list of a data object, locked in memory while this lives and then given back.
///
/// The shell follows a list wherever it leads, so one that does not begin and end inside its memory is refused, and the shell is
/// not asked about an empty one.
class DroppedFiles final : public SelectedPaths {
public:
    /// Asks `source` for its list; `isOpen` says whether it has one.
    explicit DroppedFiles(IDataObject& source);
    ~DroppedFiles() override;
    DroppedFiles(const DroppedFiles&) = delete;
    DroppedFiles& operator=(const DroppedFiles&) = delete;

    bool isOpen() const { return isBounded_; }

    /// Both only when open. They give what DragQueryFileW gives for a list with files; asking for the indices in order takes linear
    /// time altogether.
    UINT count() const override { return count_; }
    std::wstring_view query(UINT index) override;

private:
    HDROP drop() const { return static_cast<HDROP>(medium_.hGlobal); }
    bool countInside();
    std::wstring_view querySystem(UINT index);

    STGMEDIUM medium_ = {};
    const void* memory_ = nullptr;
    bool isBounded_ = false;
    UINT count_ = 0;

    // The text of `nextIndex_` in a list of 16-bit units; null when the system is asked.
    const wchar_t* next_ = nullptr;
    UINT nextIndex_ = 0;
    wchar_t systemsAnswer_[textCapacity] = {};
};

} // namespace ccrypto
