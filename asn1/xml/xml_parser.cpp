#include "asn1/xml/xml_parser.h"

#include "asn1/template/item_notation.h"
#include "asn1/template/value_notation.h"
#include "asn1/text/unicode_text.h"
#include "asn1/xml/xml_tree.h"
#include "core/diagnostics/auto_logger.h"

#include <algorithm>
#include <utility>

using namespace ccrypto;

namespace ccrypto {

namespace markup = ccrypto::internal::markup;

} // namespace ccrypto

namespace {

/// Whether a list whose items were taken out has no other parts. Blanks between its tags do not count as a value.
bool IsPlainList(const elementNode& list)
{
    const elementNode* const part = list.firstPart();
    return part == nullptr ||
           (part->linkKind() == LinkKind::shortValue && part->nextPart() == nullptr && IsXmlBlank(part->token().view()));
}

/// The type of a value whose token is the element's text, until that was read.
constexpr ElementType tokenToCome = markup::startTag;

} // namespace

ElementNodePtr CCryptoXMLParser::Parse(std::string_view text)
{
    CCryptoAutoLogger logger("CCryptoXMLParser::Parse");
    ElementNodePtr first = parseDocument(text);
    if (first == nullptr)
        return logger.fail(ElementNodePtr(), "%s", reason_.c_str());
    logger.setResult(true);
    return first;
}

bool CCryptoXMLParser::skipBlankText()
{
    while (lookAhead_.type() == ElementType::characterData && IsXmlBlank(lookAhead_.view())) {
        if (!advance())
            return false;
    }
    return true;
}

ElementNodePtr CCryptoXMLParser::parseDocument(std::string_view text)
{
    ccrypto::internal::XmlLexer lexer(text);
    isTemplate_ = false;
    if (!start(lexer) || !skipBlankText())
        return nullptr;
    if (lookAhead_.type() != markup::startTag) {
        unexpected();
        return nullptr;
    }
    const bool mayBeList = lookAhead_.view() == xmlListTag;
    ElementNodePtr root = parseElement(nullptr, 0);
    if (root == nullptr || !skipBlankText())
        return nullptr;
    if (lookAhead_.type() != ElementType::endOfInput) {
        unexpected();
        return nullptr;
    }
    if (!isTemplate_ || !mayBeList)
        return root;
    ElementNodePtr items = root->release(LinkKind::content);
    if (!IsPlainList(*root)) {
        fail(CCryptoString("Parsing failed; Only items are expected in: ").append(xmlListTag));
        return nullptr;
    }
    return items != nullptr ? std::move(items) : elementNode::Make(ElementType::none);
}

ElementNodePtr CCryptoXMLParser::parseElement(const elementNode* owner, std::uint32_t depth)
{
    if (depth >= (isTemplate_ ? maxTemplateNesting : maxNesting)) {
        fail("Parsing failed; More than 128 levels of nesting");
        return nullptr;
    }
    const element name = std::move(lookAhead_);
    ItemList attributes;
    if (!advance() || !parseAttributes(attributes))
        return nullptr;
    ElementNodePtr node = makeElement(name.view(), attributes, depth);
    if (node == nullptr || !countItem())
        return nullptr;
    const bool isEmpty = lookAhead_.type() == markup::emptyTagEnd;
    if (!advance() || (!isEmpty && !parseContent(name.view(), *node, owner, depth)))
        return nullptr;
    if (node->type() == tokenToCome)
        node->token() = element(ElementType::none);
    return node;
}

bool CCryptoXMLParser::parseAttributes(ItemList& attributes)
{
    while (lookAhead_.type() != ElementType::greater && lookAhead_.type() != markup::emptyTagEnd) {
        if (!parseAttribute(attributes))
            return false;
    }
    return NamesDiffer(attributes.first.get()) || fail("XML parsing error");
}

bool CCryptoXMLParser::parseAttribute(ItemList& attributes)
{
    if (lookAhead_.type() != ElementType::identifier)
        return unexpected();
    if (!countItem())
        return false;
    elementNode& attribute = attributes.add(elementNode::Make(std::move(lookAhead_)));
    if (!advance())
        return false;
    if (lookAhead_.type() != ElementType::equals)
        return unexpected();
    if (!advance())
        return false;
    if (lookAhead_.type() != ElementType::text && lookAhead_.type() != ElementType::utf8Text)
        return unexpected();
    attribute.set(LinkKind::shortValue, std::move(lookAhead_));
    return advance();
}

