#include "pki/cms/signer_info.h"

#include "core/diagnostics/auto_logger.h"
#include "pki/cms/signed_message_writing.h"

using namespace ccrypto;

namespace {

constexpr const char* signerInfoTemplate =
    "SEQUENCE {INTEGER = version;signerIdentifier,digestAlgorithm,CONTEXT_SPECIFIC[0, "
    "CONSTRUCTED](OPTIONAL){authenticatedAttributes}signatureAlgorithm,OCTET_STRING { signature }CONTEXT_SPECIFIC[1, "
    "CONSTRUCTED](OPTIONAL){unAuthenticatedAttributes}}";
constexpr std::uint32_t byIssuerAndSerial = 1;
constexpr std::uint32_t byKeyIdentifier = 3;

} // namespace

CCryptoPKCS7SignerInfo::CCryptoPKCS7SignerInfo() : CCryptoASN1Object(signerInfoTemplate)
{
    const CCryptoAutoLogger logger("CCryptoPKCS7SignerInfo::CCryptoPKCS7SignerInfo", LoggerMode::resultOptional);
}

CCryptoPKCS7SignerInfo::CCryptoPKCS7SignerInfo(const elementNode* node) : CCryptoPKCS7SignerInfo()
{
    construct(node);
}

void CCryptoPKCS7SignerInfo::ClearFields()
{
    version = byIssuerAndSerial;
    signer = {};
    signature = {};
    signedAttributes.reset();
    unsignedAttributes.reset();
}

bool CCryptoPKCS7SignerInfo::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7SignerInfo::ParseNode");
    version = findNumber("version");
    // First, since a later version may identify its signer otherwise.
    if (findBytes("version").length() != 1 || (version != byIssuerAndSerial && version != byKeyIdentifier))
        return logger.fail(false, "Invalid version");
    if (!signer.read(find("signerIdentifier")))
        return logger.fail(false, "The signer is not identified by issuer and serial number, nor by a key identifier");
    if (signer.isByKey() != (version == byKeyIdentifier))
        return logger.fail(false, "Invalid version");
    signature = Octets(findBytes("signature"));
    return logger.setResult(digestAlgorithm.Parse(find("digestAlgorithm")) &&
                            signatureAlgorithm.Parse(find("signatureAlgorithm")) &&
                            readAttributes("authenticatedAttributes", signedAttributes) &&
                            readAttributes("unAuthenticatedAttributes", unsignedAttributes));
}

bool CCryptoPKCS7SignerInfo::readAttributes(const char* placeholder, std::unique_ptr<CCryptoPKCS7Attributes>& attributes)
{
    if (!isBound(placeholder))
        return true;
    attributes = std::make_unique<CCryptoPKCS7Attributes>();
    return attributes->ParseItems(find(placeholder));
}

bool CCryptoPKCS7SignerInfo::BuildNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7SignerInfo::BuildNode");
    if (signer.isByKey() || signedAttributes == nullptr)
        return logger.fail(false, "A signer is written with issuer, serial number and signed attributes");
    const element digest = digestAlgorithm.BuildDer();
    const element attributes = signedAttributes->encodedSet();
    const element algorithm = signatureAlgorithm.BuildDer();
    const element more = unsignedAttributes != nullptr ? unsignedAttributes->encodedSet() : element();
    if (digest.isEmpty() || algorithm.isEmpty())
        return logger.setResult(false);
    const element der = WriteSigner({.issuer = signer.issuer.bytes(),
                                     .serialNumber = signer.serialNumber.bytes(),
                                     .digestAlgorithm = digest.bytes(),
                                     .signedAttributes = attributes.bytes(),
                                     .signatureAlgorithm = algorithm.bytes(),
                                     .signature = signature.bytes(),
                                     .unsignedAttributes = more.bytes()});
    return logger.setResult(!der.isEmpty() && builder().Load_DER_Memory(der));
}
