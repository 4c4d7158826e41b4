#pragma once

#include "core/settings/registry.h"
#include "core/settings/settings.h"

#include <cstdint>
#include <memory>

/// Walks the sub-keys of a registry key, each of them settings. Items are read, not written.
class CCryptoSettingsRegistryIter : public ICryptoSettingsGroupIterator, private CCryptoRegistry {
public:
    /// Opens the key `group` below `parent`, which was opened to read.
    CCryptoSettingsRegistryIter(const char* group, const ccrypto::platform::RegistryKey& parent);
    ~CCryptoSettingsRegistryIter() override;

    /// \return an iterator whose key is open, or null.
    [[nodiscard]] static std::unique_ptr<CCryptoSettingsRegistryIter> Open(const char* group,
                                                                           const ccrypto::platform::RegistryKey& parent);

    /// Whether the group's key could be opened.
    bool isOpen() const { return group_.isOpen(); }

    void Reload() override;
    [[nodiscard]] bool GetInteger(const char* name, std::uint32_t& value, std::uint32_t flags) override;
    [[nodiscard]] element GetString(const char* name) override;
    [[nodiscard]] bool GetValue(const char* name, char* buffer, std::uint32_t size, std::uint32_t flags) override;
    [[nodiscard]] element GetLongString(const char* name) override;
    [[nodiscard]] std::uint32_t GetIntegerOrDefault(const char* name, std::uint32_t defaultValue) override;
    /// Fails: "Function is not supported".
    [[nodiscard]] bool SetValue(const element& name, const element& value) override;
    /// A group below this one.
    [[nodiscard]] std::unique_ptr<ICryptoSettingsGroupIterator> Group(const char* name) override;
    /// Items whose name does not fit are skipped, logged. An item whose key cannot be opened is reached, but holds no values.
    [[nodiscard]] bool GetNext(char* name, std::uint32_t size) override;

private:
    ccrypto::platform::RegistryKey group_;
    std::uint32_t index_ = 0;
    ccrypto::platform::RegistryKey item_;
    /// An item is current, though its key may not be open.
    bool atItem_ = false;
};
