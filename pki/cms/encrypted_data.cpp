#include "pki/cms/encrypted_data.h"

#include "core/diagnostics/auto_logger.h"
#include "crypto/mac/hmac.h"
#include "pki/cms/tree_filling.h"
#include "pki/keys/password_objects.h"

using namespace ccrypto;

namespace {

constexpr const char* encryptedDataTemplate = "SEQUENCE { INTEGER = version, encryptedContentInfo }";

/// Whether PBES2 names a function that is no HMAC of the algorithm table.
bool HasOtherPrf(const CCryptoAlgorithmIdentifier& how)
{
    CCryptoPBES2Parameters plain;
    CCryptoPBES2Parameters rc2(CCryptoPBES2Parameters::Form::rc2);
    if (how.id() != algorithm::pbes2)
        return false;
    if (plain.Parse(how.parameters()))
        return HashOfHMAC(plain.prf) == plain.prf;
    return rc2.Parse(how.parameters()) && HashOfHMAC(rc2.prf) == rc2.prf;
}

} // namespace

bool CCryptoPKCS7encryptedContentObject::Encrypt(const SCryptoPasswordEncryption& parameters, std::string_view password,
                                                 std::span<const std::uint8_t> content, ICryptoRandom& random)
{
    CCryptoAutoLogger logger("CCryptoPKCS7encryptedContentObject::Encrypt");
    if (parameters.scheme == algorithm::pbes2 && HashOfHMAC(parameters.prf) == parameters.prf)
        return logger.fail(false, "Unsupported prf algorithm");
    encryptedContent = CCryptoPasswordEncryption::Encrypt(parameters, password, content, contentEncryptionAlgorithm, random);
    if (encryptedContent.isEmpty())
        return logger.fail(false, "Unsupported encryption algorithm");
    return logger.setResult(SetContentOID(OidOfContentType(ContentType::data)));
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
    // unprotectedAttrs may follow.
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
    if (!encryptedContentInfo.ParseContent(find("encryptedContentInfo")))
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
