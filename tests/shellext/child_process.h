#pragma once

#include <string>
#include <vector>

namespace ccrypto {

/// What a program that has ended left behind.
struct ChildResult {
    unsigned long exitCode = 0;
    std::string output; ///< standard output and standard error
};

/// Runs a program of this build, `name` without its extension, until it ends.
ChildResult RunProgram(const std::wstring& name, const std::vector<std::wstring>& arguments);

} // namespace ccrypto
