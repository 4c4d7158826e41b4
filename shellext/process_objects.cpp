#include "core/settings/process_logger.h"
#include "core/settings/settings_registry.h"

#include <memory>

namespace {

// Both stand in one file because the order matters: the logger reads its level from the settings when it is built, and they must
// still be there when it writes its last line. The runtime builds them before any export can be called.
constexpr char applicationName[] = "Pennwick Client";

CCryptoSettings settings(std::make_unique<CCryptoSettingsRegistry>(nullptr, applicationName, nullptr));
CCryptoProcessLogger processLogger(nullptr, applicationName, "pdfmenuhandler");

} // namespace
