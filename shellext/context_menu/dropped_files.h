#pragma once

#include "shellext/sign_action.h"

#include <windows.h>

#include <objidl.h>
#include <shellapi.h>

namespace ccrypto {

/// The files of a selection: the CF_HDROP list of a data object, locked in memory while this lives and then given back.
///
/// The shell follows a list wherever it leads, so one that does not begin and end inside its memory is refused.
class DroppedFiles final : public ccrypto::SelectedPaths {
public:
    /// Asks `source` for its list; `isOpen` says whether it has one.
    explicit DroppedFiles(IDataObject& source);
    ~DroppedFiles() override;
    DroppedFiles(const DroppedFiles&) = delete;
    DroppedFiles& operator=(const DroppedFiles&) = delete;

    bool isOpen() const { return isBounded_; }

    /// Both only when open.
    UINT count() const override;
    /// Cuts exactly as DragQueryFileW does; asking for the indices in order takes linear time altogether.
    std::size_t query(UINT index, wchar_t (&path)[textCapacity]) override;

private:
    HDROP drop() const { return static_cast<HDROP>(medium_.hGlobal); }
    bool findFirst();
    std::size_t querySystem(UINT index, wchar_t (&path)[textCapacity]) const;

    STGMEDIUM medium_ = {};
    const void* memory_ = nullptr;
    bool isBounded_ = false;

    // The text of `nextIndex_` in a list of 16-bit units; null when the system is asked.
    const wchar_t* next_ = nullptr;
    const wchar_t* end_ = nullptr;
    UINT nextIndex_ = 0;
};

} // namespace ccrypto
