#pragma once

#include "core/base/algorithm.h"

#include <cstdint>
#include <span>
#include <string_view>

struct AlgorithmRow {
    std::uint32_t id;
    const char* oid; ///< dotted; empty for a reserved id
};

/// Every algorithm, in the order of look-up.
std::span<const AlgorithmRow> AlgorithmTable();

/// The id of the first row of exactly this dotted text; 0 for none and for empty text.
std::uint32_t AlgorithmOfOid(std::string_view oid);

/// Empty for an id that the table does not have.
const char* OidOfAlgorithm(std::uint32_t id);
