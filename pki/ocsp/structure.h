#pragma once

#include "asn1/types/algorithm_identifier.h"
#include "asn1/types/asn1_object.h"
#include "core/system/date_time.h"
#include "pki/x509/x509_value.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

/// The structures of the Online Certificate Status Protocol (RFC 6960, 4).
namespace CCryptoOCSP {

/// One structure with its template. Reading fails, logged, for data that does not have the structure and leaves the object empty;
/// building fails, logged, for fields that do not make one.
class CStructure : public CCryptoASN1Object {
public:
    /// Requests, responses and certificates of one object.
    static constexpr std::uint32_t maxMembers = 10'000;

    bool BuildNode() final { return SetTemplateValues(); }
    /// Fills the template from the fields.
    virtual bool SetTemplateValues() = 0;
    /// Empties the fields.
    void Reset() { ClearFields(); }

protected:
    using CCryptoASN1Object::CCryptoASN1Object;

    /// Decodes and parses one structure, after which nothing but padding may follow. \param isDer whether the octets are DER.
    bool load(const element& octets, bool& isDer);

    /// What the one element is that a name stands for. A name alone inside a tag stands for all that is inside.
    /// \return null when there is none, or more than one.
    const elementNode* findOnly(std::string_view name) const;
    /// Whether a name stands for nothing, or for the number 0: all versions are 1, which is the default.
    bool hasVersion1() const;
    /// Reads the extensions, if there are any. \return false, logged, for what is not a list of extensions.
    bool findExtensions(std::string_view name, CCrypto_X509_ValueList& extensions) const;

    bool fillTime(std::string_view name, const CCryptoDateTime& time);
    /// \param der one element.
    bool fillDer(std::string_view name, const element& der);
    bool fillExtensions(std::string_view name, const CCrypto_X509_ValueList& extensions);
    /// Keeps what an algorithm that was read says, though it may be unknown.
    bool fillAlgorithm(std::string_view name, CCryptoAlgorithmIdentifier& algorithm);
};

} // namespace CCryptoOCSP

namespace ccrypto::internal {

/// A GeneralizedTime of whole seconds (RFC 6960, 4.2.2.1, with RFC 5280, 4.1.2.5.2). \return an invalid time for anything else.
[[nodiscard]] CCryptoDateTime ReadOcspTime(const elementNode* node);

/// The octets of an INTEGER as a value that is written with these octets.
[[nodiscard]] element IntegerOfOctets(const element& octets);

/// Whether a list, the first and its siblings, has at most maxMembers.
[[nodiscard]] bool IsWithinLimit(const elementNode* first);

/// The members of a list, the first and its siblings. \return false for one that does not parse and for too many.
template <typename Member>
[[nodiscard]] bool ParseMembers(const elementNode* first, std::vector<std::unique_ptr<Member>>& members)
{
    if (!IsWithinLimit(first))
        return false;
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        auto member = std::make_unique<Member>();
        if (!member->Parse(node))
            return false;
        members.push_back(std::move(member));
    }
    return true;
}

/// The trees of the members as one list. \return false when one cannot be built and for too many.
template <typename Member>
[[nodiscard]] bool BuildMembers(const std::vector<std::unique_ptr<Member>>& members, ElementNodePtr& list)
{
    if (members.size() > CCryptoOCSP::CStructure::maxMembers)
        return false;
    elementNode* last = nullptr;
    for (const auto& member : members) {
        ElementNodePtr tree = member != nullptr ? member->BuildTree() : nullptr;
        if (tree == nullptr)
            return false;
        last = last == nullptr ? (list = std::move(tree)).get() : last->set(LinkKind::sibling, std::move(tree));
    }
    return true;
}

} // namespace ccrypto::internal
