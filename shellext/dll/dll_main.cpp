#include "core/settings/process_logger.h"
#include "core/settings/settings_registry.h"
#include "shellext/com/module.h"

#include <memory>

using namespace ccrypto;

namespace {

// Both are in one file because the order matters: the logger reads its level from the settings when it is built, and they must
// still be there when it writes its last line. The runtime builds them before any export can be called.
constexpr char applicationName[] = "Pennwick Client";

CCryptoSettings settings(std::make_unique<CCryptoSettingsRegistry>(nullptr, applicationName, nullptr));
CCryptoProcessLogger processLogger(nullptr, applicationName, "pdfmenuhandler");

} // namespace

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
