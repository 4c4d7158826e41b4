#include "crypto/password_encryption.h"

#include "asn1/algorithm_table.h"
#include "core/auto_logger.h"
#include "crypto/cipher.h"
#include "crypto/key_derivation.h"
#include "crypto/password_objects.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace {

constexpr std::uint32_t saltLength = 16;
constexpr std::uint32_t desBlock = 8;
constexpr std::uint32_t tripleDesKey = 24;

std::span<const std::uint8_t> Octets(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// What a PKCS#12 scheme derives and enciphers with.
struct PKCS12Scheme {
    std::uint32_t id;
    std::uint32_t cipher;
    std::uint32_t keyLength;
    std::uint32_t ivLength;
};

constexpr PKCS12Scheme pkcs12Schemes[] = {
    {algorithm::pkcs12Sha1Rc4_128, algorithm::rc4, 16, 0},
    {algorithm::pkcs12Sha1Rc4_40, algorithm::rc4, 5, 0},
    {algorithm::pkcs12Sha1TripleDes3Key, algorithm::tripleDesCbc, tripleDesKey, desBlock},
    {algorithm::pkcs12Sha1TripleDes2Key, algorithm::tripleDesCbc, 16, desBlock},
    {algorithm::pkcs12Sha1Rc2_128, algorithm::rc2Cbc, 16, desBlock},
    {algorithm::pkcs12Sha1Rc2_40, algorithm::rc2Cbc, 5, desBlock},
};

const PKCS12Scheme* FindPKCS12Scheme(std::uint32_t id)
{
    const auto* found = std::ranges::find(pkcs12Schemes, id, &PKCS12Scheme::id);
    return found != std::end(pkcs12Schemes) ? found : nullptr;
}

/// A cipher with its key and its initialisation vector.
struct Keyed {
    std::uint32_t cipher = algorithm::none;
    std::uint32_t effectiveBits = 0;
    element key;
    element iv;
};

bool DerivePKCS12(const PKCS12Scheme& scheme, std::string_view password, const element& salt, std::uint32_t iterations,
                  Keyed& keyed)
{
    const element units = CCryptoKeyDerivation::PKCS12Password(password);
    if (units.isEmpty())
        return false;
    const auto derive = [&](CCryptoKeyDerivation::PKCS12Use use, std::uint32_t length) {
        return CCryptoKeyDerivation::PKCS12(algorithm::sha1, use, units.bytes(), salt.bytes(), iterations, length);
    };
    keyed.cipher = scheme.cipher;
    keyed.key = derive(CCryptoKeyDerivation::PKCS12Use::key, scheme.keyLength);
    if (scheme.ivLength != 0)
        keyed.iv = derive(CCryptoKeyDerivation::PKCS12Use::initializationVector, scheme.ivLength);
    if (keyed.key.isEmpty() || keyed.iv.length() != scheme.ivLength)
        return false;
    // Two keys are three of which the last is the first.
    if (scheme.id == algorithm::pkcs12Sha1TripleDes2Key) {
        const element first(keyed.key.data(), desBlock);
        keyed.key.append(first.data(), first.length());
    }
    return true;
}

struct CipherKey {
    std::uint32_t cipher;
    std::uint32_t keyLength;
    std::uint32_t ivLength;
};

constexpr CipherKey pbes2Ciphers[] = {
    {algorithm::aes128Cbc, 16, 16},
    {algorithm::aes192Cbc, 24, 16},
    {algorithm::aes256Cbc, 32, 16},
    {algorithm::tripleDesCbc, tripleDesKey, desBlock},
};

const CipherKey* FindPBES2Cipher(std::uint32_t id)
{
    const auto* found = std::ranges::find(pbes2Ciphers, id, &CipherKey::cipher);
    return found != std::end(pbes2Ciphers) ? found : nullptr;
}

/// Key length and effective bits that the description of the cipher asks for. \return false, logged, when it makes no sense.
bool CheckCipher(CCryptoAutoLogger& logger, const CCryptoPBES2Parameters& parameters, Keyed& keyed, std::uint32_t& keyLength)
{
    const CipherKey* cipher = FindPBES2Cipher(parameters.cipher);
    keyed.cipher = parameters.cipher;
    keyed.iv = parameters.iv;
    if (cipher != nullptr) {
        keyLength = cipher->keyLength;
        if ((parameters.keyLength != 0 && parameters.keyLength != keyLength) || keyed.iv.length() != cipher->ivLength)
            return logger.setRetValue(3, false, "The key length or the initialisation vector is not the cipher's");
        return true;
    }
    if (parameters.cipher != algorithm::rc2Cbc)
        return logger.setRetValue(3, false, "Unsupported cipher: %u", parameters.cipher);
    keyLength = parameters.keyLength != 0 ? parameters.keyLength : 16;
    keyed.effectiveBits = parameters.rc2EffectiveBits;
    if (keyLength > 128 || keyed.iv.length() != desBlock || keyed.effectiveBits == 0)
        return logger.setRetValue(3, false, "The parameters of RC2 make no sense");
    return true;
}

bool DerivePBES2(CCryptoAutoLogger& logger, const elementNode* node, std::string_view password, Keyed& keyed)
{
    CCryptoPBES2Parameters plain;
    CCryptoPBES2Parameters rc2(CCryptoPBES2Parameters::Form::rc2);
    const bool isPlain = plain.Parse(node);
    if (!isPlain && !rc2.Parse(node))
        return logger.setRetValue(3, false, "The parameters of PBES2 are not understood");
    const CCryptoPBES2Parameters& parameters = isPlain ? plain : rc2;
    std::uint32_t keyLength = 0;
    if (!CheckCipher(logger, parameters, keyed, keyLength))
        return false;
    keyed.key =
        CCryptoKeyDerivation::PBKDF2(parameters.prf, Octets(password), parameters.salt.bytes(), parameters.iterations, keyLength);
    return !keyed.key.isEmpty() || logger.setRetValue(3, false, "No key can be derived so");
}

/// Cipher, key and initialisation vector that `how` and the password give. \return false, logged.
bool Derive(CCryptoAutoLogger& logger, const CCryptoAlgorithmIdentifier& how, std::string_view password, Keyed& keyed)
{
    if (how.id() == algorithm::pbes2)
        return DerivePBES2(logger, how.parameters(), password, keyed);
    const PKCS12Scheme* scheme = FindPKCS12Scheme(how.id());
    if (scheme == nullptr)
        return logger.setRetValue(3, false, "Unsupported password based encryption: %u", how.id());
    CCryptoPKCS12Parameters parameters;
    if (!parameters.Parse(how.parameters()))
        return logger.setRetValue(3, false, "The parameters of the encryption are not understood");
    return DerivePKCS12(*scheme, password, parameters.salt, parameters.iterations, keyed) ||
           logger.setRetValue(3, false, "No key can be derived so");
}

std::unique_ptr<ICryptoCipher> CipherOf(const Keyed& keyed)
{
    std::unique_ptr<ICryptoCipher> cipher = ICryptoCipher::Create(keyed.cipher);
    if (cipher != nullptr && keyed.effectiveBits != 0 && !cipher->setEffectiveKeyBits(keyed.effectiveBits))
        return nullptr;
    return cipher;
}

bool FreshBytes(ICryptoRandom& random, std::uint32_t length, element& bytes)
{
    bytes = {};
    bytes.resize(length);
    return random.generate({bytes.data(), bytes.length()});
}

/// Fills the parameters of `how` for a new text.
bool Describe(CCryptoAutoLogger& logger, const SCryptoPasswordEncryption& wanted, ICryptoRandom& random,
              CCryptoAlgorithmIdentifier& how)
{
    element salt;
    ElementNodePtr tree;
    if (wanted.scheme == algorithm::pbes2) {
        const CipherKey* cipher = FindPBES2Cipher(wanted.cipher);
        if (cipher == nullptr)
            return logger.setRetValue(3, false, "Unsupported cipher: %u", wanted.cipher);
        CCryptoPBES2Parameters parameters;
        parameters.cipher = wanted.cipher;
        parameters.prf = wanted.prf;
        parameters.iterations = wanted.iterations;
        if (!FreshBytes(random, saltLength, parameters.salt) || !FreshBytes(random, cipher->ivLength, parameters.iv))
            return logger.setRetValue(3, false, "There are no random bytes");
        tree = parameters.BuildTree();
    } else {
        CCryptoPKCS12Parameters parameters;
        parameters.iterations = wanted.iterations;
        if (!FreshBytes(random, saltLength, parameters.salt))
            return logger.setRetValue(3, false, "There are no random bytes");
        tree = parameters.BuildTree();
    }
    how.setId(wanted.scheme);
    how.setNullParameters(false);
    how.setParameters(tree.get());
    return tree != nullptr || logger.setRetValue(3, false, "The encryption cannot be described");
}

} // namespace

