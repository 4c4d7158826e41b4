#pragma once

#include "asn1/types/asn1_collections.h"
#include "asn1/types/oid.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

/// One attribute of a name, or one extension: an OID, the critical flag of an extension, and the value.
class CCrypto_X509_Value : public CCryptoASN1Object {
public:
    CCrypto_X509_Value();
    /// \param node the SEQUENCE, or the SET of one that a name has.
    explicit CCrypto_X509_Value(const elementNode* node);
    /// \param value is copied, one node.
    CCrypto_X509_Value(const ccrypto::Oid& oid, const elementNode* value, bool critical = false);

    bool BuildNode() override;
    /// \param node as for the constructor. \return false, logged: "CCrypto_X509_Value; Parser or value missing?" or
    /// "CCrypto_X509_Value; Invalid value?".
    bool Parse(const elementNode* node);
    bool ParseNode() override;

    [[nodiscard]] const ccrypto::Oid& oid() const { return oid_; }
    [[nodiscard]] bool isCritical() const { return critical_; }
    /// What follows the OID, and after the flag: of an extension the OCTET STRING. Null when there is none.
    [[nodiscard]] const elementNode* value() const { return value_; }
    /// The octets inside the OCTET STRING of an extension; empty for anything else.
    [[nodiscard]] element content() const;
    /// The characters of an attribute's value as UTF-8, whatever string type it has; empty, with `isText` false, for another type
    /// and for octets that are not text of their type.
    [[nodiscard]] CCryptoString text(bool* isText = nullptr) const;

    /// Counts the relative names of a name from 0: values of one SET have the same number.
    [[nodiscard]] std::uint32_t relativeName() const { return relativeName_; }
    void setRelativeName(std::uint32_t number) { relativeName_ = number; }

protected:
    void ClearFields() override;

private:
    friend class CCrypto_X509_ValueList;

    ccrypto::Oid oid_;
    bool critical_ = false;
    const elementNode* value_ = nullptr; ///< in ownValue_, in what was parsed, or in the tree that the list refers to
    ccrypto::ElementNodePtr ownValue_;
    std::uint32_t relativeName_ = 0;
};

/// The values of a name, in which each SET is one relative name, or a list of extensions; in the order of the octets.
class CCrypto_X509_ValueList {
public:
    static constexpr std::uint32_t maxValues = 10'000;

    CCrypto_X509_ValueList() = default;
    CCrypto_X509_ValueList(CCrypto_X509_ValueList&&) noexcept = default;
    CCrypto_X509_ValueList& operator=(CCrypto_X509_ValueList&&) noexcept = default;

    /// \param first of the list; null for an empty one. \param asName a list of SETs, else of extensions. \return false, logged,
    /// the list empty, for anything else, and for more than maxValues.
    [[nodiscard]] bool Parse(const elementNode* first, bool asName);
    /// The same of a name. \param der the SEQUENCE; anything else, and octets after it, give false.
    [[nodiscard]] bool ParseName(std::span<const std::uint8_t> der);
    /// The same without copies, for the owner of a tree: the nodes must outlive the list and what is moved out of it.
    /// \param octets the SEQUENCE that the nodes are read from.
    [[nodiscard]] bool Refer(const elementNode* first, std::span<const std::uint8_t> octets, bool asName);
    void clear();

    [[nodiscard]] bool isEmpty() const { return values_.empty(); }
    [[nodiscard]] const std::vector<std::unique_ptr<CCrypto_X509_Value>>& values() const { return values_; }
    void add(std::unique_ptr<CCrypto_X509_Value> value);
    /// The first value of this OID; null when there is none.
    [[nodiscard]] const CCrypto_X509_Value* find(const ccrypto::Oid& oid) const;

    /// The SEQUENCE (DER): the octets as they were read, else built of the values. \param asName of a list that was not read, as
    /// for BuildItems. Empty, logged, for values that cannot be written.
    [[nodiscard]] element GetDerEncodedElement(bool asName = true) const;
    /// The same without the identifier and length of the SEQUENCE: what the placeholders ISSUER, SUBJECT and EXTENSIONS stand for.
    /// \param asName of a list that was not read: each relative name becomes a SET, its values in the order of DER. Null for an
    /// empty list, and, logged, for values that cannot be written.
    [[nodiscard]] ccrypto::ElementNodePtr BuildItems(bool asName) const;

private:
    bool readAttributes(const elementNode& set, std::uint32_t relativeName);
    bool append(const elementNode& node, bool isAttribute, std::uint32_t relativeName);

    std::vector<std::unique_ptr<CCrypto_X509_Value>> values_;
    ccrypto::ElementNodePtr ownNodes_; ///< what the values refer to, when the list was parsed
    element readOctets_;               ///< of the SEQUENCE; empty when the list was built or changed
};
