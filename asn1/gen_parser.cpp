#include "asn1/gen_parser.h"

#include "asn1/syntax_error.h"
#include "core/auto_logger.h"
#include "core/file.h"

#include <utility>

namespace {

using enum ElementType;

constexpr CCryptoGENClosure contentClosure = {rightBrace};
constexpr CCryptoGENClosure bracketClosure = {rightBracket};
constexpr CCryptoGENClosure modifierClosure = {rightParenthesis};
constexpr CCryptoGENClosure textClosure = {endOfInput};
constexpr CCryptoGENClosure valueClosure = {comma, colon, semicolon, rightBrace, rightBracket, rightParenthesis, endOfInput};
constexpr CCryptoGENClosure separators = {comma, period, semicolon, colon};
constexpr CCryptoGENClosure operators = {exclamation, equal,  notEqual,  greater,    greaterOrEqual, less,
                                         lessOrEqual, plus,   increment, minus,      decrement,      asterisk,
                                         solidus,     divide, logicalOr, logicalAnd, caseWord};
constexpr CCryptoGENClosure strays = {rightBrace, rightBracket, rightParenthesis, backslash, percent};

const CCryptoGENClosure& ClosureOf(ElementType closer)
{
    return closer == rightBrace ? contentClosure : closer == rightBracket ? bracketClosure : modifierClosure;
}

/// A count that goes back when the scope ends.
class Nested {
public:
    explicit Nested(std::uint32_t& count) : count_(++count) {}
    ~Nested() { --count_; }
    Nested(const Nested&) = delete;
    Nested& operator=(const Nested&) = delete;

private:
    std::uint32_t& count_;
};

} // namespace

/// The items of one nested parse.
struct CCryptoGENParser::List {
    ElementNodePtr first;
    elementNode* current = nullptr;

    elementNode& startItem()
    {
        ElementNodePtr node = elementNode::Make(none);
        current = current == nullptr ? (first = std::move(node)).get() : current->set(LinkKind::sibling, std::move(node));
        return *current;
    }

    /// The current item, or a new one when it has this part already.
    elementNode& itemWithout(LinkKind kind)
    {
        return current == nullptr || current->slot(kind) != nullptr ? startItem() : *current;
    }

    bool currentIsFresh() const
    {
        if (current == nullptr || current->type() != none)
            return false;
        for (const LinkKind kind :
             {LinkKind::modifiers, LinkKind::brackets, LinkKind::shortValue, LinkKind::operation, LinkKind::content}) {
            if (current->slot(kind) != nullptr)
                return false;
        }
        return true;
    }
};

CCryptoGENParser::CCryptoGENParser(ICryptoIncludeLoader* loader, const CCryptoString& includePath)
    : loader_(loader), includePath_(includePath)
{
}

ElementNodePtr CCryptoGENParser::Parse(std::string_view text)
{
    CCryptoAutoLogger logger("CCryptoGENParser::Parse");
    ElementNodePtr first = parseText(text);
    if (first == nullptr)
        return logger.setRetValue(3, ElementNodePtr(), "%s", reason_.c_str());
    logger.setResult(true);
    return first;
}

ElementNodePtr CCryptoGENParser::TryParse(std::string_view text)
{
    return parseText(text);
}

ElementNodePtr CCryptoGENParser::parseText(std::string_view text)
{
    CCryptoLexicalAnalyzer lexer(text);
    CCryptoLexicalAnalyzer* const outer = std::exchange(lexer_, &lexer);
    List list;
    const bool parsed = advance() && parseNested(textClosure, list);
    lexer_ = outer;
    if (!parsed)
        return nullptr;
    return list.first != nullptr ? std::move(list.first) : elementNode::Make(none);
}

bool CCryptoGENParser::advance()
{
    if (lexer_->scan(lookAhead_))
        return true;
    reason_ = lexer_->reason();
    return false;
}

bool CCryptoGENParser::fail(const CCryptoString& message)
{
    reason_ = AtPlaceOf(*lexer_, message);
    return false;
}

bool CCryptoGENParser::unexpected()
{
    reason_ = NotExpected(*lexer_, lookAhead_);
    return false;
}

