#include "crypto/cipher/aes.h"

#include "core/diagnostics/auto_logger.h"

using namespace ccrypto;

namespace ccrypto {

std::span<const Variant<aes::Calls>> aes::Variants()
{
    static const Variant<Calls> variants[] = {
        {"portable", cpu::none, bitslicedCalls},
        {"aesni", cpu::aesNi, aesniCalls},
        {"vaes", cpu::vaes | cpu::aesNi | cpu::avx2, vaesCalls},
    };
    return variants;
}

} // namespace ccrypto

CCryptoAES::CCryptoAES()
{
    static const Variant<aes::Calls>& chosen = ChooseVariant(aes::Variants());
    calls_ = &chosen.calls;
}

bool CCryptoAES::setKey(std::span<const std::uint8_t> key)
{
    CCryptoAutoLogger logger("CCryptoAES::setKey");

    if (key.size() != 16 && key.size() != 24 && key.size() != 32) {
        clearKey();
        return logger.fail(false, "AES has no keys of %zu bytes", key.size());
    }
    calls_->expandKey(key_, key.data(), key.size());
    return logger.setResult(true);
}

void CCryptoAES::encrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const
{
    calls_->encrypt(key_, out, in, blocks);
}

void CCryptoAES::decrypt(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks) const
{
    calls_->decrypt(key_, out, in, blocks);
}

void CCryptoAES::encryptCbc(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain) const
{
    if (calls_->encryptCbc == nullptr)
        ICryptoBlockCipher::encryptCbc(out, in, blocks, chain);
    else
        calls_->encryptCbc(key_, out, in, blocks, chain);
}

void CCryptoAES::decryptCbc(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* chain) const
{
    if (calls_->decryptCbc == nullptr)
        ICryptoBlockCipher::decryptCbc(out, in, blocks, chain);
    else
        calls_->decryptCbc(key_, out, in, blocks, chain);
}

void CCryptoAES::applyCounter(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks, std::uint8_t* counter) const
{
    if (calls_->applyCounter == nullptr)
        ICryptoBlockCipher::applyCounter(out, in, blocks, counter);
    else
        calls_->applyCounter(key_, out, in, blocks, counter);
}
