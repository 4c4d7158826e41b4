#include "pki/cms/enveloped_data.h"

#include "asn1/der/der_cursor.h"
#include "asn1/tree/item_list.h"
#include "asn1/types/algorithm_table.h"
#include "asn1/types/asn1_values.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/cipher/cipher.h"
#include "crypto/random/random.h"
#include "pki/cms/document.h"
#include "pki/cms/tree_filling.h"
#include "pki/x509/extensions.h"
#include "pki/x509/name.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>

using namespace ccrypto;

namespace {

constexpr const char* envelopedDataTemplate =
    "SEQUENCE{INTEGER=version,CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL){originatorInfo}SET[CONSTRUCTED]{recipientInfos},"
    "encryptedContentInfo,CONTEXT_SPECIFIC[1,CONSTRUCTED](OPTIONAL){unprotectedAttributes}}";
constexpr const char* keyRecipientTemplate =
    "SEQUENCE{INTEGER=version,recipientIdentifier,keyEncryptionAlgorithm,OCTET_STRING[PRIMITIVE]{encryptedKey}}";
constexpr const char* keyRecipientToWriteTemplate =
    "SEQUENCE{INTEGER=0,SEQUENCE{SEQUENCE[CONSTRUCTED]{issuer},INTEGER{serialNumber}},keyEncryptionAlgorithm,"
    "OCTET_STRING{encryptedKey}}";
constexpr const char* pkcs1KeyTemplate = "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.1.1\",NULL}";
constexpr const char* oaepKeyTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.1.7\",SEQUENCE{"
    "CONTEXT_SPECIFIC[0]{SEQUENCE{OBJECT_IDENTIFIER=hash,NULL}}"
    "CONTEXT_SPECIFIC[1]{SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.1.8\",SEQUENCE{OBJECT_IDENTIFIER=maskHash,NULL}}}}}";
constexpr const char* envelopedMessageTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.7.3\",CONTEXT_SPECIFIC[0]{envelopedData}}";

constexpr algorithm::Id oaepHashes[] = {algorithm::sha1, algorithm::sha224, algorithm::sha256, algorithm::sha384,
                                        algorithm::sha512};
constexpr algorithm::Id envelopeCiphers[] = {algorithm::aes128Cbc, algorithm::aes192Cbc, algorithm::aes256Cbc};

bool IsEnvelopeCipher(algorithm::Id id)
{
    return std::ranges::find(envelopeCiphers, id) != std::end(envelopeCiphers);
}

class KeyRecipientObject : public CCryptoASN1Object {
public:
    KeyRecipientObject() : CCryptoASN1Object(keyRecipientTemplate) {}
    bool BuildNode() override { return false; }
    bool ParseNode() override
    {
        const std::optional<std::uint32_t> version = findBytes("version").exactWord32();
        const elementNode* const algorithm = find("keyEncryptionAlgorithm");
        if (algorithm == nullptr)
            return false;
        read.keyEncryptionAlgorithm = CCryptoParser::ToDer(algorithm->clone().get());
        read.encryptedKey = Octets(findBytes("encryptedKey"));
        return read.recipient.read(find("recipientIdentifier")) && version == (read.recipient.isByKey() ? 2u : 0u);
    }

