#pragma once

#include "shellext/com/bounded_text.h"

#include <windows.h>

#include <objidl.h>

#include <string>

namespace ccrypto {

/// The rival: what any handler has to do for the same menu, with nothing around it. It decodes the icon once a process, makes the
/// same bitmap, reads the one setting that the menu depends on, takes the same paths and inserts the same two items, but it looks
/// at no locale, logs nothing and counts nothing, and believes every list of files.
class PlainHandler {
public:
    /// \param icons the library that holds the menu icon.
    explicit PlainHandler(HINSTANCE icons);
    ~PlainHandler();
    PlainHandler(const PlainHandler&) = delete;
    PlainHandler& operator=(const PlainHandler&) = delete;

    bool initialize(IDataObject& selection);
    bool addItems(HMENU menu, UINT index, UINT identifier);
    const std::string& paths() const { return paths_; }

private:
    HBITMAP bitmap_ = nullptr;
    bool multipleAllowed_ = false;
    wchar_t text_[textCapacity] = L"&Sign .pdf document";
    std::string paths_;
};

} // namespace ccrypto
