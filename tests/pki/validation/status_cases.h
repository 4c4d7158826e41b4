#pragma once

#include "tests/pki/validation/test_world.h"

#include <gtest/gtest.h>

#include <string>

namespace ccrypto {

/// The verdict over StatusWorld() with what each case adds, as Summary() words it.
class StatusCases : public ::testing::TestWithParam<WorldCase> {};

[[nodiscard]] std::string NameOfStatusCase(const ::testing::TestParamInfo<WorldCase>& instance);

/// Root, Sub with the serial number 5 and Leaf with 7, and the list of Root. Every status is required.
[[nodiscard]] TestWorld StatusWorld();

} // namespace ccrypto
