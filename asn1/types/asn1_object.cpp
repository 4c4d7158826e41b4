#include "asn1/types/asn1_object.h"

#include "asn1/der/der_parser.h"
#include "asn1/template/bracket_list.h"
#include "asn1/template/template_cache.h"
#include "asn1/template/unfilled_items.h"
#include "core/diagnostics/auto_logger.h"

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
    if (outcome == Outcome::noTemplate || outcome == Outcome::mismatch)
        logger.fail(false, "Invalid elementToParse");
    else
        logger.setResult(outcome == Outcome::parsed);
}

bool CCryptoASN1Object::looksAtSiblings(const elementNode& items) const
{
    return withSiblings_ || items.next() != nullptr || IsExcluded(items);
}

CCryptoASN1Object::Outcome CCryptoASN1Object::setNodeToParse(const elementNode& node)
{
    const elementNode* const items = ParsedTemplate(templateText_);
    if (items == nullptr)
        return Outcome::noTemplate;
    // The siblings are copied only where the template can look at them: copying a list once for each of its members would take time
    // that grows with its square.
    ElementNodePtr copy = node.clone(looksAtSiblings(*items));
    clear();
    data_ = std::move(copy);
    return match_.Match(items, data_.get()) ? Outcome::parsed : Outcome::mismatch;
}

void CCryptoASN1Object::clear()
{
    match_.clearBindings();
    data_.reset();
    ClearFields();
}

CCryptoASN1Object::Outcome CCryptoASN1Object::parse(const elementNode& node)
{
    CCryptoAutoLogger logger("CCryptoASN1Object::Parse");
    Outcome outcome = setNodeToParse(node);
    if (outcome == Outcome::parsed && !ParseNode())
        outcome = Outcome::wrongFields;
    if (outcome == Outcome::parsed) {
        logger.setResult(true);
        return outcome;
    }
    clear();
    if (outcome == Outcome::noTemplate)
        return logger.fail(outcome, "SetNodeToParse() failed");
    if (outcome == Outcome::mismatch)
        logger.WriteLog("%s (%s)", match_.failedStep().c_str(), match_.failedPlace().c_str());
    return logger.fail(outcome, "ParseNode() failed");
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
    const ElementNodePtr tree = CCryptoDERParser().Decode(der.bytes());
    const elementNode* const items = ParsedTemplate(templateText_);
    if (tree != nullptr && tree->next() != nullptr && items != nullptr && !looksAtSiblings(*items)) {
        clear();
        return logger.fail(false, "More elements follow the first");
    }
    return logger.setResult(Parse(tree.get()));
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

element CCryptoASN1Object::findBytes(std::string_view name) const
{
    const elementNode* node = find(name);
    // A placeholder by itself is bound to a whole node, of which the value is meant.
    if (node != nullptr && IsAsn1Type(node->type()))
        node = node->value();
    return node != nullptr ? node->token() : element();
}

CCryptoString CCryptoASN1Object::findText(std::string_view name) const
{
    const element value = findBytes(name);
    return value.isEmpty() ? CCryptoString() : value.toString();
}

std::uint32_t CCryptoASN1Object::findNumber(std::string_view name) const
{
    return findBytes(name).toWord32();
}
