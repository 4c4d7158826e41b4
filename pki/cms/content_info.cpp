#include "pki/cms/content_info.h"

#include "asn1/oid/oid_names.h"
#include "core/diagnostics/auto_logger.h"

#include <iterator>

using namespace ccrypto;

namespace {

constexpr const char* contentInfoTemplate =
    "SEQUENCE { OBJECT_IDENTIFIER=contentOID, CONTEXT_SPECIFIC(OPTIONAL)[0,EXPLICIT]=content }";

/// By their numbers.
const Oid contentOids[] = {
    Oid(),
    Oid::FromDotted("1.2.840.113549.1.7.1"),
    Oid::FromDotted("1.2.840.113549.1.7.2"),
    Oid::FromDotted("1.2.840.113549.1.7.3"),
    Oid::FromDotted("1.2.840.113549.1.7.4"),
    Oid::FromDotted("1.2.840.113549.1.7.5"),
    Oid::FromDotted("1.2.840.113549.1.7.6"),
    Oid::FromDotted("1.3.6.1.5.5.7.12.2"),
    Oid::FromDotted("1.3.6.1.5.5.7.12.3"),
    Oid::FromDotted("1.2.840.113549.1.9.16.2.14"),
    Oid::FromDotted("1.2.840.113549.1.9.16.1.4"),
};

} // namespace

namespace ccrypto {

ContentType ContentTypeOf(const Oid& oid)
{
    for (std::uint32_t number = 1; number < std::size(contentOids); ++number)
        if (contentOids[number] == oid)
            return static_cast<ContentType>(number);
    return ContentType::other;
}

const Oid& OidOfContentType(ContentType type)
{
    return contentOids[static_cast<std::uint32_t>(type)];
}

std::uint32_t CountItems(const elementNode* first)
{
    std::uint32_t count = 0;
    for (; first != nullptr; first = first->next())
        ++count;
    return count;
}

ElementNodePtr WrapItems(ElementType type, const elementNode* first)
{
    ElementNodePtr wrapper = elementNode::Make(type);
    if (first != nullptr)
        wrapper->set(LinkKind::content, first->clone(true));
    return wrapper;
}

} // namespace ccrypto

CCryptoPKCS7contentBase::CCryptoPKCS7contentBase(const char* templateText) : CCryptoASN1Object(templateText)
{
    const CCryptoAutoLogger logger("CCryptoPKCS7contentBase::CCryptoPKCS7contentBase", LoggerMode::resultOptional);
}

bool CCryptoPKCS7contentBase::SetContentOID(const Oid& oid)
{
    CCryptoAutoLogger logger("CCryptoPKCS7contentBase::SetContentOID");
    contentOid_ = oid;
    contentType_ = ContentTypeOf(oid);
    if (logging::Level() != 0) {
        const CCryptoString dotted = oid.dotted();
        const char* const name = FindOidName(dotted.view());
        logger.WriteLog("OID = %s (%s)", dotted.c_str(), name != nullptr ? name : "");
    }
    return logger.setResult(!oid.isNone());
}

void CCryptoPKCS7contentBase::ClearFields()
{
    contentOid_ = {};
    contentType_ = ContentType::other;
}

bool CCryptoPKCS7contentBase::ReadContentOID()
{
    return SetContentOID(Oid::OfNode(data()->content()));
}

CCryptoPKCS7ContentInfoObject::CCryptoPKCS7ContentInfoObject() : CCryptoPKCS7contentBase(contentInfoTemplate)
{
    const CCryptoAutoLogger logger("CCryptoPKCS7ContentInfoObject::CCryptoPKCS7ContentInfoObject", LoggerMode::resultOptional);
}

CCryptoPKCS7ContentInfoObject::CCryptoPKCS7ContentInfoObject(const elementNode* node) : CCryptoPKCS7ContentInfoObject()
{
    construct(node);
}

bool CCryptoPKCS7ContentInfoObject::BuildNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7ContentInfoObject::BuildNode");
    const element oid(contentOid().dotted().view());
    return logger.setResult(!contentOid().isNone() && builder().fill("contentOID", oid) &&
                            builder().fill_tree("content", content_.get()));
}

bool CCryptoPKCS7ContentInfoObject::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7ContentInfoObject::ParseNode");
    if (!ReadContentOID())
        return logger.setResult(false);
    const elementNode* const content = find("content");
    if (isBound("content") && (content == nullptr || content->next() != nullptr))
        return logger.fail(false, "The content is not one element");
    return logger.setResult(true);
}

void CCryptoPKCS7ContentInfoObject::ClearFields()
{
    CCryptoPKCS7contentBase::ClearFields();
    content_.reset();
}
