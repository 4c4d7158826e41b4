#include "asn1/json/json_parser.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/json/json_tree.h"
#include "asn1/template/item_notation.h"
#include "asn1/template/lexical_analyzer.h"
#include "asn1/template/value_notation.h"
#include "core/diagnostics/auto_logger.h"

#include <algorithm>
#include <utility>

using namespace ccrypto;

namespace {

bool IsString(const element& token)
{
    return token.type() == ElementType::text || token.type() == ElementType::utf8Text;
}

bool SameButForBlanks(std::string_view left, std::string_view right)
{
    const auto skipBlanks = [](std::string_view& text) { text.remove_prefix(std::min(text.find_first_not_of(' '), text.size())); };
    for (;;) {
        skipBlanks(left);
        skipBlanks(right);
        if (left.empty() || right.empty())
            return left.empty() && right.empty();
        if (left[0] != right[0])
            return false;
        left.remove_prefix(1);
        right.remove_prefix(1);
    }
}

/// Whether a name is the item's printed head, ignoring blanks.
bool IsPrintedHead(std::string_view name, const elementNode& item)
{
    if (IsAsn1Type(KeywordType(name)))
        return true;
    CCryptoString head;
    return AppendHead(item, nullptr, ItemPlace::alone, head) && AppendTail(item, !HasPlainJsonValue(item), head) &&
           SameButForBlanks(head.view(), name);
}

bool IsScalar(const element& token)
{
    return token.type() == ElementType::null || IsValue(token.type());
}

} // namespace

ElementNodePtr CCryptoJSONParser::Parse(std::string_view text)
{
    CCryptoAutoLogger logger("CCryptoJSONParser::Parse");
    ElementNodePtr first = parseItems(text);
    if (first != nullptr && !refusal_.isEmpty())
        return logger.fail(ElementNodePtr(), "%s", refusal_.c_str());
    // An item may count for more than a member: too many items are not an ordinary document.
    if (first == nullptr && itemsLeft_ == 0)
        return logger.fail(ElementNodePtr(), "%s", reason_.c_str());
    if (first == nullptr)
        first = parseOrdinary(text);
    if (first == nullptr)
        return logger.fail(ElementNodePtr(), "%s", reason_.c_str());
    logger.setResult(true);
    return first;
}

bool CCryptoJSONParser::IsItems(std::string_view text)
{
    return parseItems(text) != nullptr;
}

elementNode* CCryptoJSONParser::add(ItemList& list, ElementNodePtr node)
{
    return countItem() ? &list.add(std::move(node)) : nullptr;
}

bool CCryptoJSONParser::expect(ElementType type)
{
    return lookAhead_.type() == type ? advance() : unexpected();
}

bool CCryptoJSONParser::tooDeep()
{
    return fail("Parsing failed; More than 128 levels of nesting");
}

ElementNodePtr CCryptoJSONParser::parseItems(std::string_view text)
{
    ccrypto::internal::JsonLexer lexer(text);
    ItemList list;
    refusal_ = CCryptoString();
    const bool isItems = start(lexer) && expect(ElementType::leftBrace) && parseItemsRoot(list);
    return isItems && lookAhead_.type() == ElementType::rightBrace ? std::move(list.first) : nullptr;
}

bool CCryptoJSONParser::parseItemsRoot(ItemList& list)
{
    if (IsString(lookAhead_) && lookAhead_.view() == jsonItemsName)
        return advance() && expect(ElementType::colon) && parseItemArray(list, nullptr, 0) && list.first != nullptr;
    const std::uint32_t allItems = itemsLeft_;
    const ElementNodePtr head = IsString(lookAhead_) ? ParseHead(lookAhead_.view(), itemsLeft_) : nullptr;
    itemsLeft_ = allItems;
    return head != nullptr && IsAsn1Type(head->type()) && parseItemAfterBrace(list, 0);
}

bool CCryptoJSONParser::parseItemArray(ItemList& list, const elementNode* owner, std::uint32_t depth)
{
    if (depth > maxNesting)
        return tooDeep();
    if (!expect(ElementType::leftBracket))
        return false;
    while (lookAhead_.type() != ElementType::rightBracket) {
        if (list.first != nullptr && !expect(ElementType::comma))
            return false;
        if (!parseItem(list, owner, depth))
            return false;
    }
    return advance();
}

bool CCryptoJSONParser::parseItem(ItemList& list, const elementNode* owner, std::uint32_t depth)
{
    if (lookAhead_.type() == ElementType::leftBrace)
        return advance() && parseItemAfterBrace(list, depth) && expect(ElementType::rightBrace);
    element value;
    return takeItemScalar(owner, value) && add(list, elementNode::Make(std::move(value))) != nullptr && advance();
}