bool CCryptoGENParser::parseNested(const CCryptoGENClosure& closure, List& list)
{
    // The items themselves are no nesting.
    if (nesting_ > deepestNesting)
        return fail("Parsing failed; More than 128 levels of nesting");
    const Nested nested(nesting_);
    while (!closure.contains(lookAhead_.type())) {
        if (lookAhead_.type() == endOfInput)
            return unexpected();
        if (!parseToken(list))
            return false;
    }
    return true;
}

bool CCryptoGENParser::parseToken(List& list)
{
    const ElementType type = lookAhead_.type();
    if (separators.contains(type))
        return advance();
    if (operators.contains(type))
        return parseOperation(list);
    if (strays.contains(type))
        return unexpected();
    switch (type) {
    case leftBrace:
        return parsePart(list, LinkKind::content);
    case leftBracket:
        return parsePart(list, LinkKind::brackets);
    case leftParenthesis:
        return parsePart(list, LinkKind::modifiers);
    case equals:
        return parsePart(list, LinkKind::shortValue);
    case include:
        return parseInclude(list);
    default:
        break;
    }
    elementNode& item = list.currentIsFresh() ? *list.current : list.startItem();
    item.token() = std::move(lookAhead_);
    return advance();
}

bool CCryptoGENParser::parsePart(List& list, LinkKind kind)
{
    elementNode& item = list.itemWithout(kind);
    switch (kind) {
    case LinkKind::content:
        return parseBlock(rightBrace, item, kind);
    case LinkKind::brackets:
        return parseBlock(rightBracket, item, kind);
    case LinkKind::modifiers:
        return parseBlock(rightParenthesis, item, kind);
    default:
        break;
    }
    List value;
    if (!advance() || !parseNested(valueClosure, value))
        return false;
    if (value.first == nullptr)
        return fail("Parsing failed; A value is missing behind '='");
    item.set(kind, std::move(value.first));
    return true;
}

bool CCryptoGENParser::parseBlock(ElementType closer, elementNode& owner, LinkKind kind)
{
    List block;
    if (!advance() || !parseNested(ClosureOf(closer), block))
        return false;
    owner.set(kind, std::move(block.first));
    return advance();
}

bool CCryptoGENParser::parseOperation(List& list)
{
    elementNode& item = list.itemWithout(LinkKind::operation);
    elementNode& operation = *item.set(LinkKind::operation, std::move(lookAhead_));
    lexer_->setExpression(true);
    List operand;
    const bool parsed = advance() && parseNested(valueClosure, operand);
    lexer_->setExpression(false);
    operation.set(LinkKind::content, std::move(operand.first));
    return parsed;
}

bool CCryptoGENParser::readInclude(const CCryptoString& name, element& text)
{
    if (loader_ != nullptr)
        return loader_->Load(name, text);
    CCryptoFile file;
    return file.Open(name, platform::FileMode::read) && file.Read(0, UINT32_MAX, text);
}

bool CCryptoGENParser::parseInclude(List& list)
{
    CCryptoString name(lexer_->scanFileName());
    if (!name.contains("/")) {
        CCryptoString path = includePath_;
        path.replaceAll("\\", "/");
        if (!path.isEmpty() && !path.view().ends_with('/'))
            path += "/";
        name = path + name;
    }
    if (including_ >= deepestInclude)
        return fail("Parsing failed; More than 16 include files inside each other");
    const Nested including(including_);

    element text;
    if (name.isEmpty() || !readInclude(name, text))
        return fail(CCryptoString("Failed to read include file: '") + name + "'");
    ElementNodePtr included = parseText(text.view());
    if (included == nullptr) {
        const CCryptoString inner = reason_;
        return fail(CCryptoString("Failed to parse include file: '") + name + "' (" + inner + ")");
    }
    const bool isEmpty = included->type() == none && included->content() == nullptr && included->next() == nullptr;
    if (!isEmpty) {
        list.current = list.current == nullptr ? (list.first = std::move(included)).get()
                                               : list.current->set(LinkKind::sibling, std::move(included));
        list.current = list.current->last();
    }
    return advance();
}