    KeyRecipient read;
};

/// AlgorithmIdentifier: its OID, and its parameters or none.
struct EnvelopeAlgorithm {
    Oid oid;
    DerItem parameters;
};

std::optional<EnvelopeAlgorithm> ReadEnvelopeAlgorithm(std::span<const std::uint8_t> der)
{
    const auto value = OnlyValue(der, 0x30);
    DerCursor cursor(value.value_or(std::span<const std::uint8_t>()));
    EnvelopeAlgorithm algorithm;
    algorithm.oid = Oid(cursor.read(0x06).value);
    if (!cursor.atEnd())
        algorithm.parameters = cursor.read();
    return value && !algorithm.oid.isNone() && cursor.atEnd() ? std::optional(algorithm) : std::nullopt;
}

bool IsNullOrNothing(const DerItem& parameters)
{
    return !parameters || (parameters.identifier == 0x05 && parameters.value.empty());
}

bool ReadOaepHash(std::span<const std::uint8_t> der, algorithm::Id& hash)
{
    const auto algorithm = ReadEnvelopeAlgorithm(der);
    if (!algorithm || !IsNullOrNothing(algorithm->parameters))
        return false;
    const auto* const found =
        std::ranges::find_if(oaepHashes, [&](algorithm::Id id) { return Oid::FromDotted(OidOfAlgorithm(id)) == algorithm->oid; });
    hash = found != std::end(oaepHashes) ? *found : algorithm::none;
    return hash != algorithm::none;
}

/// RSAES-OAEP-params (RFC 4055, 4.1): the defaults are SHA-1, and a label without octets is the only one that is read.
bool ReadOaepParameters(const DerItem& parameters, SCryptoPadding& padding)
{
    static const Oid mgf1 = Oid::FromDotted("1.2.840.113549.1.1.8");
    static const Oid givenLabel = Oid::FromDotted("1.2.840.113549.1.1.9");
    padding.scheme = SCryptoPadding::Scheme::masked;
    padding.masking.hash = padding.masking.maskHash = algorithm::sha1;
    if (parameters.identifier != 0x30)
        return false;
    DerCursor cursor(parameters.value);
    if (const DerItem hash = cursor.read(0xA0); hash && !ReadOaepHash(hash.value, padding.masking.hash))
        return false;
    if (const DerItem mask = cursor.read(0xA1)) {
        const auto function = ReadEnvelopeAlgorithm(mask.value);
        if (!function || !(function->oid == mgf1) || !ReadOaepHash(function->parameters.octets, padding.masking.maskHash))
            return false;
    }
    if (const DerItem label = cursor.read(0xA2)) {
        const auto source = ReadEnvelopeAlgorithm(label.value);
        if (!source || !(source->oid == givenLabel) || source->parameters.identifier != 0x04 || !source->parameters.value.empty())
            return false;
    }
    return cursor.atEnd();
}

element RandomOctets(std::uint32_t length)
{
    element octets;
    octets.resize(length);
    return ICryptoRandom::Instance().generate({octets.data(), length}) ? octets : element();
}

/// The key of the content. One that cannot be decrypted gives a random one, and nothing says so. \return false for an algorithm
/// that is not supported.
bool DecryptKey(const KeyRecipient& recipient, ICryptoDecrypter& decrypter, std::uint32_t keySize, element& key)
{
    static const Oid rsa = Oid::FromDotted("1.2.840.113549.1.1.1");
    static const Oid oaep = Oid::FromDotted("1.2.840.113549.1.1.7");
    const auto algorithm = ReadEnvelopeAlgorithm(recipient.keyEncryptionAlgorithm.bytes());
    if (!algorithm)
        return false;
    const bool isPkcs1 = algorithm->oid == rsa && IsNullOrNothing(algorithm->parameters);
    SCryptoPadding padding;
    if (!isPkcs1 && !(algorithm->oid == oaep && ReadOaepParameters(algorithm->parameters, padding)))
        return false;
    element substitute = RandomOctets(keySize);
    const std::span<const std::uint8_t> encrypted = recipient.encryptedKey.bytes();
    const bool isDecrypted = isPkcs1 ? decrypter.unwrap(encrypted, keySize, key) : decrypter.decrypt(encrypted, key, padding);
    if (!isDecrypted || key.length() != keySize)
        key = std::move(substitute);
    return key.length() == keySize;
}

element KeyAlgorithmDer(const EnvelopeOptions& options)
{
    if (options.keyPadding == SCryptoPadding::Scheme::pkcs1)
        return TemplateToFill(pkcs1KeyTemplate).ToDer();
    if (std::ranges::find(oaepHashes, options.maskingHash) == std::end(oaepHashes))
        return {};
    CCryptoParser parser = TemplateToFill(oaepKeyTemplate);
    const element hash(OidOfAlgorithm(options.maskingHash));
    return parser.fill("hash", hash) && parser.fill("maskHash", hash) ? parser.ToDer() : element();
}

} // namespace

CCryptoPKCS7EnvelopedDataObject::CCryptoPKCS7EnvelopedDataObject() : CCryptoASN1Object(envelopedDataTemplate)
{
    const CCryptoAutoLogger logger("CCryptoPKCS7EnvelopedDataObject::CCryptoPKCS7EnvelopedDataObject", LoggerMode::resultOptional);
}

