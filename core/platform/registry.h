#pragma once

#include "core/platform/system_handle.h"

#include <cstdint>
#include <string>

namespace ccrypto::platform {

enum class RegistryHive { currentUser, localMachine };

enum class RegistryAccess {
    query, ///< read values
    read,  ///< read values and enumerate sub-keys
    write, ///< create sub-keys and values
};

constexpr std::uint32_t registrySuccess = 0;
constexpr std::uint32_t registryNotFound = 2;
constexpr std::uint32_t registryMoreData = 234;
constexpr std::uint32_t registryNoMoreItems = 259;

/// One open key of the registry. Every operation returns the system's status, 0 for success; the codes above are the same on both
/// systems. Key paths use "\"; names compare without case. A key does only what it was opened for.
///
/// On Windows the view (32 or 64 bit) is chosen once a process from the native processor, so that programs of both kinds meet in
/// the same key.
///
/// On POSIX a hive is a folder, a key a folder in it, a value a file that holds the text; a line feed at its end, as editors leave,
/// is not part of it. The machine's hive is
/// /etc/xdg/crypto/registry, the user's $XDG_CONFIG_HOME/crypto/registry (below ~/.config when that is not set); the variables
/// CRYPTO_REGISTRY_MACHINE and CRYPTO_REGISTRY_USER name other folders. Names keep the case they were created with: an entry is
/// sought as spelt first, then without regard to the case of ASCII letters. Names that begin with "." or hold "/" or a control
/// character are refused; a key and a value of one key cannot have the same name.
class RegistryKey {
public:
    /// Opens the key; one held so far is closed, even when this fails.
    [[nodiscard]] std::uint32_t open(RegistryHive hive, const char* path, RegistryAccess access);
    [[nodiscard]] std::uint32_t openBelow(const RegistryKey& parent, const char* path, RegistryAccess access);
    /// Creates the key when missing; a volatile key does not survive a restart (on POSIX it does, empty). Opened for writing.
    [[nodiscard]] std::uint32_t create(RegistryHive hive, const char* path, bool isVolatile);

    /// Reads the value `name` into `buffer` of `size` bytes; `size` becomes the number of bytes read, `isText` becomes true for a
    /// REG_SZ. A terminator stored with the text needs space in the buffer but is not counted. An empty or null name is the key's
    /// unnamed value. A value that does not fit gives registryMoreData, the size it needs, and leaves the buffer undefined.
    [[nodiscard]] std::uint32_t queryValue(const char* name, void* buffer, std::uint32_t& size, bool& isText) const;
    /// Writes `length` bytes as a REG_SZ.
    [[nodiscard]] std::uint32_t setText(const char* name, const char* text, std::uint32_t length);
    /// The name of the sub-key at `index`, terminated within `size` bytes; registryNoMoreItems past the last.
    [[nodiscard]] std::uint32_t enumerate(std::uint32_t index, char* name, std::uint32_t size) const;

    bool isOpen() const { return static_cast<bool>(handle_); }
    void close() { handle_.reset(); }

private:
    struct Kind {
        using Value = void*;
        static Value none() { return nullptr; }
        static void close(Value value);
    };

    ccrypto::SystemHandle<Kind> handle_;
};

} // namespace ccrypto::platform
