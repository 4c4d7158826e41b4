#pragma once

#include "asn1/types/asn1_collections.h"
#include "asn1/types/oid.h"

#include <cstdint>
#include <memory>

/// Attribute (RFC 5652, 5.3): a type, and a set of values.
class CCryptoPKCS7Attribute : public CCryptoASN1Object {
public:
    static constexpr std::uint32_t maxValues = 10'000;

    CCryptoPKCS7Attribute();
    explicit CCryptoPKCS7Attribute(const elementNode* node);
    /// Takes the values, a list.
    CCryptoPKCS7Attribute(const ccrypto::Oid& type, ccrypto::ElementNodePtr values);

    bool BuildNode() override;
    /// Logs "Attribute type not found?" and "attrValues parsing error".
    bool ParseNode() override;

    [[nodiscard]] const ccrypto::Oid& type() const { return type_; }
    /// The first value, the others as its siblings; null for none.
    [[nodiscard]] const elementNode* values() const;
    /// Null unless there is exactly one.
    [[nodiscard]] const elementNode* onlyValue() const;

protected:
    void ClearFields() override;
    const char* MeaningOfMismatch() const override;

private:
    ccrypto::Oid type_;
    ccrypto::ElementNodePtr values_; ///< to be built
};

/// The signed or the unsigned attributes of a signer, in the order given.
class CCryptoPKCS7Attributes : public CCryptoASN1Collection {
public:
    static constexpr std::uint32_t maxAttributes = 10'000;

    CCryptoPKCS7Attributes();

    bool ParseNode() override;

    /// \param first of a list without the SET around it: in a signer's description an implicit tag takes the SET's place.
    /// \return false, logged, for an empty list, for more than maxAttributes, and for what is not an attribute.
    bool ParseItems(const elementNode* first);

    [[nodiscard]] const CCryptoPKCS7Attribute& attribute(std::uint32_t index) const;
    [[nodiscard]] std::uint32_t size() const { return static_cast<std::uint32_t>(members().size()); }
    /// How many are of this type.
    [[nodiscard]] std::uint32_t count(const ccrypto::Oid& type) const;
    /// The first of this type; null when there is none.
    [[nodiscard]] const CCryptoPKCS7Attribute* find(const ccrypto::Oid& type) const;

    /// The SET, as it was read: what is signed (RFC 5652, 5.4).
    [[nodiscard]] element encodedSet() const { return CCryptoParser::ToDer(data()); }
};

namespace ccrypto {

/// A SET OF in the order of DER (X.690, 11.6): its elements by their octets. Empty for what is not one SET.
[[nodiscard]] element SortedSet(const element& set);

/// The object identifiers of attributes.
namespace cms {
extern const Oid contentType, messageDigest, signingTime, counterSignature, algorithmProtection, signingCertificate,
    signingCertificateV2, revocationValues, revocationReferences, pdfRevocationInformation;
} // namespace cms

} // namespace ccrypto
