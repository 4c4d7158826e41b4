#pragma once

#include "asn1/asn1_object.h"

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

private:
    ElementNodePtr value_;
};

/// Members of one type, which CreateMember of a subclass makes. A member that does not parse fails the whole.
class CCryptoASN1Collection : public CCryptoASN1Object {
public:
    bool BuildNode() override;
    bool ParseNode() override;

    const std::vector<std::unique_ptr<CCryptoASN1Object>>& members() const { return members_; }
    void add(std::unique_ptr<CCryptoASN1Object> member) { members_.push_back(std::move(member)); }

protected:
    CCryptoASN1Collection(const char* templateText, const char* placeholder)
        : CCryptoASN1Object(templateText), placeholder_(placeholder)
    {
    }

private:
    const char* placeholder_;
    std::vector<std::unique_ptr<CCryptoASN1Object>> members_;
};

/// SET OF, in the order given.
class CCryptoASN1SETofObjects : public CCryptoASN1Collection {
public:
    CCryptoASN1SETofObjects();
    const std::vector<std::unique_ptr<CCryptoASN1Object>>& setOfObjects() const { return members(); }
};

/// SEQUENCE OF.
class CCryptoASN1SequenceOfObjects : public CCryptoASN1Collection {
public:
    CCryptoASN1SequenceOfObjects();
    const std::vector<std::unique_ptr<CCryptoASN1Object>>& objects() const { return members(); }
};
