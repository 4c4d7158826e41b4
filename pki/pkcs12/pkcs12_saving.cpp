#include "core/diagnostics/auto_logger.h"
#include "crypto/hash/hash.h"
#include "crypto/kdf/key_derivation.h"
#include "pki/cms/encrypted_data.h"
#include "pki/cms/tree_filling.h"
#include "pki/keys/key_objects.h"
#include "pki/pkcs12/pkcs12.h"

#include <algorithm>
#include <array>

using namespace ccrypto;

namespace {

constexpr std::uint32_t macSaltLength = 16;

constexpr const char* fileTemplate =
    "SEQUENCE{INTEGER=3,SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.7.1\",CONTEXT_SPECIFIC[0,CONSTRUCTED]"
    "{OCTET_STRING[PRIMITIVE]{contents}}}macData(OPTIONAL)}";
constexpr const char* listTemplate = "SEQUENCE[CONSTRUCTED]{items}";
constexpr const char* dataTemplate = "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.7.1\",CONTEXT_SPECIFIC[0,CONSTRUCTED]"
                                     "{OCTET_STRING[PRIMITIVE]{contents}}}";
constexpr const char* encryptedTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.7.6\",CONTEXT_SPECIFIC[0,CONSTRUCTED]{encryptedData}}";
constexpr const char* keyBagTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.12.10.1.2\",CONTEXT_SPECIFIC[0,CONSTRUCTED]{encryptedKey}"
    "SET[CONSTRUCTED](OPTIONAL){attributes}}";
constexpr const char* certificateBagTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.12.10.1.3\",CONTEXT_SPECIFIC[0,CONSTRUCTED]{"
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.9.22.1\",CONTEXT_SPECIFIC[0,CONSTRUCTED]"
    "{OCTET_STRING[PRIMITIVE]{certificate}}}}SET[CONSTRUCTED](OPTIONAL){attributes}}";
constexpr const char* nameTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.9.20\",SET[CONSTRUCTED]{BMPString[PRIMITIVE]{name}}}";
constexpr const char* keyIdTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.9.21\",SET[CONSTRUCTED]{OCTET_STRING[PRIMITIVE]{keyId}}}";

void Append(element& list, const element& der)
{
    list.append(der.data(), der.length());
}

element FilledWith(const char* templateText, std::string_view name, const element& octets)
{
    CCryptoParser parser = TemplateToFill(templateText);
    return parser.fill(name, Octets(octets)) ? parser.ToDer() : element();
}

/// The attributes of a key and its certificate, one after the other as DER orders a SET (X.690, 11.6). \return false for a name
/// that is not valid text.
bool MakeAttributes(const CCryptoString& friendlyName, const element& keyId, element& attributes)
{
    std::vector<element> items;
    if (!friendlyName.isEmpty()) {
        element units = CCryptoKeyDerivation::PKCS12Password(friendlyName.view());
        if (units.isEmpty())
            return false;
        units.resize(units.length() - 2);
        items.push_back(FilledWith(nameTemplate, "name", units));
    }
    if (!keyId.isEmpty())
        items.push_back(FilledWith(keyIdTemplate, "keyId", keyId));
    std::ranges::sort(items, [](const element& left, const element& right) {
        return std::ranges::lexicographical_compare(left.bytes(), right.bytes());
    });
    for (const element& item : items)
        Append(attributes, item);
    return std::ranges::none_of(items, &element::isEmpty);
}

/// One file that is being made.
class PKCS12Writer {
public:
    PKCS12Writer(std::string_view password, const SCryptoPKCS12Options& options, ICryptoRandom& random)
        : password_(password), options_(options), random_(random)
    {
    }

    [[nodiscard]] bool addCertificates(std::span<const CertificatePtr> certificates, const ICryptoKeyPair* key);
    [[nodiscard]] bool addKey(const ICryptoKeyPair& key);
    [[nodiscard]] element finish();

private:
    [[nodiscard]] bool makeAttributes(const CCrypto_X509_Certificate& certificate);
    [[nodiscard]] bool signContents(const element& contents, CCryptoParser& file);

