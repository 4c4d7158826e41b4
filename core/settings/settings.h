#pragma once

#include "core/text/element.h"
#include "core/text/string.h"

#include <cstdint>
#include <memory>
#include <string_view>

class ICryptoSettingsGroupIterator;

/// Where configuration is read. The order of the operations is the order of the table of virtual operations; all are pure.
/// GetInteger and the operations without flags have bodies that build on GetValue and GetInteger, for implementations to call.
class ICryptoSettings {
public:
    /// A missing value is reported as an error.
    static constexpr std::uint32_t reportMissing = 1;
    /// The current user's values come before the machine's.
    static constexpr std::uint32_t userFirst = 2;

    /// For implementations that keep copies of the values; nothing to do where each read asks the store.
    virtual void Reload() = 0;
    /// Integers are stored as decimal text of at most 20 bytes. \return true when found; text that is not a number gives 0 and
    /// still counts as found; a negative number gives its two's complement. `value` is untouched when nothing was found.
    [[nodiscard]] virtual bool GetInteger(const char* name, std::uint32_t& value, std::uint32_t flags) = 0;
    /// At most 255 bytes; empty when missing or longer.
    [[nodiscard]] virtual element GetString(const char* name) = 0;
    /// Copies the value to `buffer` of `size` bytes, zero-terminated. \return true when found; a value that does not fit is not.
    [[nodiscard]] virtual bool GetValue(const char* name, char* buffer, std::uint32_t size, std::uint32_t flags) = 0;
    /// At most 260 bytes, a path; empty when missing or longer.
    [[nodiscard]] virtual element GetLongString(const char* name) = 0;
    [[nodiscard]] virtual std::uint32_t GetIntegerOrDefault(const char* name, std::uint32_t defaultValue) = 0;
    [[nodiscard]] virtual bool SetValue(const element& name, const element& value) = 0;
    /// The items of a group, each of them settings of its own; null when there is no such group.
    [[nodiscard]] virtual std::unique_ptr<ICryptoSettingsGroupIterator> Group(const char* name) = 0;
    virtual ~ICryptoSettings() = default;
};

/// Walks the items of a group: the settings answer for the item that GetNext reached last, or for the group before the first item
/// and after the last.
class ICryptoSettingsGroupIterator : public ICryptoSettings {
public:
    /// Moves to the next item and writes its name to `name` of `size` bytes. \return false when no item remains.
    [[nodiscard]] virtual bool GetNext(char* name, std::uint32_t size) = 0;
};

/// Owns the one settings instance of the process while it lives. It is installed before other threads read and destroyed after
/// they have ended; readers take no lock.
class CCryptoSettings {
public:
    /// Installs `instance` in place of any other, which is destroyed.
    explicit CCryptoSettings(std::unique_ptr<ICryptoSettings> instance);
    /// Destroys the installed instance.
    ~CCryptoSettings();
    CCryptoSettings(const CCryptoSettings&) = delete;
    CCryptoSettings& operator=(const CCryptoSettings&) = delete;

    /// Null, logged as "CCryptoSettings::Instance is not set", when none is installed.
    [[nodiscard]] static ICryptoSettings* Instance();
    /// Instance without the complaint, for code that can do without.
    [[nodiscard]] static ICryptoSettings* InstanceOrNull();
    /// The name of this computer, at most 255 bytes.
    [[nodiscard]] static CCryptoString ComputerName();
};

namespace ccrypto {

/// The number at the beginning of `text` as `atoi` reads it: blanks, a sign, decimal digits; 0 when there are none. Numbers beyond
/// 32 bits give the nearest one within.
[[nodiscard]] std::int32_t IntegerOfText(std::string_view text);

} // namespace ccrypto
