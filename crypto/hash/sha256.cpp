#include "core/base/algorithm.h"
#include "crypto/hash/block_hash.h"
#include "crypto/hash/hash_variants.h"
#include "crypto/hash/sha2_constants.h"
#include "crypto/hash/sha2_rounds.h"

#include <array>

namespace ccrypto {

namespace {

using Word = std::uint32_t;

// FIPS 180-4, 4.1.2. Turns within turns copy the word once, not three times.
struct Sigmas {
    static Word upper0(Word x) { return std::rotr(x ^ std::rotr(x ^ std::rotr(x, 9), 11), 2); }
    static Word upper1(Word x) { return std::rotr(x ^ std::rotr(x ^ std::rotr(x, 14), 5), 6); }
    static Word lower0(Word x) { return std::rotr(x, 7) ^ std::rotr(x, 18) ^ (x >> 3); }
    static Word lower1(Word x) { return std::rotr(x, 17) ^ std::rotr(x, 19) ^ (x >> 10); }
};

void Compress(Word* state, const std::uint8_t* blocks, std::size_t count)
{
    SHA2Rounds<Word, 64, Sigmas>::Compress(state, blocks, count, sha256Constants);
}

constexpr std::array<Variant<CompressBlocks<Word>>, 2> variants = {{
    {"portable", cpu::none, Compress},
    {"shani", cpu::shaNi, CompressSHA256WithShaNi},
}};

CompressBlocks<Word> ChosenCompress()
{
    static const auto& chosen = ChooseVariant<CompressBlocks<Word>>(variants);
    return chosen.calls;
}

} // namespace

std::span<const Variant<CompressBlocks<Word>>> SHA256Variants()
{
    return variants;
}

constinit const BlockHashKind<Word> sha224Kind = {
    .name = "SHA-224",
    .id = algorithm::sha224,
    .digestSize = 28,
    .order = std::endian::big,
    .initial = {0xC1059ED8, 0x367CD507, 0x3070DD17, 0xF70E5939, 0xFFC00B31, 0x68581511, 0x64F98FA7, 0xBEFA4FA4},
    .compress = ChosenCompress,
};

constinit const BlockHashKind<Word> sha256Kind = {
    .name = "SHA-256",
    .id = algorithm::sha256,
    .digestSize = 32,
    .order = std::endian::big,
    .initial = {0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A, 0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19},
    .compress = ChosenCompress,
};

} // namespace ccrypto
