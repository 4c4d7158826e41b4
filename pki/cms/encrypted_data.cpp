#include "pki/cms/encrypted_data.h"

#include "asn1/der/der_cursor.h"
#include "asn1/parser/parser.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/mac/hmac.h"
#include "pki/cms/tree_filling.h"
#include "pki/keys/password_objects.h"

using namespace ccrypto;

namespace {

constexpr const char* encryptedDataTemplate = "SEQUENCE { INTEGER = version, encryptedContentInfo }";

/// unprotectedAttrs (RFC 5652, 8), and nothing after them.
bool AreAttributes(const elementNode& node)
{
    constexpr std::uint8_t attributesTag = 0xA1;
    return node.next() == nullptr && OnlyValue(CCryptoParser::ToDer(node.clone().get()).bytes(), attributesTag);
}

/// Whether PBES2 names a function that is no HMAC of the algorithm table. One that is not named is HMAC with SHA-1.
bool HasOtherPrf(const CCryptoAlgorithmIdentifier& how)
{
    CCryptoPBES2Parameters plain;
    CCryptoPBES2Parameters rc2(CCryptoPBES2Parameters::Form::rc2);
    if (how.id() != algorithm::pbes2)
        return false;
    if (plain.Parse(how.parameters()))
        return !IsHMAC(plain.prf);
    return rc2.Parse(how.parameters()) && !IsHMAC(rc2.prf);
}

} // namespace

bool CCryptoPKCS7encryptedContentObject::Encrypt(const SCryptoPasswordEncryption& parameters, std::string_view password,
                                                 std::span<const std::uint8_t> content, ICryptoRandom& random)
{
    CCryptoAutoLogger logger("CCryptoPKCS7encryptedContentObject::Encrypt");
    if (parameters.scheme == algorithm::pbes2 && !IsHMAC(parameters.prf))
        return logger.fail(false, "Unsupported prf algorithm");
    if (!CCryptoPasswordEncryption::Supports(parameters))
        return logger.fail(false, "Unsupported encryption algorithm");
    if (content.empty())
        return logger.fail(false, "There is nothing to encrypt");
    encryptedContent = CCryptoPasswordEncryption::Encrypt(parameters, password, content, contentEncryptionAlgorithm, random);
    return logger.setResult(!encryptedContent.isEmpty() && SetContentOID(OidOfContentType(ContentType::data)));
}

bool CCryptoPKCS7encryptedContentObject::Decrypt(std::optional<std::string_view> password, element& content) const
{
    CCryptoAutoLogger logger("CCryptoPKCS7encryptedContentObject::Decrypt");
    content = {};
    if (HasOtherPrf(contentEncryptionAlgorithm))
        return logger.fail(false, "Unsupported prf algorithm");
    if (!CCryptoPasswordEncryption::Understands(contentEncryptionAlgorithm))
        return logger.fail(false, "Unsupported decryption algorithm");
    if (!CCryptoPasswordEncryption::Decrypt(contentEncryptionAlgorithm, password, encryptedContent.bytes(), content))
        return logger.fail(false, "Invalid contentData");
    return logger.setResult(true);
}

CCryptoPKCS7encryptedDataObject::CCryptoPKCS7encryptedDataObject() : CCryptoASN1Object(encryptedDataTemplate)
{
    const CCryptoAutoLogger logger("CCryptoPKCS7encryptedDataObject::CCryptoPKCS7encryptedDataObject", LoggerMode::resultOptional);
    // unprotectedAttrs: see ParseNode().
    allowSurplus();
}

bool CCryptoPKCS7encryptedDataObject::BuildNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7encryptedDataObject::BuildNode");
    return logger.setResult(builder().fill("version", element(std::uint32_t{0})) &&
                            FillTree(builder(), "encryptedContentInfo", encryptedContentInfo.BuildTree()));
}

bool CCryptoPKCS7encryptedDataObject::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7encryptedDataObject::ParseNode");
    const element version = findBytes("version");
    if (version.length() != 1 || (version[0] != 0 && version[0] != 2))
        return logger.fail(false, "Invalid version");
    const elementNode* const info = find("encryptedContentInfo");
    const elementNode* const attributes = info != nullptr ? info->next() : nullptr;
    if (attributes != nullptr && !AreAttributes(*attributes))
        return logger.fail(false, "What follows the content is not attributes");
    // Version 2 says that there are attributes (RFC 5652, 8).
    if ((version[0] == 2) != (attributes != nullptr))
        return logger.fail(false, "Invalid version");
    if (!encryptedContentInfo.ParseContent(info))
        return logger.fail(false, "Invalid contentData");
    return logger.setResult(true);
}

bool CCryptoPKCS7encryptedDataObject::Encrypt(const SCryptoPasswordEncryption& parameters, std::string_view password,
                                              std::span<const std::uint8_t> content, ICryptoRandom& random)
{
    CCryptoAutoLogger logger("CCryptoPKCS7encryptedDataObject::Encrypt");
    return logger.setResult(encryptedContentInfo.Encrypt(parameters, password, content, random));
}

bool CCryptoPKCS7encryptedDataObject::Decrypt(std::optional<std::string_view> password, element& content) const
{
    CCryptoAutoLogger logger("CCryptoPKCS7encryptedDataObject::Decrypt");
    return logger.setResult(encryptedContentInfo.Decrypt(password, content));
}