void CCryptoPKCS7EnvelopedDataObject::ClearFields()
{
    recipients.clear();
    otherRecipients = 0;
    encryptedContent.clear();
}

bool CCryptoPKCS7EnvelopedDataObject::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7EnvelopedDataObject::ParseNode");
    // By what stands in the message (RFC 5652, 6.1).
    const std::uint32_t version = findNumber("version");
    if (findBytes("version").length() != 1 || version == 1 || version > 4)
        return logger.fail(false, "Invalid version");
    if (CountItems(find("recipientInfos")) > maxRecipients)
        return logger.fail(false, "There are more than %u recipients", maxRecipients);
    for (const elementNode* node = find("recipientInfos"); node != nullptr; node = node->next())
        if (!readRecipient(*node))
            return logger.setResult(false);
    return logger.setResult(encryptedContent.ParseContent(find("encryptedContentInfo")));
}

bool CCryptoPKCS7EnvelopedDataObject::readRecipient(const elementNode& node)
{
    if (node.type() != ElementType::sequence) {
        ++otherRecipients;
        return true;
    }
    KeyRecipientObject object;
    if (!object.Parse(&node))
        return false;
    recipients.push_back(std::move(object.read));
    return true;
}

bool CCryptoPKCS7EnvelopedDataObject::BuildNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7EnvelopedDataObject::BuildNode");
    // A SET OF is written in the order of its elements' octets (X.690, 11.6).
    std::vector<std::pair<element, ElementNodePtr>> trees;
    for (const KeyRecipient& recipient : recipients) {
        CCryptoParser parser = TemplateToFill(keyRecipientToWriteTemplate);
        if (!FillContentOf(parser, "issuer", recipient.recipient.issuer) ||
            !parser.fill("serialNumber", Octets(recipient.recipient.serialNumber)) ||
            !FillDer(parser, "keyEncryptionAlgorithm", recipient.keyEncryptionAlgorithm) ||
            !parser.fill("encryptedKey", Octets(recipient.encryptedKey)))
            return logger.setResult(false);
        element der = parser.ToDer();
        trees.emplace_back(std::move(der), parser.takeRoot());
    }
    std::ranges::sort(trees, {}, [](const auto& tree) { return tree.first.view(); });
    ItemList list;
    for (auto& [der, tree] : trees)
        list.add(std::move(tree));
    return logger.setResult(builder().fill("version", element(std::uint32_t{0})) &&
                            FillTree(builder(), "recipientInfos", std::move(list.first)) &&
                            FillTree(builder(), "encryptedContentInfo", encryptedContent.BuildTree()));
}

