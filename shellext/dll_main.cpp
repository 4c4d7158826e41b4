#include "shellext/com/module.h"

/// Called by the loader after the runtime has built the static objects.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH) {
        module::SetHandle(instance);
        // Refused by the system for a library with thread-local storage, whose runtime needs to hear of threads that end.
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}
