#pragma once

#include "asn1/types/algorithm_identifier.h"
#include "core/base/algorithm.h"
#include "pki/keys/key_abilities.h"

#include <cstdint>
#include <optional>

namespace ccrypto {

/// What an RSA key is limited to by the algorithm id-RSASSA-PSS (RFC 4055, 3.1): signatures with PSS and, when the algorithm has
/// parameters, the hashes that they name and the shortest salt.
struct PssLimits {
    element algorithm;                        ///< the AlgorithmIdentifier as it was read, DER
    algorithm::Id hash = algorithm::none;     ///< none for any
    algorithm::Id maskHash = algorithm::none; ///< of MGF1; none for any
    std::int32_t minSaltLength = 0;           ///< bytes

    /// False, logged, for what the key must not be used for. A salt of any length is allowed: its length is known only when the
    /// signature was opened, and minSaltLength is then the verifier's to check.
    [[nodiscard]] bool allow(algorithm::Id signedHash, const SCryptoPadding& padding) const;
};

/// Whether the algorithm is id-RSASSA-PSS.
[[nodiscard]] bool IsPss(const CCryptoAlgorithmIdentifier& identifier);
/// \return empty, logged, for parameters that are not RSASSA-PSS-params, and for hashes and mask functions that are not supported.
[[nodiscard]] std::optional<PssLimits> ReadPssLimits(const CCryptoAlgorithmIdentifier& identifier);

} // namespace ccrypto
