#include "pki/keys/key_file.h"

#include "asn1/der/der_parser.h"
#include "asn1/der/pem.h"
#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/failure.h"
#include "pki/keys/key_encoding.h"
#include "pki/keys/key_objects.h"

#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace ccrypto;

namespace {

using KeyPair = std::unique_ptr<ICryptoKeyPair>;

/// Bytes of a file that is taken for a key.
constexpr std::size_t maxFile = 1 << 20;

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

KeyPair LoadPlain(KeyForm form, const element& der)
{
    switch (form) {
    case KeyForm::publicKeyInfo:
        return LoadPublicKeyInfo(der);
    case KeyForm::rsaPublicKey:
        return LoadRSAPublicKey(der);
    case KeyForm::privateKeyInfo:
        return LoadPrivateKeyInfo(der);
    case KeyForm::rsaPrivateKey:
        return LoadRSAPrivateKey(der);
    case KeyForm::ecPrivateKey:
        return LoadECPrivateKey(der);
    case KeyForm::encryptedPrivateKey:
        break;
    }
    return nullptr;
}

} // namespace

KeyPair CCryptoKeyFile::Load(std::span<const std::uint8_t> bytes, const PasswordSource& password)
{
    CCryptoAutoLogger logger("CCryptoKeyFile::Load");
    // What failed before is not the reason for what fails now.
    ccrypto::ForgetFailure();
    KeyPair key = loadFile(bytes, password, logger);
    if (key != nullptr)
        logger.setResult(true);
    return key;
}

KeyPair CCryptoKeyFile::loadFile(std::span<const std::uint8_t> bytes, const PasswordSource& password, CCryptoAutoLogger& logger)
{
    if (bytes.size() > maxFile)
        return logger.fail(KeyPair(), "it is longer than any key");
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (HasPemBlock(text))
        return loadPem(text, password, logger);
    return loadDer(element(bytes.data(), static_cast<std::uint32_t>(bytes.size())), password, logger);
}

KeyPair CCryptoKeyFile::loadPem(std::string_view text, const PasswordSource& password, CCryptoAutoLogger& logger)
{
    std::vector<DataBlock> blocks;
    const bool isWhole = ReadPem(text, blocks);
    for (const DataBlock& block : blocks) {
        if (const std::optional<KeyForm> form = FormOfLabel(block.label))
            return loadAs(*form, block.bytes, password, logger);
    }
    // A block that is damaged gave its reason.
    return isWhole ? logger.fail(KeyPair(), "it holds no key that can be read") : nullptr;
}

KeyPair CCryptoKeyFile::loadDer(const element& der, const PasswordSource& password, CCryptoAutoLogger& logger)
{
    const ElementNodePtr tree = CCryptoDERParser().Decode(der.bytes());
    const std::optional<KeyForm> form = FormOfTree(tree.get());
    return form ? loadAs(*form, der, password, logger) : logger.fail(KeyPair(), "it is neither DER nor PEM of a key");
}

KeyPair CCryptoKeyFile::loadAs(KeyForm form, const element& der, const PasswordSource& password, CCryptoAutoLogger& logger)
{
    form_ = form;
    if (form == KeyForm::encryptedPrivateKey)
        return loadEncrypted(der, password, logger);
    KeyPair key = LoadPlain(form, der);
    if (key != nullptr)
        return key;
    const std::optional<ccrypto::Failure> cause = ccrypto::LastFailure();
    return logger.fail(KeyPair(), "it is not a valid key of a supported algorithm%s%s", cause ? ": " : "",
                       cause ? cause->text.c_str() : "");
}

KeyPair CCryptoKeyFile::loadEncrypted(const element& der, const PasswordSource& password, CCryptoAutoLogger& logger)
{
    CCryptoEncryptedPrivateKeyInfo info;
    if (!info.ParseDer(der) || !CCryptoPasswordEncryption::Understands(info.algorithm))
        return logger.fail(KeyPair(), "its encryption is not supported");
    element secret;
    if (!password || !password(secret))
        return logger.fail(KeyPair(), "it is encrypted, and there is no password");
    element plain;
    if (!CCryptoPasswordEncryption::Decrypt(info.algorithm, secret.view(), info.encryptedData.bytes(), plain))
        return logger.fail(KeyPair(), "the password is wrong, or what is encrypted is damaged");
    KeyPair key = LoadPrivateKeyInfo(plain);
    return key != nullptr ? std::move(key) : logger.fail(KeyPair(), "the password is wrong, or what is encrypted is no valid key");
}

element CCryptoKeyFile::Save(const ICryptoKeyPair& key, KeyForm form, std::string_view password,
                             const SCryptoPasswordEncryption& encryption)
{
    CCryptoAutoLogger logger("CCryptoKeyFile::Save");
    element der = save(key, form, password, encryption, logger);
    if (!der.isEmpty())
        logger.setResult(true);
    else if (logger.status() != ResultStatus::error)
        logger.fail(false, "the key does not have this form");
    return der;
}

element CCryptoKeyFile::save(const ICryptoKeyPair& key, KeyForm form, std::string_view password,
                             const SCryptoPasswordEncryption& encryption, CCryptoAutoLogger& logger)
{
    switch (form) {
    case KeyForm::publicKeyInfo:
        return key.publicKeyInfo();
    case KeyForm::privateKeyInfo:
        return key.privateKeyInfo();
    case KeyForm::rsaPublicKey:
    case KeyForm::rsaPrivateKey:
    case KeyForm::ecPrivateKey:
        return key.ownForm(form);
    case KeyForm::encryptedPrivateKey:
        break;
    }
    const element plain = key.privateKeyInfo();
    if (plain.isEmpty())
        return {};
    CCryptoEncryptedPrivateKeyInfo info;
    info.encryptedData = CCryptoPasswordEncryption::Encrypt(encryption, password, plain.bytes(), info.algorithm);
    if (info.encryptedData.isEmpty())
        return logger.fail(element(), "it cannot be encrypted so");
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
