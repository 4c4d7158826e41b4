#pragma once

#include "shellext/com/owned_handles.h"

#include <windows.h>

#include <map>
#include <string>

namespace ccrypto {

/// An empty HKEY_CLASSES_ROOT that this process sees while the object lives.
class ClassesHive {
public:
    /// Value name to text. A text stored with its terminating zero has it here, too; other types show their number.
    using Values = std::map<std::wstring, std::wstring>;
    /// Every key by its path from the root.
    using Contents = std::map<std::wstring, Values>;

    ClassesHive()
    {
        path_ = L"Software\\shellext-tests-" + std::to_wstring(GetCurrentProcessId());
        RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
        RegCreateKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, root_.receive(), nullptr);
        RegOverridePredefKey(HKEY_CLASSES_ROOT, root_.get());
    }
    ~ClassesHive()
    {
        RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
        root_.reset();
        RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
    }
    ClassesHive(const ClassesHive&) = delete;
    ClassesHive& operator=(const ClassesHive&) = delete;

    void create(const std::wstring& key) { create(key, REG_OPTION_NON_VOLATILE); }
    void createVolatile(const std::wstring& key) { create(key, REG_OPTION_VOLATILE); }

    void setDefault(const std::wstring& key, const std::wstring& text, bool terminated)
    {
        OwnedKey opened;
        RegOpenKeyExW(root_.get(), key.c_str(), 0, KEY_WRITE, opened.receive());
        RegSetValueExW(opened.get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                       static_cast<DWORD>((text.size() + (terminated ? 1 : 0)) * sizeof(wchar_t)));
    }

    Contents contents() const
    {
        Contents found;
        collect(root_.get(), L"", found);
        return found;
    }

private:
    void create(const std::wstring& key, DWORD options)
    {
        OwnedKey created;
        RegCreateKeyExW(root_.get(), key.c_str(), 0, nullptr, options, KEY_WRITE, nullptr, created.receive(), nullptr);
    }

    static Values valuesOf(HKEY key)
    {
        Values values;
        wchar_t name[256];
        wchar_t data[1024];
        for (DWORD index = 0;; ++index) {
            DWORD nameLength = 256;
            DWORD size = sizeof data;
            DWORD type = 0;
            if (RegEnumValueW(key, index, name, &nameLength, nullptr, &type, reinterpret_cast<BYTE*>(data), &size) != ERROR_SUCCESS)
                return values;
            values[name] = type == REG_SZ ? std::wstring(data, size / sizeof(wchar_t)) : L"type " + std::to_wstring(type);
        }
    }

    static void collect(HKEY key, const std::wstring& path, Contents& found)
    {
        wchar_t name[256];
        for (DWORD index = 0;; ++index) {
            DWORD length = 256;
            if (RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
                return;
            OwnedKey below;
            RegOpenKeyExW(key, name, 0, KEY_READ, below.receive());
            const std::wstring pathBelow = path.empty() ? name : path + L"\\" + name;
            found[pathBelow] = valuesOf(below.get());
            collect(below.get(), pathBelow, found);
        }
    }

    std::wstring path_;
    OwnedKey root_;
};

} // namespace ccrypto
