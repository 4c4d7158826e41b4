#pragma once

#include "core/platform/registry.h"

#include <cstdint>
#include <string_view>

/// Text values of registry keys, read and written with their outcome in the log. Key paths use "\" and may end with one.
class CCryptoRegistry {
public:
    /// Reads a value of the key `path`, in the machine's hive or, with `userFirst`, in the user's hive before it. The buffer is
    /// cleared; a value found, of whatever type, is terminated in it, whether it was stored with a zero byte or not.
    /// A value without space for the zero byte is an error, "Value is longer than %u bytes" and the system's text for
    /// ERROR_MORE_DATA. \param size the size of `buffer`; becomes the number of bytes read, as stored. \return true when found. A
    /// missing value is an error with `reportMissing` alone.
    [[nodiscard]] static bool getRegValue(const char* path, const char* name, char* buffer, std::uint32_t& size, bool reportMissing,
                                          bool userFirst);

    /// Writes a text value of the key `path` of the machine's hive; the key is created when missing. A zero byte in the value is
    /// refused.
    [[nodiscard]] static bool setRegValue(const char* path, const char* name, std::string_view value);

protected:
    struct Answer {
        std::uint32_t status = 0; ///< the system's
        bool isText = false;
    };

    /// Reads one value as getRegValue does; on failure the buffer is all zeros.
    [[nodiscard]] static Answer QueryTerminated(const ccrypto::platform::RegistryKey& key, const char* name, char* buffer,
                                                std::uint32_t& size);
};
