#pragma once

#include "core/base/algorithm.h"

#include <span>
#include <string_view>

namespace ccrypto {

struct AlgorithmRow {
    algorithm::Id id;
    const char* oid; ///< dotted; empty for a reserved id
};

/// The 70 algorithms of the fixed table, in the order of look-up.
[[nodiscard]] std::span<const AlgorithmRow> AlgorithmTable();

/// Further algorithms, which are looked up after the table: none of them shares an id or an OID with it.
[[nodiscard]] std::span<const AlgorithmRow> AlgorithmsBesideTable();

/// The id of the first row of exactly this dotted text; 0 for none and for empty text. hmacWithSHA1 is found by its OID of RFC
/// 8018, too, while OidOfAlgorithm() gives the table's.
[[nodiscard]] algorithm::Id AlgorithmOfOid(std::string_view oid);

/// Empty for an id that neither list has.
[[nodiscard]] const char* OidOfAlgorithm(algorithm::Id id);

} // namespace ccrypto
