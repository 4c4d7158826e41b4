#include "core/base/algorithm.h"
#include "crypto/cipher/aes.h"
#include "crypto/cipher/des.h"
#include "crypto/cipher/gcm.h"
#include "tools/cryptotool/commands/speed/speed_row.h"

#include <array>
#include <memory>

namespace ccrypto {

namespace {

using BlockCipher = std::shared_ptr<ICryptoBlockCipher>;
using Bytes = std::vector<std::uint8_t>;

/// A way to use a block cipher.
struct Mode {
    const char* name;
    void (*run)(const ICryptoBlockCipher& cipher, std::uint8_t* bytes, std::size_t blocks, std::uint8_t* chain);
};

constexpr Mode cbcEncrypt = {"-CBC encrypt", [](const ICryptoBlockCipher& cipher, std::uint8_t* bytes, std::size_t blocks,
                                                std::uint8_t* chain) { cipher.encryptCbc(bytes, bytes, blocks, chain); }};
constexpr Mode cbcDecrypt = {"-CBC decrypt", [](const ICryptoBlockCipher& cipher, std::uint8_t* bytes, std::size_t blocks,
                                                std::uint8_t* chain) { cipher.decryptCbc(bytes, bytes, blocks, chain); }};
constexpr Mode counter = {"-CTR", [](const ICryptoBlockCipher& cipher, std::uint8_t* bytes, std::size_t blocks,
                                     std::uint8_t* chain) { cipher.applyCounter(bytes, bytes, blocks, chain); }};

/// The key is set before the measurement.
SpeedRow::Call PrepareBlocks(const BlockCipher& cipher, const Mode& mode, std::size_t keySize, std::size_t size)
{
    if (!cipher->setKey(Bytes(keySize, 0x5A)))
        return {};
    return [cipher, run = mode.run, bytes = Bytes(size), chain = Bytes(maxCipherBlock),
            blocks = size / cipher->blockSize()]() mutable { run(*cipher, bytes.data(), blocks, chain.data()); };
}

template <typename Cipher, typename Calls>
void AddBlockCipher(SpeedRows& rows, const std::string& name, const Mode& mode, std::size_t keySize,
                    std::span<const Variant<Calls>> variants)
{
    ForEachUsable(variants, [&](const Variant<Calls>& variant, bool isUsed) {
        rows.push_back({name + mode.name, variant.name, isUsed, true, [&variant, &mode, keySize](std::size_t size) {
                            return PrepareBlocks(std::make_shared<Cipher>(variant), mode, keySize, size);
                        }});
    });
}

/// A text from the setting of the key to the end, as for every message that has a key of its own.
SpeedRow::Call PrepareText(const std::shared_ptr<ICryptoCipher>& cipher, std::size_t size)
{
    return [cipher, key = Bytes(cipher->keySize(), 0x5A), iv = Bytes(cipher->ivSize()), in = Bytes(size),
            out = Bytes(size + CCryptoGCM::maxTag)]() mutable {
        std::size_t written = 0;
        static_cast<void>(cipher->start(CipherDirection::encrypt, key, iv) && cipher->update(in, out.data(), written) &&
                          cipher->final(out.data() + written, written));
    };
}

void AddGcm(SpeedRows& rows, const char* shown, const char* name, algorithm::Id id, std::size_t keySize)
{
    ForEachUsable(gcm::Variants(), [&](const Variant<gcm::Calls>& variant, bool isUsed) {
        rows.push_back({shown, variant.name, isUsed, true, [&variant, name, id, keySize](std::size_t size) {
                            return PrepareText(std::make_shared<CCryptoGCM>(name, id, keySize, variant), size);
                        }});
    });
}

} // namespace

void AddCipherRows(SpeedRows& rows)
{
    for (const std::size_t keySize : std::initializer_list<std::size_t>{16, 32}) {
        const std::string name = "AES-" + std::to_string(keySize * 8);
        for (const Mode* const mode : {&cbcEncrypt, &cbcDecrypt, &counter})
            AddBlockCipher<CCryptoAES>(rows, name, *mode, keySize, aes::Variants());
    }
    AddGcm(rows, "AES-128-GCM", "aes-128-gcm", algorithm::aes128Gcm, 16);
    AddGcm(rows, "AES-256-GCM", "aes-256-gcm", algorithm::aes256Gcm, 32);
    for (const Mode* const mode : {&cbcEncrypt, &cbcDecrypt})
        AddBlockCipher<CCryptoDES>(rows, "3DES", *mode, 24, des::Variants());
    rows.push_back({"RC4", "portable", true, true,
                    [](std::size_t size) -> SpeedRow::Call { return PrepareText(ICryptoCipher::Create(algorithm::rc4), size); }});
}

} // namespace ccrypto
