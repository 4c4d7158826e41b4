#pragma once

#include "shellext/com/bounded_text.h"

#include <windows.h>

#include <objidl.h>
#include <shellapi.h>

/// The files of a selection: the CF_HDROP list of a data object, locked in memory while this lives and then given back.
class DroppedFiles {
public:
    /// Asks `source` for its list; `isOpen` tells whether it had one.
    explicit DroppedFiles(IDataObject& source);
    ~DroppedFiles();
    DroppedFiles(const DroppedFiles&) = delete;
    DroppedFiles& operator=(const DroppedFiles&) = delete;

    bool isOpen() const { return memory_ != nullptr; }
    UINT count() const;

    /// Writes the path at `index` to `path`, cut to 259 characters, exactly as DragQueryFileW does; asking for one index after the
    /// other takes linear time altogether. \return the characters written; 0 when there is no such path.
    std::size_t query(UINT index, wchar_t (&path)[textCapacity]);

private:
    HDROP drop() const { return static_cast<HDROP>(medium_.hGlobal); }
    void findFirst();
    std::size_t querySystem(UINT index, wchar_t (&path)[textCapacity]) const;

    STGMEDIUM medium_ = {};
    const void* memory_ = nullptr;

    // The text of `nextIndex_` in a list of 16-bit units; null when only the system can tell.
    const wchar_t* next_ = nullptr;
    const wchar_t* end_ = nullptr;
    UINT nextIndex_ = 0;
};
