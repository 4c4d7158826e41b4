#include "crypto/hash/hash.h"
#include "crypto/hash/shake.h"
#include "fuzz/require.h"

#include <algorithm>
#include <span>
#include <vector>

using namespace ccrypto;

namespace {

using Bytes = std::span<const std::uint8_t>;

/// Gives the bytes to `take` in pieces as long as `lengths` says, and again from its beginning.
template <typename Take>
void InPieces(Bytes bytes, Bytes lengths, const Take& take)
{
    for (std::size_t i = 0; !bytes.empty(); ++i) {
        const std::size_t wanted = lengths[i % lengths.size()] % 200 + std::size_t{1};
        const std::size_t count = std::min(wanted, bytes.size());
        take(bytes.first(count));
        bytes = bytes.subspan(count);
    }
}

} // namespace

/// The lengths of four pieces, then a message: digests and outputs do not depend on the pieces.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t pieces = 4;
    if (size < pieces)
        return 0;
    const Bytes lengths(data, pieces);
    const Bytes message(data + pieces, size - pieces);
    for (const char* const name : {"sha3-224", "sha3-256", "sha3-384", "sha3-512"}) {
        const auto hash = ICryptoHash::CreateByName(name);
        const element whole = hash->digestOf(message);
        InPieces(message, lengths, [&](Bytes piece) { hash->update(piece); });
        const auto copy = hash->clone();
        Require(hash->final() == whole && copy->final() == whole);
    }
    for (const auto kind : {CCryptoSHAKE::Kind::shake128, CCryptoSHAKE::Kind::shake256}) {
        CCryptoSHAKE shake(kind);
        const element whole = shake.outputOf(message, 500);
        InPieces(message, lengths, [&](Bytes piece) { shake.update(piece); });
        std::vector<std::uint8_t> output;
        InPieces(whole.bytes(), lengths, [&](Bytes piece) {
            std::vector<std::uint8_t> next(piece.size());
            shake.squeeze(next);
            output.insert(output.end(), next.begin(), next.end());
        });
        Require(std::ranges::equal(output, whole.bytes()));
    }
    return 0;
}