    std::string_view password_;
    const SCryptoPKCS12Options& options_;
    ICryptoRandom& random_;
    element keyAttributes_; ///< of the key and its certificate
    element contents_;      ///< the ContentInfos
};

bool PKCS12Writer::makeAttributes(const CCrypto_X509_Certificate& certificate)
{
    std::array<std::uint8_t, 20> keyId{};
    const auto hash = ICryptoHash::Create(algorithm::sha1);
    if (hash == nullptr)
        return false;
    hash->update(certificate.der().data(), certificate.der().length());
    hash->final(keyId.data());
    return MakeAttributes(options_.friendlyName, element(keyId.data(), keyId.size()), keyAttributes_);
}

bool PKCS12Writer::addCertificates(std::span<const CertificatePtr> certificates, const ICryptoKeyPair* key)
{
    const element publicKey = key != nullptr ? key->publicKeyInfo() : element();
    element bags;
    bool isBound = false;
    for (const CertificatePtr& certificate : certificates) {
        if (certificate == nullptr || certificate->der().isEmpty())
            return false;
        CCryptoParser bag = TemplateToFill(certificateBagTemplate);
        if (!bag.fill("certificate", Octets(certificate->der())))
            return false;
        if (!isBound && key != nullptr && certificate->publicKey()->publicKeyInfo() == publicKey) {
            isBound = true;
            if (!makeAttributes(*certificate) || !FillDer(bag, "attributes", keyAttributes_))
                return false;
        }
        Append(bags, bag.ToDer());
    }
    if (key != nullptr && !isBound && !MakeAttributes(options_.friendlyName, {}, keyAttributes_))
        return false;
    if (bags.isEmpty())
        return true;
    CCryptoParser list = TemplateToFill(listTemplate);
    if (!FillDer(list, "items", bags))
        return false;
    CCryptoPKCS7encryptedDataObject data;
    CCryptoParser info = TemplateToFill(encryptedTemplate);
    if (!data.Encrypt(options_.encryption, password_, list.ToDer().bytes(), random_) ||
        !FillTree(info, "encryptedData", data.BuildTree()))
        return false;
    Append(contents_, info.ToDer());
    return true;
}

bool PKCS12Writer::addKey(const ICryptoKeyPair& key)
{
    const element plain = key.privateKeyInfo();
    if (plain.isEmpty())
        return false;
    CCryptoEncryptedPrivateKeyInfo encrypted;
    encrypted.encryptedData =
        CCryptoPasswordEncryption::Encrypt(options_.encryption, password_, plain.bytes(), encrypted.algorithm, random_);
    CCryptoParser bag = TemplateToFill(keyBagTemplate);
    if (encrypted.encryptedData.isEmpty() || !FillTree(bag, "encryptedKey", encrypted.BuildTree()))
        return false;
    if (!keyAttributes_.isEmpty() && !FillDer(bag, "attributes", keyAttributes_))
        return false;
    CCryptoParser list = TemplateToFill(listTemplate);
    if (!FillDer(list, "items", bag.ToDer()))
        return false;
    Append(contents_, FilledWith(dataTemplate, "contents", list.ToDer()));
    return true;
}

bool PKCS12Writer::signContents(const element& contents, CCryptoParser& file)
{
    element salt;
    salt.resize(macSaltLength);
    CCryptoPKCS12MacData mac;
    if (!random_.generate({salt.data(), salt.length()}))
        return false;
    mac.set(options_.macHash, options_.macIterations, salt, options_.mac == SCryptoPKCS12Options::Mac::pbmac1);
    return mac.sign(password_, contents.bytes()) && FillTree(file, "macData", mac.BuildTree());
}

element PKCS12Writer::finish()
{
    CCryptoParser list = TemplateToFill(listTemplate);
    CCryptoParser file = TemplateToFill(fileTemplate);
    if (!FillDer(list, "items", contents_))
        return {};
    const element contents = list.ToDer();
    if (!file.fill("contents", Octets(contents)))
        return {};
    if (options_.mac != SCryptoPKCS12Options::Mac::none && !signContents(contents, file))
        return {};
    return file.ToDer();
}

} // namespace

element CCryptoPKCS12::Save(const ICryptoKeyPair* key, std::span<const CertificatePtr> certificates, std::string_view password,
                            const SCryptoPKCS12Options& options, ICryptoRandom& random)
{
    CCryptoAutoLogger logger("CCryptoPKCS12::Save");
    if (key == nullptr && certificates.empty())
        return logger.fail(element(), "There is neither a key nor a certificate");
    // What Load() would refuse.
    const std::uint64_t encrypted = (key != nullptr ? 1U : 0U) + (certificates.empty() ? 0U : 1U);
    const std::uint64_t iterations =
        encrypted * options.encryption.iterations + (options.mac != SCryptoPKCS12Options::Mac::none ? options.macIterations : 0U);
    if (iterations > maxIterations)
        return logger.fail(element(), "All keys of the file together would take more than 50,000,000 iterations");
    if (certificates.size() >= PKCS12SafeReader::maxBags)
        return logger.fail(element(), "There are too many certificates");
    PKCS12Writer writer(password, options, random);
    if (!writer.addCertificates(certificates, key))
        return logger.fail(element(), "The certificates cannot be written");
    if (key != nullptr && !writer.addKey(*key))
        return logger.fail(element(), "The key cannot be written");
    element file = writer.finish();
    if (file.isEmpty())
        return logger.fail(element(), "The file cannot be made");
    logger.setResult(true);
    return file;
}
