#include "pki/cms/document.h"

#include "asn1/der/der_parser.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/cms/ber_gathering.h"

using namespace ccrypto;

namespace {

/// The OCTET STRING of embedded content, in the tree of a message with signed data.
elementNode* EmbeddedContent(elementNode& message)
{
    elementNode* const octets = CCryptoParser::find_path(&message, "{,{{,,{,{");
    return octets != nullptr && octets->type() == ElementType::octetString ? octets : nullptr;
}

/// The value is taken out of the tree, since each object copies what it was parsed of.
element TakeValue(elementNode& string)
{
    elementNode* const value = string.value();
    if (value == nullptr)
        return {};
    const ElementNodePtr taken = string.release(value->linkKind());
    taken->token().setType(ElementType::bytes);
    return std::move(taken->token());
}

} // namespace

CCryptoPKCS7Document::CCryptoPKCS7Document()
{
    const CCryptoAutoLogger logger("CCryptoPKCS7Document::CCryptoPKCS7Document", LoggerMode::resultOptional);
}

void CCryptoPKCS7Document::clear()
{
    der_ = {};
    contentInfo_.reset();
    signedData_.reset();
}

bool CCryptoPKCS7Document::Parse(std::span<const std::uint8_t> message)
{
    CCryptoAutoLogger logger("CCryptoPKCS7Document::Parse");
    if (read(message))
        return logger.setResult(true);
    clear();
    return logger.fail(false);
}

bool CCryptoPKCS7Document::read(std::span<const std::uint8_t> message)
{
    CCryptoAutoLogger logger("CCryptoPKCS7Document::read");
    signedData_.reset();
    der_ = GatherBer(message);
    if (der_.isEmpty())
        return logger.setResult(false);
    CCryptoDERParser decoder;
    const ElementNodePtr tree = decoder.Decode(der_.bytes());
    if (tree == nullptr)
        return logger.setResult(false);
    // Otherwise the tree would not stand for all octets, among them those of attributes and certificates that were signed.
    if (!decoder.isDer())
        return logger.fail(false, "The message holds what DER writes otherwise");

    element content;
    const bool isSigned =
        tree->type() == ElementType::sequence && Oid::OfNode(tree->content()) == OidOfContentType(ContentType::signedData);
    if (elementNode* const octets = isSigned ? EmbeddedContent(*tree) : nullptr; octets != nullptr)
        content = TakeValue(*octets);
    contentInfo_ = std::make_unique<CCryptoPKCS7ContentInfoObject>();
    if (!contentInfo_->Parse(tree.get()))
        return logger.setResult(false);
    if (!isSigned)
        return logger.setResult(true);
    signedData_ = std::make_unique<CCryptoPKCS7SignedDataObject>();
    if (!signedData_->Parse(contentInfo_->content()))
        return logger.setResult(false);
    if (!content.isEmpty())
        signedData_->content = std::move(content);
    return logger.setResult(true);
}

void CCryptoPKCS7Document::setSignedData(std::unique_ptr<CCryptoPKCS7SignedDataObject> signedData)
{
    clear();
    signedData_ = std::move(signedData);
}

element CCryptoPKCS7Document::GetDerEncodedObject()
{
    CCryptoAutoLogger logger("CCryptoPKCS7Document::GetDerEncodedObject");
    if (!der_.isEmpty()) {
        logger.setResult(true);
        return der_;
    }
    if (signedData_ == nullptr)
        return logger.fail(element(), "The document is empty");
    element der = signedData_->GetMessage();
    logger.setResult(!der.isEmpty());
    return der;
}
