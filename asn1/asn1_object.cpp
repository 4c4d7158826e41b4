#include "asn1/asn1_object.h"

#include "asn1/bracket_list.h"
#include "asn1/der_parser.h"
#include "asn1/template_cache.h"
#include "core/auto_logger.h"

CCryptoASN1Object::CCryptoASN1Object(const char* templateText, bool withSiblings)
    : templateText_(templateText), withSiblings_(withSiblings)
{
}

void CCryptoASN1Object::construct(const elementNode* elementToParse)
{
    CCryptoAutoLogger logger("CCryptoASN1Object::CCryptoASN1Object");
    if (!Parse(elementToParse))
        logger.setRetValue(3, false, "Invalid elementToParse");
    else
        logger.setResult(true);
}

bool CCryptoASN1Object::setNodeToParse(const elementNode& node)
{
    const elementNode* const items = ParsedTemplate(templateText_);
    if (items == nullptr)
        return false;
    // The siblings are copied only where the template can look at them: copying a list once for each of its members would take time
    // that grows with its square.
    const bool looksAtSiblings = withSiblings_ || items->next() != nullptr || IsExcluded(*items);
    data_ = node.clone(looksAtSiblings);
    return match_.Match(items, data_.get());
}

bool CCryptoASN1Object::Parse(const elementNode* node)
{
    CCryptoAutoLogger logger("CCryptoASN1Object::Parse");
    if (node == nullptr)
        return logger.setRetValue(3, false, "elementNode is NULL");
    if (!setNodeToParse(*node))
        return logger.setRetValue(3, false, "SetNodeToParse() failed: %s", match_.failedStep().c_str());
    if (!ParseNode())
        return logger.setRetValue(3, false, "ParseNode() failed");
    return logger.setResult(true);
}

bool CCryptoASN1Object::Assign(const elementNode* node)
{
    CCryptoAutoLogger logger("CCryptoASN1Object::Assign");
    return Parse(node) ? logger.setResult(true) : logger.setRetValue(3, false, "Parsing failed?");
}

bool CCryptoASN1Object::ParseDer(const element& der)
{
    const ElementNodePtr tree = CCryptoDERParser().Decode(der.bytes());
    return tree != nullptr && Parse(tree.get());
}

ElementNodePtr CCryptoASN1Object::BuildTree()
{
    CCryptoAutoLogger logger("CCryptoASN1Object::BuildTree");
    const elementNode* const items = ParsedTemplate(templateText_);
    builder_.setRoot(items != nullptr ? items->clone(true) : nullptr);
    if (builder_.isEmpty() || !BuildNode()) {
        builder_.clear();
        return logger.setRetValue(3, ElementNodePtr(), "BuildNode() failed");
    }
    logger.setResult(true);
    return builder_.takeRoot();
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
