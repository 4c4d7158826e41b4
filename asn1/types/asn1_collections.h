#pragma once

#include "asn1/types/asn1_object.h"

#include <memory>
#include <vector>

/// A SET of one value, of any type.
class CCryptoASN1SETObject : public CCryptoASN1Object {
public:
    CCryptoASN1SETObject();
    explicit CCryptoASN1SETObject(const elementNode* node);

    bool BuildNode() override;
    bool ParseNode() override;

    /// Null for an empty set.
    const elementNode* value() const { return value_.get(); }
    void setValue(const elementNode* value) { value_ = value != nullptr ? value->clone(true) : nullptr; }

protected:
    void ClearFields() override { value_.reset(); }

private:
    ccrypto::ElementNodePtr value_;
};

namespace ccrypto {

/// Makes an empty member.
using Asn1MemberMaker = std::unique_ptr<CCryptoASN1Object> (*)();

template <typename Member>
std::unique_ptr<CCryptoASN1Object> MakeAsn1Member()
{
    return std::make_unique<Member>();
}

} // namespace ccrypto

/// Members of one type, which CreateMember of a subclass makes, or a maker that is given. A member may be several elements long:
/// the next begins after what its template took. A member that does not parse fails the whole, which then has no members.
class CCryptoASN1Collection : public CCryptoASN1Object {
public:
    std::unique_ptr<CCryptoASN1Object> CreateMember() override { return maker_ != nullptr ? maker_() : nullptr; }
    bool BuildNode() override;
    bool ParseNode() override;

    const std::vector<std::unique_ptr<CCryptoASN1Object>>& members() const { return members_; }
    void add(std::unique_ptr<CCryptoASN1Object> member) { members_.push_back(std::move(member)); }

protected:
    CCryptoASN1Collection(const char* templateText, const char* placeholder, ccrypto::Asn1MemberMaker maker)
        : CCryptoASN1Object(templateText), placeholder_(placeholder), maker_(maker)
    {
    }
    void ClearFields() override { members_.clear(); }

private:
    const char* placeholder_;
    ccrypto::Asn1MemberMaker maker_;
    std::vector<std::unique_ptr<CCryptoASN1Object>> members_;
};

/// SET OF, in the order given.
class CCryptoASN1SETofObjects : public CCryptoASN1Collection {
public:
    explicit CCryptoASN1SETofObjects(ccrypto::Asn1MemberMaker maker = nullptr);
    CCryptoASN1SETofObjects(const elementNode* node, ccrypto::Asn1MemberMaker maker);
    const std::vector<std::unique_ptr<CCryptoASN1Object>>& setOfObjects() const { return members(); }
};

/// SEQUENCE OF.
class CCryptoASN1SequenceOfObjects : public CCryptoASN1Collection {
public:
    explicit CCryptoASN1SequenceOfObjects(ccrypto::Asn1MemberMaker maker = nullptr);
    CCryptoASN1SequenceOfObjects(const elementNode* node, ccrypto::Asn1MemberMaker maker);
    const std::vector<std::unique_ptr<CCryptoASN1Object>>& objects() const { return members(); }
};
