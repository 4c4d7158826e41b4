#pragma once

#include "shellext/sign_action.h"

#include <windows.h>

#include <objidl.h>

#include <string>

namespace ccrypto {

/// The files of a selection: the CF_HDROP list of a data object, copied or locked in memory while this lives and then given back.
///
/// The shell follows a list wherever it leads; this one is walked here, and refused unless it lies after its header and ends inside
/// its memory. What comes out is what DragQueryFileW gives.
class DroppedFiles final : public SelectedPaths {
public:
    /// Asks `source` for its list; `isOpen` says whether it has a well-formed one.
    explicit DroppedFiles(IDataObject& source);
    ~DroppedFiles() override;
    DroppedFiles(const DroppedFiles&) = delete;
    DroppedFiles& operator=(const DroppedFiles&) = delete;

    bool isOpen() const { return first_ != nullptr; }

    /// Both only when open.
    UINT count() const override { return count_; }
    /// Asking for the indices in order takes linear time altogether.
    std::wstring_view query(UINT index) override;

private:
    void open();

    STGMEDIUM medium_ = {};
    const void* memory_ = nullptr;

    /// The list where it is not of aligned 16-bit units.
    std::wstring converted_;
    const wchar_t* first_ = nullptr;
    UINT count_ = 0;

    /// The text of `nextIndex_`.
    const wchar_t* next_ = nullptr;
    UINT nextIndex_ = 0;
};

} // namespace ccrypto