bool CCryptoJSONParser::parseItemAfterBrace(ItemList& list, std::uint32_t depth)
{
    ElementNodePtr head = IsString(lookAhead_) ? ParseHead(lookAhead_.view(), itemsLeft_) : nullptr;
    if (itemsLeft_ == 0)
        return fail(tooManyItems);
    if (head == nullptr)
        return unexpected();
    const element name = std::move(lookAhead_);
    elementNode* const item = &list.add(std::move(head));
    return advance() && expect(ElementType::colon) && parseItemValue(*item, depth) &&
           (IsPrintedHead(name.view(), *item) || unexpected());
}

bool CCryptoJSONParser::parseItemValue(elementNode& item, std::uint32_t depth)
{
    if (lookAhead_.type() == ElementType::leftBracket) {
        ItemList content;
        const bool parsed = parseItemArray(content, &item, depth + 1);
        item.set(LinkKind::content, std::move(content.first));
        return parsed;
    }
    if (lookAhead_.type() == ElementType::null)
        return advance();
    element value;
    if (item.shortValue() != nullptr)
        return unexpected();
    if (!takeItemScalar(&item, value))
        return false;
    item.set(LinkKind::shortValue, std::move(value));
    return advance();
}

bool CCryptoJSONParser::takeItemScalar(const elementNode* owner, element& value)
{
    if (!IsScalar(lookAhead_))
        return unexpected();
    if (IsString(lookAhead_)) {
        value = FromStringNotation(lookAhead_.view(), owner);
        return IsJsonItemString(value, owner, lookAhead_.view()) || unexpected();
    }
    if (lookAhead_.type() == ElementType::characterData && owner != nullptr && IsAsn1Type(owner->type()) && refusal_.isEmpty())
        refusal_ = lexer_->cursor().withPlace("Parsing failed; A number is not whole or has more than 9864 digits");
    value = std::move(lookAhead_);
    return true;
}

ElementNodePtr CCryptoJSONParser::parseOrdinary(std::string_view text)
{
    ccrypto::internal::JsonLexer lexer(text);
    if (!start(lexer))
        return nullptr;
    ElementNodePtr root = elementNode::Make(ElementType::none);
    if (lookAhead_.type() != ElementType::leftBrace) {
        const bool parsed = parseValue(*root, 0) && (lookAhead_.type() == ElementType::endOfInput || unexpected());
        return parsed ? std::move(root) : nullptr;
    }
    if (!advance() || !parseMembers(*root, 1))
        return nullptr;
    return root->content() != nullptr ? root->release(LinkKind::content) : std::move(root);
}

// Up to the "}", which stays the look-ahead: what follows a document's last one is not read.
bool CCryptoJSONParser::parseMembers(elementNode& object, std::uint32_t depth)
{
    if (depth > maxNesting)
        return tooDeep();
    ItemList members;
    while (lookAhead_.type() != ElementType::rightBrace) {
        if (members.first != nullptr && !expect(ElementType::comma))
            return false;
        if (!IsString(lookAhead_))
            return unexpected();
        lookAhead_.setType(ElementType::identifier);
        elementNode* const member = add(members, elementNode::Make(std::move(lookAhead_)));
        if (member == nullptr || !advance() || !expect(ElementType::colon) || !parseValue(*member, depth))
            return false;
    }
    object.set(LinkKind::content, std::move(members.first));
    return true;
}

bool CCryptoJSONParser::parseArray(elementNode& array, std::uint32_t depth)
{
    if (depth > maxNesting)
        return tooDeep();
    ItemList items;
    while (lookAhead_.type() != ElementType::rightBracket) {
        if (items.first != nullptr && !expect(ElementType::comma))
            return false;
        elementNode* const item = add(items, elementNode::Make(ElementType::none));
        if (item == nullptr || !parseValue(*item, depth))
            return false;
    }
    array.set(LinkKind::brackets, items.first != nullptr ? std::move(items.first) : elementNode::Make(emptyJsonArray));
    return true;
}

bool CCryptoJSONParser::parseValue(elementNode& node, std::uint32_t depth)
{
    const bool isMember = node.type() == ElementType::identifier;
    switch (lookAhead_.type()) {
    case ElementType::leftBrace:
        return advance() && parseMembers(node, depth + 1) && advance();
    case ElementType::leftBracket:
        return advance() && parseArray(node, depth + 1) && advance();
    default:
        break;
    }
    if (!IsScalar(lookAhead_))
        return unexpected();
    if (isMember)
        node.set(LinkKind::shortValue, std::move(lookAhead_));
    else
        node.token() = std::move(lookAhead_);
    return advance();
}
