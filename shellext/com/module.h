#pragma once

#include <windows.h>

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
