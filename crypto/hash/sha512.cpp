#include "core/base/algorithm.h"
#include "crypto/hash/block_hash.h"
#include "crypto/hash/hash_variants.h"
#include "crypto/hash/sha2_constants.h"
#include "crypto/hash/sha2_rounds.h"

#include <array>

namespace ccrypto {

namespace {

using Word = std::uint64_t;

// FIPS 180-4, 4.1.3. Turns within turns copy the word once, not three times.
struct Sigmas {
    static Word upper0(Word x) { return std::rotr(x ^ std::rotr(x ^ std::rotr(x, 5), 6), 28); }
    static Word upper1(Word x) { return std::rotr(x ^ std::rotr(x ^ std::rotr(x, 23), 4), 14); }
    static Word lower0(Word x) { return std::rotr(x, 1) ^ std::rotr(x, 8) ^ (x >> 7); }
    static Word lower1(Word x) { return std::rotr(x, 19) ^ std::rotr(x, 61) ^ (x >> 6); }
};

void Compress(Word* state, const std::uint8_t* blocks, std::size_t count)
{
    SHA2Rounds<Word, 80, Sigmas>::Compress(state, blocks, count, sha512Constants);
}

constexpr std::array<Variant<CompressBlocks<Word>>, 3> variants = {{
    {"portable", cpu::none, Compress},
    {"avx2", cpu::avx2, CompressSHA512WithAvx2},
    {"avx512", cpu::avx2 | cpu::avx512, CompressSHA512WithAvx512},
}};

CompressBlocks<Word> ChosenCompress()
{
    static const auto& chosen = ChooseVariant<CompressBlocks<Word>>(variants);
    return chosen.calls;
}

} // namespace

std::span<const Variant<CompressBlocks<Word>>> SHA512Variants()
{
    return variants;
}

constinit const BlockHashKind<Word> sha384Kind = {
    .name = "SHA-384",
    .id = algorithm::sha384,
    .digestSize = 48,
    .order = std::endian::big,
    .initial = {0xCBBB9D5DC1059ED8, 0x629A292A367CD507, 0x9159015A3070DD17, 0x152FECD8F70E5939, 0x67332667FFC00B31,
                0x8EB44A8768581511, 0xDB0C2E0D64F98FA7, 0x47B5481DBEFA4FA4},
    .compress = ChosenCompress,
};

constinit const BlockHashKind<Word> sha512Kind = {
    .name = "SHA-512",
    .id = algorithm::sha512,
    .digestSize = 64,
    .order = std::endian::big,
    .initial = {0x6A09E667F3BCC908, 0xBB67AE8584CAA73B, 0x3C6EF372FE94F82B, 0xA54FF53A5F1D36F1, 0x510E527FADE682D1,
                0x9B05688C2B3E6C1F, 0x1F83D9ABFB41BD6B, 0x5BE0CD19137E2179},
    .compress = ChosenCompress,
};

} // namespace ccrypto
