#pragma once

#include "core/base/algorithm.h"
#include "crypto/hash/block_hash.h"

#include <cstdint>
#include <memory>

namespace ccrypto::internal {

/// SHA-3 or SHAKE. \return null for an id of neither.
[[nodiscard]] std::unique_ptr<ICryptoHash> NewSpongeHash(algorithm::Id id);

/// Whether keys are derived with this hash: one function with digests of one length.
[[nodiscard]] inline bool IsHashForKeys(const ICryptoHash& hash)
{
    return !hash.isExtendable() && hash.algorithmId() != algorithm::md5Sha1;
}

} // namespace ccrypto::internal

namespace ccrypto {

/// Calls `use` with the BlockHashKind of an id. \return what `use` returns; `otherwise` for any other id.
template <typename Result, typename Use>
Result WithHashKind(algorithm::Id id, Result otherwise, const Use& use)
{
    for (const auto* kind : {&md5Kind, &sha1Kind, &sha224Kind, &sha256Kind})
        if (kind->id == id)
            return use(*kind);
    for (const auto* kind : {&sha384Kind, &sha512Kind})
        if (kind->id == id)
            return use(*kind);
    return otherwise;
}

} // namespace ccrypto
