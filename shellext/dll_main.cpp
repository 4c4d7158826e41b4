#include "shellext/module.h"

/// Called by the loader after the runtime has built the static objects.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH) {
        module::SetHandle(instance);
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}
