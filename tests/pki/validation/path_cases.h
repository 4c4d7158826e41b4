#pragma once

#include "tests/pki/validation/test_world.h"

#include <gtest/gtest.h>

#include <string>

namespace ccrypto {

using World = TestWorld;
using Cert = TestCertificate;

/// The verdict over each world, as Summary() words it. The tables stand in the path_*_test.cpp, one for each subject.
class PathCases : public ::testing::TestWithParam<WorldCase> {};

[[nodiscard]] std::string NameOfCase(const ::testing::TestParamInfo<WorldCase>& instance);

/// Root, Sub and Leaf.
void Chain(World& world);

/// Root, Sub and Leaf with what a case adds to each.
void ChainOf(World& world, const World::ChangeCertificate& root, const World::ChangeCertificate& sub,
             const World::ChangeCertificate& leaf);
void Unchanged(Cert& certificate);

void FlipLast(Bytes& der);

} // namespace ccrypto
