#include "core/platform/log_place.h"

namespace platform {

const char* const defaultLogDirectory = "C:\\";
const char pathSeparator = '\\';

} // namespace platform
