#pragma once

#include "asn1/types/asn1_object.h"
#include "asn1/types/oid.h"

#include <cstdint>

namespace ccrypto {

/// What a message holds, by the system's own numbers.
enum class ContentType : std::uint32_t {
    other = 0,
    data = 1,
    signedData = 2,
    envelopedData = 3,
    signedAndEnvelopedData = 4,
    digestedData = 5,
    encryptedData = 6,
    certificateRequests = 7, ///< PKIData (RFC 5272, 3.2.1)
    certificateReply = 8,    ///< PKIResponse (RFC 5272, 3.2.2)
    timeStampToken = 9,
    timeStampInfo = 10, ///< TSTInfo (RFC 3161, 2.4.2)
};

[[nodiscard]] ContentType ContentTypeOf(const Oid& oid);
/// None for `other`.
[[nodiscard]] const Oid& OidOfContentType(ContentType type);

/// The elements of a list: `first` and its siblings.
[[nodiscard]] std::uint32_t CountItems(const elementNode* first);
/// The list as one node: its content. The node is of a universal type.
[[nodiscard]] ElementNodePtr WrapItems(ElementType type, const elementNode* first);

} // namespace ccrypto

/// What the structures share that say by an object identifier what they hold.
class CCryptoPKCS7contentBase : public CCryptoASN1Object {
public:
    [[nodiscard]] ccrypto::ContentType contentType() const { return contentType_; }
    [[nodiscard]] const ccrypto::Oid& contentOid() const { return contentOid_; }
    /// Logs "OID = %s (%s)". \return false for none.
    bool SetContentOID(const ccrypto::Oid& oid);

protected:
    explicit CCryptoPKCS7contentBase(const char* templateText);
    void ClearFields() override;
    /// Of the data bound: an OBJECT IDENTIFIER begins it.
    bool ReadContentOID();

private:
    ccrypto::ContentType contentType_ = ccrypto::ContentType::other;
    ccrypto::Oid contentOid_;
};

/// ContentInfo (RFC 5652, 3), and EncapsulatedContentInfo (RFC 5652, 5.2), whose content is an OCTET STRING.
class CCryptoPKCS7ContentInfoObject : public CCryptoPKCS7contentBase {
public:
    CCryptoPKCS7ContentInfoObject();
    explicit CCryptoPKCS7ContentInfoObject(const elementNode* node);

    bool BuildNode() override;
    /// False for content that is there and empty.
    bool ParseNode() override;

    /// Null when the content is elsewhere: detached.
    [[nodiscard]] const elementNode* content() const { return content_ != nullptr ? content_.get() : find("content"); }
    void setContent(ccrypto::ElementNodePtr content) { content_ = std::move(content); }

protected:
    void ClearFields() override;

private:
    ccrypto::ElementNodePtr content_; ///< to be built
};
