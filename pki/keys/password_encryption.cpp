#include "pki/keys/password_encryption.h"

#include "core/base/algorithm.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/cipher/cipher.h"
#include "crypto/kdf/key_derivation.h"
#include "crypto/mac/hmac.h"
#include "pki/keys/password_objects.h"

#include <algorithm>
#include <array>
#include <iterator>

using namespace ccrypto;

namespace {

constexpr std::uint32_t saltLength = 16;
constexpr std::uint32_t desBlock = 8;
constexpr std::uint32_t tripleDesKey = 24;

std::span<const std::uint8_t> BytesOfPassword(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// What a PKCS#12 scheme derives and enciphers with.
struct PKCS12Scheme {
    algorithm::Id id;
    algorithm::Id cipher;
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

const PKCS12Scheme* FindPKCS12Scheme(algorithm::Id id)
{
    const auto* found = std::ranges::find(pkcs12Schemes, id, &PKCS12Scheme::id);
    return found != std::end(pkcs12Schemes) ? found : nullptr;
}

/// What a description asks for.
struct Recipe {
    const PKCS12Scheme* scheme = nullptr; ///< null for PBES2
    algorithm::Id prf = algorithm::none;  ///< of PBES2, as are the next two
    std::uint32_t keyLength = 0;
    element iv;
    algorithm::Id cipher = algorithm::none;
    std::uint32_t effectiveBits = 0; ///< of RC2 under PBES2
    element salt;
    std::uint32_t iterations = 0;
};

struct CipherKey {
    algorithm::Id cipher;
    std::uint32_t keyLength;
    std::uint32_t ivLength;
};

constexpr CipherKey pbes2Ciphers[] = {
    {algorithm::aes128Cbc, 16, 16},
    {algorithm::aes192Cbc, 24, 16},
    {algorithm::aes256Cbc, 32, 16},
    {algorithm::tripleDesCbc, tripleDesKey, desBlock},
};

const CipherKey* FindPBES2Cipher(algorithm::Id id)
{
    const auto* found = std::ranges::find(pbes2Ciphers, id, &CipherKey::cipher);
    return found != std::end(pbes2Ciphers) ? found : nullptr;
}

/// Cipher, key length and effective bits. \return false, logged, when they do not fit together.
bool ReadCipher(CCryptoAutoLogger& logger, const CCryptoPBES2Parameters& parameters, Recipe& recipe)
{
    const CipherKey* cipher = FindPBES2Cipher(parameters.cipher);
    recipe.cipher = parameters.cipher;
    recipe.iv = parameters.iv;
    recipe.keyLength = parameters.keyLength;
    if (cipher != nullptr) {
        if (recipe.keyLength == 0)
            recipe.keyLength = cipher->keyLength;
        if (recipe.keyLength != cipher->keyLength || recipe.iv.length() != cipher->ivLength)
            return logger.fail(false, "The key length or the initialisation vector is not the cipher's");
        return true;
    }
    if (parameters.cipher != algorithm::rc2Cbc)
        return logger.fail(false, "Unsupported cipher: %u", parameters.cipher);
    if (recipe.keyLength == 0)
        recipe.keyLength = 16;
    recipe.effectiveBits = parameters.rc2EffectiveBits;
    if (recipe.keyLength > 128 || recipe.iv.length() != desBlock || recipe.effectiveBits == 0)
        return logger.fail(false, "The parameters of RC2 are out of bounds");
    return true;
}

bool ReadPBES2(CCryptoAutoLogger& logger, const elementNode* node, Recipe& recipe)
{
    CCryptoPBES2Parameters plain;
    CCryptoPBES2Parameters rc2(CCryptoPBES2Parameters::Form::rc2);
    const bool isPlain = plain.Parse(node);
    if (!isPlain && !rc2.Parse(node))
        return logger.fail(false, "The parameters of PBES2 are not understood");
    const CCryptoPBES2Parameters& parameters = isPlain ? plain : rc2;
    recipe.salt = parameters.salt;
    recipe.iterations = parameters.iterations;
    recipe.prf = parameters.prf;
    // A hash by itself is no pseudorandom function.
    if (!IsHMAC(recipe.prf))
        return logger.fail(false, "Unsupported pseudorandom function: %u", recipe.prf);
    return ReadCipher(logger, parameters, recipe);
}

bool ReadPKCS12(CCryptoAutoLogger& logger, const CCryptoAlgorithmIdentifier& how, Recipe& recipe)
{
    recipe.scheme = FindPKCS12Scheme(how.id());
    if (recipe.scheme == nullptr)
        return logger.fail(false, "Unsupported password based encryption: %u", how.id());
    CCryptoPKCS12Parameters parameters;
    if (!parameters.Parse(how.parameters()))
        return logger.fail(false, "The parameters of the encryption are not understood");
    recipe.cipher = recipe.scheme->cipher;
    recipe.salt = parameters.salt;
    recipe.iterations = parameters.iterations;
    return true;
}

/// \return false, logged, for a description that nothing can be derived from, whatever the password.
bool ReadRecipe(CCryptoAutoLogger& logger, const CCryptoAlgorithmIdentifier& how, Recipe& recipe)
{
    const bool isRead =
        how.id() == algorithm::pbes2 ? ReadPBES2(logger, how.parameters(), recipe) : ReadPKCS12(logger, how, recipe);
    if (!isRead)
        return false;
    const bool isPKCS12 = recipe.scheme != nullptr;
    return CCryptoKeyDerivation::Allows(isPKCS12 ? algorithm::sha1 : recipe.prf, recipe.salt.bytes(), recipe.iterations,
                                        isPKCS12 ? recipe.scheme->keyLength : recipe.keyLength) ||
           logger.fail(false, "No key can be derived so");
}

struct KeyAndVector {
    element key;
    element iv;
};

using Password = std::optional<std::string_view>;

bool DerivePKCS12(const Recipe& recipe, Password password, KeyAndVector& derived)
{
    const element units = password ? CCryptoKeyDerivation::PKCS12Password(*password) : element();
    if (password && units.isEmpty())
        return false;
    const auto derive = [&](CCryptoKeyDerivation::PKCS12Use use, std::uint32_t length) {
        return CCryptoKeyDerivation::PKCS12(algorithm::sha1, use, units.bytes(), recipe.salt.bytes(), recipe.iterations, length);
    };
    const PKCS12Scheme& scheme = *recipe.scheme;
    derived.key = derive(CCryptoKeyDerivation::PKCS12Use::key, scheme.keyLength);
    if (scheme.ivLength != 0)
        derived.iv = derive(CCryptoKeyDerivation::PKCS12Use::initializationVector, scheme.ivLength);
    if (derived.key.isEmpty() || derived.iv.length() != scheme.ivLength)
        return false;
    // Two keys are three of which the last is the first.
    if (scheme.id == algorithm::pkcs12Sha1TripleDes2Key) {
        const element first(derived.key.data(), desBlock);
        derived.key.append(first.data(), first.length());
    }
    return true;
}

bool DerivePBES2(const Recipe& recipe, Password password, KeyAndVector& derived)
{
    derived.iv = recipe.iv;
    derived.key = CCryptoKeyDerivation::PBKDF2(recipe.prf, BytesOfPassword(password.value_or("")), recipe.salt.bytes(),
                                               recipe.iterations, recipe.keyLength);
    return !derived.key.isEmpty();
}

bool Derive(CCryptoAutoLogger& logger, const Recipe& recipe, Password password, KeyAndVector& derived)
{
    const bool isDerived =
        recipe.scheme != nullptr ? DerivePKCS12(recipe, password, derived) : DerivePBES2(recipe, password, derived);
    return isDerived || logger.fail(false, "No key can be derived so");
}

std::unique_ptr<ICryptoCipher> CipherOf(const Recipe& recipe)
{
    std::unique_ptr<ICryptoCipher> cipher = ICryptoCipher::Create(recipe.cipher);
    if (cipher != nullptr && recipe.effectiveBits != 0 && !cipher->setEffectiveKeyBits(recipe.effectiveBits))
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
            return logger.fail(false, "Unsupported cipher: %u", wanted.cipher);
        CCryptoPBES2Parameters parameters;
        parameters.cipher = wanted.cipher;
        parameters.prf = wanted.prf;
        parameters.iterations = wanted.iterations;
        if (!FreshBytes(random, saltLength, parameters.salt) || !FreshBytes(random, cipher->ivLength, parameters.iv))
            return logger.fail(false, "There are no random bytes");
        tree = parameters.BuildTree();
    } else {
        CCryptoPKCS12Parameters parameters;
        parameters.iterations = wanted.iterations;
        if (!FreshBytes(random, saltLength, parameters.salt))
            return logger.fail(false, "There are no random bytes");
        tree = parameters.BuildTree();
    }
    how.setId(wanted.scheme);
    how.setNullParameters(false);
    how.setParameters(tree.get());
    return tree != nullptr || logger.fail(false, "The encryption cannot be described");
}

} // namespace

bool CCryptoPasswordEncryption::Supports(const SCryptoPasswordEncryption& parameters)
{
    return parameters.scheme == algorithm::pbes2 ? FindPBES2Cipher(parameters.cipher) != nullptr
                                                 : FindPKCS12Scheme(parameters.scheme) != nullptr;
}

element CCryptoPasswordEncryption::Encrypt(const SCryptoPasswordEncryption& parameters, std::string_view password,
                                           std::span<const std::uint8_t> text, CCryptoAlgorithmIdentifier& how,
                                           ICryptoRandom& random)
{
    CCryptoAutoLogger logger("CCryptoPasswordEncryption::Encrypt");
    Recipe recipe;
    KeyAndVector derived;
    if (!Describe(logger, parameters, random, how) || !ReadRecipe(logger, how, recipe) ||
        !Derive(logger, recipe, password, derived))
        return {};
    element ciphertext;
    const std::unique_ptr<ICryptoCipher> cipher = CipherOf(recipe);
    if (cipher == nullptr || !cipher->encrypt(derived.key.bytes(), derived.iv.bytes(), text, ciphertext))
        return logger.fail(element(), "Encryption failed");
    logger.setResult(true);
    return ciphertext;
}

bool CCryptoPasswordEncryption::Understands(const CCryptoAlgorithmIdentifier& how)
{
    CCryptoAutoLogger logger("CCryptoPasswordEncryption::Understands");
    Recipe recipe;
    return ReadRecipe(logger, how, recipe) && logger.setResult(true);
}

std::optional<SCryptoPasswordEncryption> CCryptoPasswordEncryption::ParametersOf(const CCryptoAlgorithmIdentifier& how)
{
    CCryptoAutoLogger logger("CCryptoPasswordEncryption::ParametersOf");
    Recipe recipe;
    if (!ReadRecipe(logger, how, recipe))
        return {};
    logger.setResult(true);
    return SCryptoPasswordEncryption{.scheme = how.id(),
                                     .cipher = recipe.cipher,
                                     .prf = recipe.scheme != nullptr ? algorithm::hmacSha1 : recipe.prf,
                                     .iterations = recipe.iterations};
}

bool CCryptoPasswordEncryption::Decrypt(const CCryptoAlgorithmIdentifier& how, std::optional<std::string_view> password,
                                        std::span<const std::uint8_t> ciphertext, element& text)
{
    CCryptoAutoLogger logger("CCryptoPasswordEncryption::Decrypt");
    text = {};
    Recipe recipe;
    KeyAndVector derived;
    if (!ReadRecipe(logger, how, recipe) || !Derive(logger, recipe, password, derived))
        return false;
    const std::unique_ptr<ICryptoCipher> cipher = CipherOf(recipe);
    if (cipher == nullptr || !cipher->decrypt(derived.key.bytes(), derived.iv.bytes(), ciphertext, text)) {
        text = {};
        return logger.fail(false, "The password is wrong, or the data is damaged");
    }
    return logger.setResult(true);
}
