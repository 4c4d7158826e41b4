#include "pki/keys/key_file.h"

#include "asn1/der/der_parser.h"
#include "asn1/der/pem.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/keys/ec_key_pair.h"
#include "pki/keys/key_encoding.h"
#include "pki/keys/key_objects.h"
#include "pki/keys/rsa_key_pair.h"

#include <iterator>
#include <optional>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

/// The longest file that is taken for a key, in bytes.
constexpr std::size_t longestFile = 1 << 20;

struct LabelledForm {
    KeyForm form;
    const char* label;
};

constexpr LabelledForm forms[] = {
    {KeyForm::publicKeyInfo, "PUBLIC KEY"},      {KeyForm::rsaPublicKey, "RSA PUBLIC KEY"},
    {KeyForm::privateKeyInfo, "PRIVATE KEY"},    {KeyForm::encryptedPrivateKey, "ENCRYPTED PRIVATE KEY"},
    {KeyForm::rsaPrivateKey, "RSA PRIVATE KEY"}, {KeyForm::ecPrivateKey, "EC PRIVATE KEY"},
};

std::optional<KeyForm> FormOfLabel(std::string_view label)
{
    for (const LabelledForm& entry : forms)
        if (label == entry.label)
            return entry.form;
    return {};
}

std::uint32_t CountOf(const elementNode* list)
{
    std::uint32_t count = 0;
    for (; list != nullptr; list = list->next())
        ++count;
    return count;
}

/// The form that the first items of a SEQUENCE tell: what stands at the beginning differs from form to form.
std::optional<KeyForm> FormOfTree(const elementNode* tree)
{
    if (tree == nullptr || tree->type() != ElementType::sequence)
        return {};
    const elementNode* first = tree->content();
    const elementNode* second = first != nullptr ? first->next() : nullptr;
    if (second == nullptr)
        return {};
    const bool beginsWithNumber = first->type() == ElementType::asn1Integer;
    const bool beginsWithAlgorithm = first->type() == ElementType::sequence;
    switch (second->type()) {
    case ElementType::bitString:
        return beginsWithAlgorithm ? std::optional(KeyForm::publicKeyInfo) : std::nullopt;
    case ElementType::octetString:
        if (beginsWithAlgorithm)
            return KeyForm::encryptedPrivateKey;
        return beginsWithNumber ? std::optional(KeyForm::ecPrivateKey) : std::nullopt;
    case ElementType::sequence:
        return beginsWithNumber ? std::optional(KeyForm::privateKeyInfo) : std::nullopt;
    case ElementType::asn1Integer:
        if (!beginsWithNumber)
            return {};
        return CountOf(first) == 2 ? KeyForm::rsaPublicKey : KeyForm::rsaPrivateKey;
    default:
        return {};
    }
}

} // namespace

std::nullptr_t CCryptoKeyFile::refuse(const char* reason)
{
    // What was found first is nearer to the cause.
    if (reason_.isEmpty())
        reason_ = CCryptoString(reason);
    return nullptr;
}

std::unique_ptr<ICryptoKeyPair> CCryptoKeyFile::Load(std::span<const std::uint8_t> bytes, const PasswordSource& password)
{
    CCryptoAutoLogger logger("CCryptoKeyFile::Load");
    reason_ = {};
    refusedContent_ = false;
    std::unique_ptr<ICryptoKeyPair> key;
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (bytes.size() > longestFile) {
        refuse("it is longer than any key");
    } else if (!HasPemBlock(text)) {
        key = loadDer(element(bytes.data(), static_cast<std::uint32_t>(bytes.size())), password);
    } else {
        std::vector<DataBlock> blocks;
        std::string reason;
        if (!ReadPem(text, blocks, reason))
            refuse(reason.c_str());
        for (const DataBlock& block : blocks) {
            const std::optional<KeyForm> form = FormOfLabel(block.label);
            if (!form)
                continue;
            key = loadAs(*form, block.bytes, password);
            break;
        }
        if (key == nullptr)
            refuse("it holds no key that can be read");
    }
    if (key == nullptr)
        return logger.fail(std::unique_ptr<ICryptoKeyPair>(), "Key loading failed: %s", reason_.c_str());
    logger.setResult(true);
    return key;
}

