#pragma once

namespace ccrypto {

/// What stands around the Deflate data.
enum class DeflateFormat {
    raw,  ///< nothing
    gzip, ///< one or more GZIP members
};

} // namespace ccrypto
