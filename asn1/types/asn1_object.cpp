#include "asn1/types/asn1_object.h"

#include "asn1/der/der_parser.h"
#include "asn1/der/unfilled_items.h"
#include "asn1/template/template_cache.h"
#include "asn1/tree/item_list.h"
#include "asn1/tree/node_parts.h"
#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/failure.h"

using namespace ccrypto;

namespace {

/// The node and those of its siblings that stand before `end`; null for all.
std::uint32_t NodesBetween(const elementNode& node, const elementNode* end)
{
    std::uint32_t count = 0;
    for (const elementNode* next = &node; next != end; next = next->next())
        ++count;
    return count;
}

ElementNodePtr CopyUpTo(const elementNode& node, const elementNode* end)
{
    ItemList copies;
    for (const elementNode* next = &node; next != end; next = next->next())
        copies.add(next->clone());
    return std::move(copies.first);
}

} // namespace

CCryptoASN1Object::CCryptoASN1Object(const char* templateText, bool withSiblings)
    : templateText_(templateText), withSiblings_(withSiblings)
{
}

void CCryptoASN1Object::construct(const elementNode* elementToParse)
{
    CCryptoAutoLogger logger("CCryptoASN1Object::CCryptoASN1Object");
    if (elementToParse == nullptr) {
        logger.setResult(Parse(nullptr));
        return;
    }
    const Outcome outcome = parse(*elementToParse);
    if (outcome == Outcome::noTemplate || outcome == Outcome::mismatch || outcome == Outcome::surplus)
        logger.fail(false, "Invalid elementToParse");
    else
        logger.setResult(outcome == Outcome::parsed);
}

CCryptoASN1Object::Outcome CCryptoASN1Object::setNodeToParse(const elementNode& node)
{
    const elementNode* const items = ParsedTemplate(templateText_);
    if (items == nullptr)
        return Outcome::noTemplate;
    // Matched where it stands first, and then only what the template takes is copied: copying a list once for each of its members
    // would take time and memory that grow with its square.
    const bool takesOne = items->next() == nullptr && !IsExcluded(*items);
    CCryptoTemplateMatch whole;
    if (!takesOne && !whole.Match(items, &node)) {
        clear();
        match_ = std::move(whole);
        return Outcome::mismatch;
    }
    const elementNode* const end = takesOne ? node.next() : whole.following();
    const std::uint32_t taken = NodesBetween(node, end);
    ElementNodePtr copy = withSiblings_ ? node.clone(true) : CopyUpTo(node, end);
    // The node may be a part of what the object holds.
    clear();
    taken_ = taken;
    data_ = std::move(copy);
    if (!match_.Match(items, data_.get()))
        return Outcome::mismatch;
    return match_.surplus() == nullptr || allowsSurplus_ ? Outcome::parsed : Outcome::surplus;
}

void CCryptoASN1Object::clear()
{
    match_.clearBindings();
    data_.reset();
    taken_ = 0;
    ClearFields();
}

CCryptoASN1Object::Outcome CCryptoASN1Object::parse(const elementNode& node)
{
    CCryptoAutoLogger logger("CCryptoASN1Object::Parse");
    const std::size_t failures = FailureCount();
    Outcome outcome = setNodeToParse(node);
    if (outcome == Outcome::parsed && !ParseNode())
        outcome = Outcome::wrongFields;
    if (outcome == Outcome::parsed) {
        logger.setResult(true);
        return outcome;
    }
    const char* const meaning = outcome == Outcome::mismatch ? MeaningOfMismatch() : nullptr;
    clear();
    if (outcome == Outcome::noTemplate)
        return logger.fail(outcome, "SetNodeToParse() failed");
    if (outcome == Outcome::mismatch && meaning == nullptr)
        return logger.fail(outcome, "ParseNode() failed: %s (%s)", match_.failedStep().c_str(), match_.failedPlace().c_str());
    if (outcome == Outcome::surplus)
        return logger.fail(outcome, "ParseNode() failed: Data follows the last item of the template");
    if (outcome == Outcome::wrongFields && !LastFailureSince(failures))
        return logger.fail(outcome, "ParseNode() failed");
    // The reason that was given inside stays the thread's failure.
    logger.WriteError("ParseNode() failed");
    return meaning != nullptr ? logger.fail(outcome, "%s", meaning) : logger.fail(outcome);
}

bool CCryptoASN1Object::Parse(const elementNode* node)
{
    if (node != nullptr)
        return parse(*node) == Outcome::parsed;
    CCryptoAutoLogger logger("CCryptoASN1Object::Parse");
    clear();
    return logger.fail(false, "elementNode is NULL");
}

bool CCryptoASN1Object::Assign(const elementNode* node)
{
    CCryptoAutoLogger logger("CCryptoASN1Object::Assign");
    return Parse(node) ? logger.setResult(true) : logger.fail(false, "Parsing failed?");
}

bool CCryptoASN1Object::ParseDer(const element& der)
{
    CCryptoAutoLogger logger("CCryptoASN1Object::ParseDer");
    CCryptoDERParser decoder;
    const ElementNodePtr tree = decoder.Decode(der.bytes());
    if (!Parse(tree.get()))
        return logger.setResult(false);
    if (!allowsSurplus_ && decoder.leavesOctets()) {
        clear();
        return logger.fail(false, "Octets other than padding follow the end of the data");
    }
    if (!withSiblings_ && !allowsSurplus_ && NodesBetween(*tree, nullptr) > taken_) {
        clear();
        return logger.fail(false, "More elements follow the first");
    }
    return logger.setResult(true);
}

ElementNodePtr CCryptoASN1Object::BuildTree()
{
    CCryptoAutoLogger logger("CCryptoASN1Object::BuildTree");
    const elementNode* const items = ParsedTemplate(templateText_);
    builder_.setRoot(items != nullptr ? items->clone(true) : nullptr);
    if (builder_.isEmpty() || !BuildNode()) {
        builder_.clear();
        return logger.fail(ElementNodePtr(), "BuildNode() failed");
    }
    // A name left over would catch what is filled in later, when the tree is part of a larger one.
    ElementNodePtr tree = builder_.takeRoot();
    DropUnfilledItems(tree);
    logger.setResult(true);
    return tree;
}

element CCryptoASN1Object::BuildDer()
{
    const ElementNodePtr tree = BuildTree();
    return tree != nullptr ? CCryptoParser::ToDer(tree.get()) : element();
}

const elementNode* CCryptoASN1Object::find(std::string_view name) const
{
    const TemplateBinding* const binding = match_.find(name);
    return binding != nullptr ? binding->node : nullptr;
}

/// A placeholder by itself is bound to a whole element, and means its value.
const elementNode* CCryptoASN1Object::valueOf(std::string_view name) const
{
    const elementNode* const node = find(name);
    return node != nullptr && IsAsn1Type(node->type()) ? node->value() : node;
}

element CCryptoASN1Object::findBytes(std::string_view name) const
{
    const elementNode* const value = valueOf(name);
    if (value == nullptr)
        return {};
    const element& token = value->token();
    return value->type() == ElementType::integer ? token : element(token.data(), token.length());
}

CCryptoString CCryptoASN1Object::findText(std::string_view name) const
{
    const elementNode* const value = valueOf(name);
    return value == nullptr || value->token().isEmpty() ? CCryptoString() : value->token().toString();
}

std::uint32_t CCryptoASN1Object::findNumber(std::string_view name) const
{
    return findBytes(name).toWord32();
}
