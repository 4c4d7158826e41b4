#include "core/platform/log_place.h"

namespace ccrypto::platform {

const char* const defaultLogDirectory = "C:\\";
const char pathSeparator = '\\';

} // namespace ccrypto::platform
