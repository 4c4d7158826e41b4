#include "core/platform/log_place.h"

namespace ccrypto::platform {

// Not /tmp: what writes a file of a known name there writes where another user's link points.
const char* const defaultLogDirectory = "/var/log/";
const char pathSeparator = '/';

} // namespace ccrypto::platform