std::unique_ptr<ICryptoKeyPair> CCryptoKeyFile::loadDer(const element& der, const PasswordSource& password)
{
    const ElementNodePtr tree = CCryptoDERParser().Decode(der.bytes());
    const std::optional<KeyForm> form = FormOfTree(tree.get());
    return form ? loadAs(*form, der, password) : refuse("it is neither DER nor PEM of a key");
}

std::unique_ptr<ICryptoKeyPair> CCryptoKeyFile::loadAs(KeyForm form, const element& der, const PasswordSource& password)
{
    form_ = form;
    std::unique_ptr<ICryptoKeyPair> key;
    switch (form) {
    case KeyForm::publicKeyInfo:
        key = LoadPublicKeyInfo(der);
        break;
    case KeyForm::rsaPublicKey:
        key = LoadRSAPublicKey(der);
        break;
    case KeyForm::privateKeyInfo:
        key = LoadPrivateKeyInfo(der);
        break;
    case KeyForm::encryptedPrivateKey:
        key = loadEncrypted(der, password);
        break;
    case KeyForm::rsaPrivateKey:
        key = LoadRSAPrivateKey(der);
        break;
    case KeyForm::ecPrivateKey:
        key = LoadECPrivateKey(der);
        break;
    }
    if (key == nullptr && reason_.isEmpty()) {
        refusedContent_ = true;
        refuse("it is no key of a supported algorithm, or its numbers do not make a valid key");
    }
    return key;
}

std::unique_ptr<ICryptoKeyPair> CCryptoKeyFile::loadEncrypted(const element& der, const PasswordSource& password)
{
    CCryptoEncryptedPrivateKeyInfo info;
    if (!info.ParseDer(der) || !CCryptoPasswordEncryption::Understands(info.algorithm))
        return refuse("its encryption is not supported");
    element secret;
    if (!password || !password(secret))
        return refuse("it is encrypted, and there is no password");
    element plain;
    if (!CCryptoPasswordEncryption::Decrypt(info.algorithm, secret.view(), info.encryptedData.bytes(), plain))
        return refuse("the password is wrong, or what is encrypted is damaged");
    std::unique_ptr<ICryptoKeyPair> key = LoadPrivateKeyInfo(plain);
    if (key == nullptr)
        refuse("the password is wrong, or what is encrypted is no valid key");
    return key;
}

element CCryptoKeyFile::Save(const ICryptoKeyPair& key, KeyForm form, std::string_view password,
                             const SCryptoPasswordEncryption& encryption)
{
    CCryptoAutoLogger logger("CCryptoKeyFile::Save");
    reason_ = {};
    element der = save(key, form, password, encryption);
    if (der.isEmpty()) {
        refuse("the key does not have this form");
        return logger.fail(element(), "Key saving failed: %s", reason_.c_str());
    }
    logger.setResult(true);
    return der;
}

element CCryptoKeyFile::save(const ICryptoKeyPair& key, KeyForm form, std::string_view password,
                             const SCryptoPasswordEncryption& encryption)
{
    const auto* rsa = dynamic_cast<const CCryptoRSAKeyPair*>(&key);
    const auto* ec = dynamic_cast<const CCryptoECKeyPair*>(&key);
    switch (form) {
    case KeyForm::publicKeyInfo:
        return key.publicKeyInfo();
    case KeyForm::rsaPublicKey:
        return rsa != nullptr ? RSAPublicKeyOf(rsa->key()) : element();
    case KeyForm::privateKeyInfo:
        return key.privateKeyInfo();
    case KeyForm::rsaPrivateKey:
        return rsa != nullptr ? RSAPrivateKeyOf(rsa->key()) : element();
    case KeyForm::ecPrivateKey:
        return ec != nullptr ? ECPrivateKeyOf(ec->key()) : element();
    case KeyForm::encryptedPrivateKey:
        break;
    }
    const element plain = key.privateKeyInfo();
    if (plain.isEmpty())
        return {};
    CCryptoEncryptedPrivateKeyInfo info;
    info.encryptedData = CCryptoPasswordEncryption::Encrypt(encryption, password, plain.bytes(), info.algorithm);
    if (info.encryptedData.isEmpty()) {
        refuse("it cannot be encrypted so");
        return {};
    }
    return info.BuildDer();
}

const char* CCryptoKeyFile::Label(KeyForm form)
{
    for (const LabelledForm& entry : forms)
        if (entry.form == form)
            return entry.label;
    return "";
}

CCryptoString CCryptoKeyFile::ToPem(KeyForm form, const element& der)
{
    return WritePem(Label(form), der);
}
