#include "asn1/types/asn1_collections.h"

#include "core/diagnostics/auto_logger.h"

using namespace ccrypto;

namespace {

constexpr const char* setTemplate = "SET{value}";
constexpr const char* sequenceTemplate = "SEQUENCE[CONSTRUCTED]{ objects }";

} // namespace

CCryptoASN1SETObject::CCryptoASN1SETObject() : CCryptoASN1Object(setTemplate) {}

CCryptoASN1SETObject::CCryptoASN1SETObject(const elementNode* node) : CCryptoASN1SETObject()
{
    construct(node);
}

bool CCryptoASN1SETObject::BuildNode()
{
    return builder().fill_tree("value", value_.get());
}

bool CCryptoASN1SETObject::ParseNode()
{
    setValue(find("value"));
    return true;
}

CCryptoASN1SETofObjects::CCryptoASN1SETofObjects(Asn1MemberMaker maker) : CCryptoASN1Collection(setTemplate, "value", maker) {}

CCryptoASN1SETofObjects::CCryptoASN1SETofObjects(const elementNode* node, Asn1MemberMaker maker) : CCryptoASN1SETofObjects(maker)
{
    construct(node);
}

CCryptoASN1SequenceOfObjects::CCryptoASN1SequenceOfObjects(Asn1MemberMaker maker)
    : CCryptoASN1Collection(sequenceTemplate, "objects", maker)
{
}

CCryptoASN1SequenceOfObjects::CCryptoASN1SequenceOfObjects(const elementNode* node, Asn1MemberMaker maker)
    : CCryptoASN1SequenceOfObjects(maker)
{
    construct(node);
}

bool CCryptoASN1Collection::BuildNode()
{
    CCryptoAutoLogger logger("CCryptoASN1Collection::BuildNode");
    ElementNodePtr list;
    elementNode* last = nullptr;
    for (const auto& member : members_) {
        if (member == nullptr)
            return logger.fail(false, "A member is null");
        ElementNodePtr tree = member->BuildTree();
        if (tree == nullptr)
            return logger.setResult(false);
        last = last == nullptr ? (list = std::move(tree)).get() : last->set(LinkKind::sibling, std::move(tree));
        last = last->last();
    }
    return logger.setResult(builder().fill_tree(placeholder_, list.get()));
}

bool CCryptoASN1Collection::ParseNode()
{
    for (const elementNode* node = find(placeholder_); node != nullptr;) {
        std::unique_ptr<CCryptoASN1Object> member = CreateMember();
        if (member == nullptr || !member->Parse(node))
            return false;
        for (std::uint32_t element = member->taken(); element != 0; --element)
            node = node->next();
        members_.push_back(std::move(member));
    }
    return true;
}
