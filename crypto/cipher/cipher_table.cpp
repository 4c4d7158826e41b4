#include "core/base/algorithm.h"
#include "core/base/ascii.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/cipher/aes.h"
#include "crypto/cipher/block_modes.h"
#include "crypto/cipher/des.h"
#include "crypto/cipher/gcm.h"
#include "crypto/cipher/rc2.h"
#include "crypto/cipher/rc4.h"

#include <algorithm>
#include <array>

using namespace ccrypto;

namespace {

using MakeCipher = std::unique_ptr<ICryptoCipher> (*)(const CipherDescription& description);

struct CipherRow {
    CipherDescription description;
    MakeCipher make;
};

template <typename Cipher, bool chained>
std::unique_ptr<ICryptoCipher> WholeBlocks(const CipherDescription& description)
{
    return std::make_unique<WholeBlockMode>(description, std::make_unique<Cipher>(), chained);
}

template <typename Cipher, StreamKind kind>
std::unique_ptr<ICryptoCipher> Stream(const CipherDescription& description)
{
    return std::make_unique<StreamMode>(description, std::make_unique<Cipher>(), kind);
}

std::unique_ptr<ICryptoCipher> Galois(const CipherDescription& description)
{
    return std::make_unique<CCryptoGCM>(description.name, description.id, description.keySize);
}

std::unique_ptr<ICryptoCipher> OldStream(const CipherDescription& description)
{
    return std::make_unique<CCryptoRC4>(description.name, description.id);
}

template <typename Cipher>
constexpr MakeCipher ecb = WholeBlocks<Cipher, false>;
template <typename Cipher>
constexpr MakeCipher cbc = WholeBlocks<Cipher, true>;
template <typename Cipher>
constexpr MakeCipher ofb = Stream<Cipher, StreamKind::outputFeedback>;
template <typename Cipher>
constexpr MakeCipher cfb = Stream<Cipher, StreamKind::cipherFeedback>;
template <typename Cipher>
constexpr MakeCipher ctr = Stream<Cipher, StreamKind::counter>;

constexpr CipherRow rows[] = {
    {{"aes-128-ecb", algorithm::aes128Ecb, 16, 16, 16}, ecb<CCryptoAES>},
    {{"aes-128-cbc", algorithm::aes128Cbc, 16, 16, 16}, cbc<CCryptoAES>},
    {{"aes-128-ofb", algorithm::aes128Ofb, 16, 16, 16}, ofb<CCryptoAES>},
    {{"aes-128-cfb", algorithm::aes128Cfb, 16, 16, 16}, cfb<CCryptoAES>},
    {{"aes-128-ctr", algorithm::none, 16, 16, 16}, ctr<CCryptoAES>},
    {{"aes-128-gcm", algorithm::aes128Gcm, 16, 16, 16}, Galois},
    {{"aes-192-ecb", algorithm::aes192Ecb, 24, 24, 24}, ecb<CCryptoAES>},
    {{"aes-192-cbc", algorithm::aes192Cbc, 24, 24, 24}, cbc<CCryptoAES>},
    {{"aes-192-ofb", algorithm::aes192Ofb, 24, 24, 24}, ofb<CCryptoAES>},
    {{"aes-192-cfb", algorithm::aes192Cfb, 24, 24, 24}, cfb<CCryptoAES>},
    {{"aes-192-ctr", algorithm::none, 24, 24, 24}, ctr<CCryptoAES>},
    {{"aes-192-gcm", algorithm::aes192Gcm, 24, 24, 24}, Galois},
    {{"aes-256-ecb", algorithm::aes256Ecb, 32, 32, 32}, ecb<CCryptoAES>},
    {{"aes-256-cbc", algorithm::aes256Cbc, 32, 32, 32}, cbc<CCryptoAES>},
    {{"aes-256-ofb", algorithm::aes256Ofb, 32, 32, 32}, ofb<CCryptoAES>},
    {{"aes-256-cfb", algorithm::aes256Cfb, 32, 32, 32}, cfb<CCryptoAES>},
    {{"aes-256-ctr", algorithm::none, 32, 32, 32}, ctr<CCryptoAES>},
    {{"aes-256-gcm", algorithm::aes256Gcm, 32, 32, 32}, Galois},
    {{"des-ecb", algorithm::none, 8, 8, 8}, ecb<CCryptoDES>},
    {{"des-cbc", algorithm::none, 8, 8, 8}, cbc<CCryptoDES>},
    {{"des-ofb", algorithm::none, 8, 8, 8}, ofb<CCryptoDES>},
    {{"des-cfb", algorithm::none, 8, 8, 8}, cfb<CCryptoDES>},
    {{"des-ede-ecb", algorithm::none, 16, 16, 16}, ecb<CCryptoDES>},
    {{"des-ede-cbc", algorithm::none, 16, 16, 16}, cbc<CCryptoDES>},
    {{"des-ede-ofb", algorithm::none, 16, 16, 16}, ofb<CCryptoDES>},
    {{"des-ede-cfb", algorithm::none, 16, 16, 16}, cfb<CCryptoDES>},
    {{"des-ede3-ecb", algorithm::none, 24, 16, 24}, ecb<CCryptoDES>},
    {{"des-ede3-cbc", algorithm::tripleDesCbc, 24, 16, 24}, cbc<CCryptoDES>},
    {{"des-ede3-ofb", algorithm::none, 24, 16, 24}, ofb<CCryptoDES>},
    {{"des-ede3-cfb", algorithm::none, 24, 16, 24}, cfb<CCryptoDES>},
    {{"rc2-ecb", algorithm::none, 16, 1, 128}, ecb<CCryptoRC2>},
    {{"rc2-cbc", algorithm::rc2Cbc, 16, 1, 128}, cbc<CCryptoRC2>},
    {{"rc2-ofb", algorithm::none, 16, 1, 128}, ofb<CCryptoRC2>},
    {{"rc2-cfb", algorithm::none, 16, 1, 128}, cfb<CCryptoRC2>},
    {{"rc4", algorithm::rc4, 16, 1, 256}, OldStream},
};

constexpr auto names = [] {
    std::array<const char*, std::size(rows)> all{};
    std::ranges::transform(rows, all.begin(), [](const CipherRow& row) { return row.description.name; });
    return all;
}();

} // namespace

std::unique_ptr<ICryptoCipher> ICryptoCipher::Create(algorithm::Id id)
{
    CCryptoAutoLogger logger("ICryptoCipher::Create");

    const auto* const found = std::ranges::find_if(rows, [id](const CipherRow& row) { return row.description.id == id; });
    if (id == algorithm::none || found == std::end(rows))
        return logger.fail(std::unique_ptr<ICryptoCipher>(), "Unsupported cipher: %d", static_cast<int>(id));
    return logger.succeed(found->make(found->description));
}

std::unique_ptr<ICryptoCipher> ICryptoCipher::CreateByName(std::string_view name)
{
    CCryptoAutoLogger logger("ICryptoCipher::CreateByName");

    const auto* const found =
        std::ranges::find_if(rows, [name](const CipherRow& row) { return SameInAnyCase(row.description.name, name); });
    if (found == std::end(rows))
        return logger.fail(std::unique_ptr<ICryptoCipher>(), "Unsupported cipher name");
    return logger.succeed(found->make(found->description));
}

std::span<const char* const> ICryptoCipher::Names()
{
    return names;
}
