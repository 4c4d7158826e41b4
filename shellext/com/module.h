#pragma once

#include <windows.h>

namespace ccrypto {

/// The one class that the library creates: {7D6B0C5E-52A1-4C0B-9A5F-3E1D8B64F2C7}. Registration writes it, the exports compare with
/// it.
inline constexpr CLSID CLSID_FileContextMenuExt = {0x7d6b0c5e, 0x52a1, 0x4c0b, {0x9a, 0x5f, 0x3e, 0x1d, 0x8b, 0x64, 0xf2, 0xc7}};

/// What the library keeps once a process: its own handle, and the count of everything that keeps it loaded.
namespace module {

/// The handle of the library; before `SetHandle`, and in a program that links the code in, null: the program itself.
HINSTANCE Handle();
void SetHandle(HINSTANCE handle);

/// Live objects and server locks together. Unbalanced unlocking makes it negative.
LONG ObjectCount();
void AddObject();
void RemoveObject();

/// Counts as one object while it lives.
class ObjectReference {
public:
    ObjectReference() { AddObject(); }
    ~ObjectReference() { RemoveObject(); }
    ObjectReference(const ObjectReference&) = delete;
    ObjectReference& operator=(const ObjectReference&) = delete;
};

} // namespace module

} // namespace ccrypto