element CCryptoPasswordEncryption::Encrypt(const SCryptoPasswordEncryption& parameters, std::string_view password,
                                           std::span<const std::uint8_t> text, CCryptoAlgorithmIdentifier& how,
                                           ICryptoRandom& random)
{
    CCryptoAutoLogger logger("CCryptoPasswordEncryption::Encrypt");
    Keyed keyed;
    if (!Describe(logger, parameters, random, how) || !Derive(logger, how, password, keyed))
        return {};
    element ciphertext;
    const std::unique_ptr<ICryptoCipher> cipher = CipherOf(keyed);
    if (cipher == nullptr || !cipher->encrypt(keyed.key.bytes(), keyed.iv.bytes(), text, ciphertext))
        return logger.setRetValue(3, element(), "Encryption failed");
    logger.setResult(true);
    return ciphertext;
}

bool CCryptoPasswordEncryption::Decrypt(const CCryptoAlgorithmIdentifier& how, std::string_view password,
                                        std::span<const std::uint8_t> ciphertext, element& text)
{
    CCryptoAutoLogger logger("CCryptoPasswordEncryption::Decrypt");
    text = {};
    Keyed keyed;
    if (!Derive(logger, how, password, keyed))
        return false;
    const std::unique_ptr<ICryptoCipher> cipher = CipherOf(keyed);
    if (cipher == nullptr || !cipher->decrypt(keyed.key.bytes(), keyed.iv.bytes(), ciphertext, text)) {
        text = {};
        return logger.setRetValue(3, false, "The password is wrong, or the data is damaged");
    }
    return logger.setResult(true);
}
