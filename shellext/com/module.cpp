#include "shellext/com/module.h"

#include <atomic>

namespace ccrypto::module {

namespace {

constinit HINSTANCE handle = nullptr;
constinit std::atomic<LONG> objectCount = 0;

} // namespace

HINSTANCE Handle()
{
    return handle;
}

void SetHandle(HINSTANCE own)
{
    handle = own;
}

LONG ObjectCount()
{
    return objectCount;
}

void AddObject()
{
    ++objectCount;
}

void RemoveObject()
{
    --objectCount;
}

} // namespace ccrypto::module
