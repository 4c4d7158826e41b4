#pragma once

#include "crypto/hash/block_hash.h"

#include <cstdint>
#include <string_view>

/// Calls `use` with the BlockHashKind of an id of the algorithm table. \return what `use` returns; `otherwise` for an id that is
/// none of them.
template <typename Result, typename Use>
Result WithHashKind(std::uint32_t id, Result otherwise, const Use& use)
{
    for (const auto* kind : {&md5Kind, &sha1Kind, &sha224Kind, &sha256Kind})
        if (kind->id == id)
            return use(*kind);
    for (const auto* kind : {&sha384Kind, &sha512Kind})
        if (kind->id == id)
            return use(*kind);
    return otherwise;
}
