#include "core/base/algorithm.h"
#include "crypto/hash/block_hash.h"
#include "crypto/kdf/key_derivation.h"
#include "crypto/random/random.h"
#include "tools/cryptotool/commands/speed/speed_row.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace ccrypto {

namespace {

/// Hashes a message that leaves room for the padding in its last block.
template <typename Word>
void HashOnce(const BlockHashKind<Word>& kind, CompressBlocks<Word> compress, std::span<const std::uint8_t> message)
{
    std::array<Word, 8> state;
    std::ranges::copy(kind.initial, state.begin());
    const std::size_t blocks = message.size() / kind.blockSize;
    compress(state.data(), message.data(), blocks);
    const auto rest = message.subspan(blocks * kind.blockSize);
    std::array<std::uint8_t, maxHashBlockSize> last{};
    std::ranges::copy(rest, last.begin());
    last[rest.size()] = 0x80;
    kind.storeLength(last.data(), message.size());
    compress(state.data(), last.data(), 1);
    std::array<std::uint8_t, maxDigestSize> digest;
    kind.storeWords(digest.data(), state.data(), kind.digestWords());
}

template <typename Word>
void AddHash(SpeedRows& rows, const BlockHashKind<Word>& kind, std::span<const Variant<CompressBlocks<Word>>> variants)
{
    ForEachUsable(variants, [&](const Variant<CompressBlocks<Word>>& variant, bool isUsed) {
        rows.push_back(
            {kind.name, variant.name, isUsed, true, [&kind, compress = variant.calls](std::size_t size) -> SpeedRow::Call {
                 return [&kind, compress, message = std::vector<std::uint8_t>(size, 0x5A)] { HashOnce(kind, compress, message); };
             }});
    });
}

SpeedRow::Call PrepareRandom(std::size_t size)
{
    return [bytes = std::vector<std::uint8_t>(size)]() mutable { static_cast<void>(ICryptoRandom::Instance().generate(bytes)); };
}

SpeedRow::Call PreparePbkdf2(std::size_t)
{
    return [] {
        constexpr std::array<std::uint8_t, 8> text{};
        static_cast<void>(CCryptoKeyDerivation::PBKDF2(algorithm::sha256, text, text, 10000, 32));
    };
}

} // namespace

void AddHashRows(SpeedRows& rows)
{
    AddHash(rows, md4Kind, MD4Variants());
    AddHash(rows, md5Kind, MD5Variants());
    AddHash(rows, sha1Kind, SHA1Variants());
    AddHash(rows, sha256Kind, SHA256Variants());
    AddHash(rows, sha512Kind, SHA512Variants());
    const char* const sha256 = ChooseVariant<CompressBlocks<std::uint32_t>>(SHA256Variants()).name;
    rows.push_back({"HMAC_DRBG", sha256, true, true, PrepareRandom});
    rows.push_back({"PBKDF2-SHA-256 of 10000", sha256, true, false, PreparePbkdf2});
}

} // namespace ccrypto
