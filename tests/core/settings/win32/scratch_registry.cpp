#include "tests/core/settings/scratch_registry.h"

#include <windows.h>

#include <stdexcept>
#include <string>

using namespace ccrypto;

namespace {

std::string root;

void Redirect(HKEY hive, const char* name)
{
    HKEY key = nullptr;
    if (RegCreateKeyA(HKEY_CURRENT_USER, (root + name).c_str(), &key) != ERROR_SUCCESS ||
        RegOverridePredefKey(hive, key) != ERROR_SUCCESS)
        throw std::runtime_error("the hives cannot be redirected");
    RegCloseKey(key);
}

} // namespace

namespace ccrypto {

ScratchRegistry::ScratchRegistry()
{
    root = "Software\\core_tests_" + std::to_string(GetCurrentProcessId());
    // The user's hive comes last: the keys of both are made in it.
    Redirect(HKEY_LOCAL_MACHINE, "\\machine");
    Redirect(HKEY_CURRENT_USER, "\\user");
}

ScratchRegistry::~ScratchRegistry()
{
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegDeleteTreeA(HKEY_CURRENT_USER, root.c_str());
}

} // namespace ccrypto