namespace ccrypto {

element EncryptForRecipients(std::span<const std::uint8_t> content, std::span<const CertificatePtr> recipients,
                             const EnvelopeOptions& options)
{
    CCryptoAutoLogger logger("EncryptForRecipients");
    const std::unique_ptr<ICryptoCipher> cipher =
        IsEnvelopeCipher(options.cipher) ? ICryptoCipher::Create(options.cipher) : nullptr;
    if (cipher == nullptr)
        return logger.fail(element(), "Unsupported encryption algorithm");
    if (recipients.empty() || recipients.size() > CCryptoPKCS7EnvelopedDataObject::maxRecipients)
        return logger.fail(element(), "There is no recipient, or there are too many");
    const element key = RandomOctets(static_cast<std::uint32_t>(cipher->keySize()));
    const element iv = RandomOctets(static_cast<std::uint32_t>(cipher->ivSize()));
    CCryptoPKCS7EnvelopedDataObject data;
    if (key.isEmpty() || iv.isEmpty() || !cipher->encrypt(key.bytes(), iv.bytes(), content, data.encryptedContent.encryptedContent))
        return logger.fail(element());

    const element keyAlgorithm = KeyAlgorithmDer(options);
    if (keyAlgorithm.isEmpty())
        return logger.fail(element(), "Unsupported hash function");
    SCryptoPadding padding;
    padding.scheme = options.keyPadding;
    padding.masking.hash = options.maskingHash;
    std::set<std::string_view> written;
    for (const CertificatePtr& certificate : recipients) {
        if (certificate != nullptr && !written.insert(certificate->der().view()).second)
            continue;
        ICryptoDecrypter* const encrypter = certificate != nullptr ? certificate->publicKey()->decrypter() : nullptr;
        if (certificate == nullptr)
            return logger.fail(element(), "A recipient has no certificate");
        if (encrypter == nullptr)
            return logger.fail(element(), "Messages are encrypted for RSA keys only; that of %s is not one",
                               NameText(certificate->subject()).c_str());
        const ReadExtensions extensions = ReadAllExtensions(certificate->extensions(), ExtensionOwner::certificate);
        if (extensions.isMalformed || (extensions.keyUsage && !extensions.keyUsage->has(KeyUsageBit::keyEncipherment)))
            return logger.fail(element(), "The key usage of %s does not have keyEncipherment",
                               NameText(certificate->subject()).c_str());
        KeyRecipient recipient;
        recipient.recipient.issuer = certificate->issuer().GetDerEncodedElement();
        recipient.recipient.serialNumber = Octets(certificate->serialNumber());
        recipient.keyEncryptionAlgorithm = keyAlgorithm;
        recipient.encryptedKey = encrypter->encrypt(key.bytes(), padding);
        if (recipient.encryptedKey.isEmpty())
            return logger.fail(element());
        data.recipients.push_back(std::move(recipient));
    }
    if (!data.encryptedContent.SetContentOID(OidOfContentType(ContentType::data)))
        return logger.fail(element());
    data.encryptedContent.contentEncryptionAlgorithm.setId(options.cipher);
    data.encryptedContent.contentEncryptionAlgorithm.setParameters(CCryptoASN1OctetStringObject(iv).BuildTree().get());
    CCryptoParser parser = TemplateToFill(envelopedMessageTemplate);
    element der = FillTree(parser, "envelopedData", data.BuildTree()) ? parser.ToDer() : element();
    logger.setResult(!der.isEmpty());
    return der;
}

bool DecryptAsRecipient(std::span<const std::uint8_t> message, const CCrypto_X509_Certificate& certificate, ICryptoKeyPair& key,
                        element& content, Oid* contentType)
{
    CCryptoAutoLogger logger("DecryptAsRecipient");
    content = {};
    if (contentType != nullptr)
        *contentType = {};
    CCryptoPKCS7Document document;
    CCryptoPKCS7EnvelopedDataObject data;
    if (!document.Parse(message) || document.contentInfo()->contentType() != ContentType::envelopedData ||
        !data.Parse(document.contentInfo()->content()))
        return logger.fail(false, "Not an encrypted message (enveloped data)");
    const CCryptoAlgorithmIdentifier& algorithm = data.encryptedContent.contentEncryptionAlgorithm;
    const std::unique_ptr<ICryptoCipher> cipher =
        IsEnvelopeCipher(algorithm.id()) ? ICryptoCipher::Create(algorithm.id()) : nullptr;
    if (cipher == nullptr)
        return logger.fail(false, "Unsupported decryption algorithm");
    const element iv = algorithm.parameters() != nullptr ? CCryptoASN1OctetStringObject(algorithm.parameters()).bytes() : element();

    const auto found =
        std::ranges::find_if(data.recipients, [&](const KeyRecipient& one) { return one.recipient.means(certificate); });
    if (found == data.recipients.end()) {
        const bool mayBeOther = data.otherRecipients != 0 && key.decrypter() == nullptr;
        return mayBeOther ? logger.fail(false, "Only messages for RSA keys can be opened")
                          : logger.fail(false, "The message is not for this recipient");
    }
    element contentKey;
    if (key.decrypter() == nullptr ||
        !DecryptKey(*found, *key.decrypter(), static_cast<std::uint32_t>(cipher->keySize()), contentKey))
        return logger.fail(false, "Unsupported decryption algorithm");
    if (!cipher->decrypt(contentKey.bytes(), iv.bytes(), data.encryptedContent.encryptedContent.bytes(), content))
        return logger.fail(false, "The message cannot be opened");
    if (contentType != nullptr)
        *contentType = data.encryptedContent.contentOid();
    return logger.setResult(true);
}

} // namespace ccrypto
