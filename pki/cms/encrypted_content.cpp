#include "pki/cms/encrypted_content.h"

#include "asn1/tree/node_parts.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/cms/tree_filling.h"

using namespace ccrypto;

namespace {

constexpr const char* encryptedContentTemplate =
    "SEQUENCE { OBJECT_IDENTIFIER=contentOID, contentEncryptionAlgorithm, CONTEXT_SPECIFIC[0,IMPLICIT]=encryptedContent }";

/// The octets of the pieces one after the other; false for what is not a list of them.
bool JoinPieces(const elementNode* piece, element& octets)
{
    for (; piece != nullptr; piece = piece->next()) {
        if (piece->type() != ElementType::octetString)
            return false;
        if (const elementNode* const value = piece->value(); value != nullptr)
            octets.append(value->token().data(), value->token().length());
    }
    return true;
}

} // namespace

CCryptoPKCS7encryptedContentObject::CCryptoPKCS7encryptedContentObject() : CCryptoPKCS7contentBase(encryptedContentTemplate)
{
    const CCryptoAutoLogger logger("CCryptoPKCS7encryptedContentObject::CCryptoPKCS7encryptedContentObject",
                                   LoggerMode::resultOptional);
}

bool CCryptoPKCS7encryptedContentObject::ParseContent(const elementNode* node)
{
    CCryptoAutoLogger logger("CCryptoPKCS7encryptedContentObject::ParseContent");
    if (node == nullptr)
        return logger.fail(false, "Invalid contentData");
    const ElementNodePtr copy = node->clone();
    elementNode* const content = CCryptoParser::find_path(copy.get(), "{,,");
    const bool isInPieces = content != nullptr && content->type() == ElementType::contextSpecific &&
                            content->content() != nullptr && content->content()->type() == ElementType::octetString;
    if (isInPieces) {
        element octets;
        if (!JoinPieces(content->content(), octets))
            return logger.fail(false, "Invalid contentData");
        content->set(LinkKind::content, std::move(octets));
    }
    return logger.setResult(Parse(copy.get()));
}

void CCryptoPKCS7encryptedContentObject::ClearFields()
{
    CCryptoPKCS7contentBase::ClearFields();
    encryptedContent = {};
}

bool CCryptoPKCS7encryptedContentObject::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7encryptedContentObject::ParseNode");
    encryptedContent = Octets(findBytes("encryptedContent"));
    // Padding, and a stream cipher of anything but nothing, leave octets.
    if (encryptedContent.isEmpty())
        return logger.fail(false, "Invalid contentData");
    return logger.setResult(ReadContentOID() && contentEncryptionAlgorithm.Parse(find("contentEncryptionAlgorithm")));
}

bool CCryptoPKCS7encryptedContentObject::BuildNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7encryptedContentObject::BuildNode");
    return logger.setResult(!contentOid().isNone() && builder().fill("contentOID", element(contentOid().dotted().view())) &&
                            FillTree(builder(), "contentEncryptionAlgorithm", contentEncryptionAlgorithm.BuildTree()) &&
                            builder().fill("encryptedContent", Octets(encryptedContent)));
}