ElementNodePtr CCryptoXMLParser::makeElement(std::string_view name, ItemList& attributes, std::uint32_t depth)
{
    if (depth == 0)
        isTemplate_ = DeclaresTemplate(attributes.first.get());
    if (isTemplate_)
        return makeItem(name, attributes.first.get());
    element token(name);
    token.setType(ElementType::identifier);
    ElementNodePtr node = elementNode::Make(std::move(token));
    node->set(LinkKind::brackets, std::move(attributes.first));
    return node;
}

ElementNodePtr CCryptoXMLParser::makeItem(std::string_view tag, const elementNode* attributes)
{
    ElementNodePtr item = elementNode::Make(tag == xmlItemTag ? element(tokenToCome) : TokenOfXmlTag(tag));
    for (const elementNode* attribute = attributes; attribute != nullptr; attribute = attribute->next()) {
        if (!makePart(*item, *attribute)) {
            const CCryptoString name(attribute->token().view());
            fail(CCryptoString("Parsing failed; The attribute is not expected or not understood: ") + name);
            return nullptr;
        }
    }
    return item;
}

bool CCryptoXMLParser::makePart(elementNode& item, const elementNode& attribute)
{
    const std::string_view name = attribute.token().view();
    const std::string_view text = attribute.shortValue()->token().view();
    if (name == xmlNamespaceAttribute)
        return text == xmlNamespace;
    if (name == xmlTokenAttribute) {
        const ElementNodePtr head = ParseHead(text, itemsLeft_);
        if (head == nullptr || !IsBare(*head) || item.type() != tokenToCome)
            return false;
        item.token() = head->token();
        return true;
    }
    constexpr std::pair<std::string_view, LinkKind> lists[] = {{xmlBracketsAttribute, LinkKind::brackets},
                                                               {xmlModifiersAttribute, LinkKind::modifiers},
                                                               {xmlValueAttribute, LinkKind::shortValue},
                                                               {xmlOperationAttribute, LinkKind::operation}};
    const auto* const list = std::ranges::find(lists, name, &std::pair<std::string_view, LinkKind>::first);
    ElementNodePtr items = list != std::end(lists) ? ParseList(text, itemsLeft_) : nullptr;
    if (items == nullptr)
        return false;
    const bool isOperation = list->second == LinkKind::operation;
    if (isOperation && items->operation() == nullptr)
        return false;
    item.set(list->second, isOperation ? items->release(LinkKind::operation) : std::move(items));
    return true;
}

bool CCryptoXMLParser::parseContent(std::string_view name, elementNode& node, const elementNode* owner, std::uint32_t depth)
{
    ItemList content;
    element text(ElementType::characterData);
    const auto keepText = [&] {
        if (!text.isEmpty() && !isTemplate_)
            content.add(elementNode::Make(std::exchange(text, element(ElementType::characterData))));
    };
    while (lookAhead_.type() != markup::endTag) {
        if (lookAhead_.type() == ElementType::characterData) {
            text.append(lookAhead_.data(), lookAhead_.length());
            if (!advance())
                return false;
            continue;
        }
        keepText();
        if (lookAhead_.type() != markup::startTag)
            return fail(CCryptoString("XML end tag not found: ").append(name));
        ElementNodePtr child = parseElement(&node, depth + 1);
        if (child == nullptr)
            return false;
        content.add(std::move(child));
    }
    keepText();
    if (lookAhead_.view() != name)
        return fail(CCryptoString("XML end tag not found: ").append(name));
    node.set(LinkKind::content, std::move(content.first));
    if (isTemplate_ && !takeText(node, text.view(), node.type() == tokenToCome ? owner : &node))
        return fail(CCryptoString("Parsing failed; The text is not expected in: ").append(name));
    return advance();
}

bool CCryptoXMLParser::takeText(elementNode& item, std::string_view text, const elementNode* owner)
{
    if (text.empty())
        return true;
    if (item.content() != nullptr)
        return IsXmlBlank(text);
    if (owner != &item) {
        item.token() = FromStringNotation(text, owner);
        return true;
    }
    if (item.shortValue() != nullptr)
        return IsXmlBlank(text);
    item.set(LinkKind::shortValue, FromStringNotation(text, owner));
    return true;
}
