#include "pki/keys/key_file.h"

#include "asn1/der/der_parser.h"
#include "asn1/der/pem.h"
#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/failure.h"
#include "pki/keys/key_encoding.h"
#include "pki/keys/key_objects.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace ccrypto;

namespace {

using KeyPair = std::unique_ptr<ICryptoKeyPair>;

/// Bytes of a file that is taken for a key.
constexpr std::size_t maxFile = 1 << 20;

struct FormRow {
    KeyForm form;
    const char* label;
    KeyPair (*load)(const element& der); ///< null for the form that needs a password
};

constexpr FormRow forms[] = {
    {KeyForm::publicKeyInfo, "PUBLIC KEY", LoadPublicKeyInfo},
    {KeyForm::rsaPublicKey, "RSA PUBLIC KEY", LoadRSAPublicKey},
    {KeyForm::privateKeyInfo, "PRIVATE KEY", LoadPrivateKeyInfo},
    {KeyForm::encryptedPrivateKey, "ENCRYPTED PRIVATE KEY", nullptr},
    {KeyForm::rsaPrivateKey, "RSA PRIVATE KEY", LoadRSAPrivateKey},
    {KeyForm::ecPrivateKey, "EC PRIVATE KEY", LoadECPrivateKey},
};

const FormRow& RowOf(KeyForm form)
{
    return *std::ranges::find(forms, form, &FormRow::form);
}

std::optional<KeyForm> FormOfLabel(std::string_view label)
{
    for (const FormRow& row : forms)
        if (label == row.label)
            return row.form;
    return {};
}

std::uint32_t CountOf(const elementNode* list)
{
    std::uint32_t count = 0;
    for (; list != nullptr; list = list->next())
        ++count;
    return count;
}

/// The form of a SEQUENCE by its first items, which differ from form to form.
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

/// One key file that is being read.
class KeyLoader {
public:
    KeyLoader(CCryptoAutoLogger& logger, const CCryptoKeyFile::PasswordSource& password) : logger_(logger), password_(password) {}

    KeyPair load(std::span<const std::uint8_t> bytes)
    {
        if (bytes.size() > maxFile)
            return fail("it is longer than any key");
        const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return HasPemBlock(text) ? loadPem(text) : loadDer(element(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    }

    /// Of the key that was found; none when there was none.
    std::optional<KeyForm> form() const { return form_; }

private:
    KeyPair fail(const char* reason) { return logger_.fail(KeyPair(), "%s", reason); }

    KeyPair loadPem(std::string_view text)
    {
        std::vector<DataBlock> blocks;
        const bool isWhole = ReadPem(text, blocks);
        for (const DataBlock& block : blocks) {
            if (const std::optional<KeyForm> form = FormOfLabel(block.label))
                return loadAs(*form, block.bytes);
        }
        // A block that is damaged gave its reason.
        return isWhole ? fail("it holds no key that can be read") : nullptr;
    }

    KeyPair loadDer(const element& der)
    {
        const ElementNodePtr tree = CCryptoDERParser().Decode(der.bytes());
        const std::optional<KeyForm> form = FormOfTree(tree.get());
        return form ? loadAs(*form, der) : fail("it is neither DER nor PEM of a key");
    }

    KeyPair loadAs(KeyForm form, const element& der)
    {
        form_ = form;
        if (form == KeyForm::encryptedPrivateKey)
            return loadEncrypted(der);
        KeyPair key = RowOf(form).load(der);
        if (key != nullptr)
            return key;
        const std::optional<Failure> cause = LastFailure();
        return logger_.fail(KeyPair(), "it is not a valid key of a supported algorithm%s%s", cause ? ": " : "",
                            cause ? cause->text.c_str() : "");
    }

    KeyPair loadEncrypted(const element& der)
    {
        CCryptoEncryptedPrivateKeyInfo info;
        if (!info.ParseDer(der) || !CCryptoPasswordEncryption::Understands(info.algorithm))
            return fail("its encryption is not supported");
        element secret;
        if (!password_ || !password_(secret))
            return fail("it is encrypted, and there is no password");
        element plain;
        if (!CCryptoPasswordEncryption::Decrypt(info.algorithm, secret.view(), info.encryptedData.bytes(), plain))
            return fail("the password is wrong, or what is encrypted is damaged");
        KeyPair key = LoadPrivateKeyInfo(plain);
        return key != nullptr ? std::move(key) : fail("the password is wrong, or what is encrypted is no valid key");
    }

    CCryptoAutoLogger& logger_;
    const CCryptoKeyFile::PasswordSource& password_;
    std::optional<KeyForm> form_;
};

element DerOf(CCryptoAutoLogger& logger, const ICryptoKeyPair& key, KeyForm form, std::string_view password,
              const SCryptoPasswordEncryption& encryption)
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

} // namespace

KeyPair CCryptoKeyFile::Load(std::span<const std::uint8_t> bytes, const PasswordSource& password)
{
    CCryptoAutoLogger logger("CCryptoKeyFile::Load");
    // What failed before is not the reason for what fails now.
    ForgetFailure();
    KeyLoader loader(logger, password);
    KeyPair key = loader.load(bytes);
    form_ = loader.form().value_or(form_);
    if (key != nullptr)
        logger.setResult(true);
    return key;
}

element CCryptoKeyFile::Save(const ICryptoKeyPair& key, KeyForm form, std::string_view password,
                             const SCryptoPasswordEncryption& encryption)
{
    CCryptoAutoLogger logger("CCryptoKeyFile::Save");
    element der = DerOf(logger, key, form, password, encryption);
    if (!der.isEmpty())
        logger.setResult(true);
    else if (logger.status() != ResultStatus::error)
        logger.fail(false, "the key does not have this form");
    return der;
}

const char* CCryptoKeyFile::Label(KeyForm form)
{
    return RowOf(form).label;
}

CCryptoString CCryptoKeyFile::ToPem(KeyForm form, const element& der)
{
    return WritePem(Label(form), der);
}
