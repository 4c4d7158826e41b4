#pragma once

/// Front header of deflate: everything of the module that clients use.

#include "deflate/crc32.h"
#include "deflate/deflate_stream.h"
