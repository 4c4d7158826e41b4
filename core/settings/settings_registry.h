#pragma once

#include "core/settings/registry.h"
#include "core/settings/settings.h"

#include <memory>

/// Settings kept as text values of one key of the machine's registry, "SOFTWARE\COMPANY\PRODUCT\SUB-PATH"; the user's hive is asked
/// first when a call says so. The key is created, volatile, when it is missing, so that one that is never written to does not
/// survive a restart; where it cannot be created, reads find nothing. Values are written to the machine's hive.
///
/// Windows keeps a key as it was made: values and keys below one that was made volatile go with it. An installer that creates the
/// key makes its values last.
class CCryptoSettingsRegistry : public ICryptoSettings, private CCryptoRegistry {
public:
    /// \param company null for "Brannock"; \param subPath may be null, its "/" become "\".
    CCryptoSettingsRegistry(const char* company, const char* product, const char* subPath);
    ~CCryptoSettingsRegistry() override;

    void Reload() override;
    [[nodiscard]] bool GetInteger(const char* name, std::uint32_t& value, std::uint32_t flags) override;
    [[nodiscard]] element GetString(const char* name) override;
    [[nodiscard]] bool GetValue(const char* name, char* buffer, std::uint32_t size, std::uint32_t flags) override;
    [[nodiscard]] element GetLongString(const char* name) override;
    [[nodiscard]] std::uint32_t GetIntegerOrDefault(const char* name, std::uint32_t defaultValue) override;
    [[nodiscard]] bool SetValue(const element& name, const element& value) override;
    [[nodiscard]] std::unique_ptr<ICryptoSettingsGroupIterator> Group(const char* name) override;

    /// The key below the hive.
    const char* path() const { return path_.c_str(); }

private:
    CCryptoString path_;
};
