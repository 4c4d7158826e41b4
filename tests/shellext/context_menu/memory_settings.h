#pragma once

#include "core/settings/settings.h"

#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace ccrypto {

/// Settings that hold what a test put in, installed as those of the process while this lives.
class InstalledSettings {
public:
    using Values = std::map<std::string, std::string>;

    explicit InstalledSettings(Values values) : installed_(std::make_unique<MemorySettings>(std::move(values))) {}

private:
    class MemorySettings : public ICryptoSettings {
    public:
        explicit MemorySettings(Values values) : values_(std::move(values)) {}

        void Reload() override {}
        bool GetInteger(const char* name, std::uint32_t& value, std::uint32_t) override
        {
            const auto found = values_.find(name);
            if (found != values_.end())
                value = static_cast<std::uint32_t>(std::atoi(found->second.c_str()));
            return found != values_.end();
        }
        element GetString(const char* name) override { return CCryptoString(values_[name].c_str()).data(); }
        bool GetValue(const char*, char*, std::uint32_t, std::uint32_t) override { return false; }
        element GetLongString(const char* name) override { return GetString(name); }
        std::uint32_t GetIntegerOrDefault(const char* name, std::uint32_t defaultValue) override
        {
            GetInteger(name, defaultValue, 0);
            return defaultValue;
        }
        bool SetValue(const element&, const element&) override { return false; }
        std::unique_ptr<ICryptoSettingsGroupIterator> Group(const char*) override { return nullptr; }

    private:
        Values values_;
    };

    CCryptoSettings installed_;
};

} // namespace ccrypto
