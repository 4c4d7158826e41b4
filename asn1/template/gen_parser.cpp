#include "asn1/template/gen_parser.h"

#include "asn1/tree/item_list.h"
#include "core/diagnostics/auto_logger.h"
#include "core/system/file.h"

#include <utility>

using namespace ccrypto;

namespace {

using enum ElementType;

constexpr CCryptoGENClosure contentClosure = {rightBrace};
constexpr CCryptoGENClosure bracketClosure = {rightBracket};
constexpr CCryptoGENClosure modifierClosure = {rightParenthesis};
constexpr CCryptoGENClosure textClosure = {endOfInput};
/// Not a token: a value that has begun ends with its line.
constexpr auto lineEnd = static_cast<ElementType>(94);
constexpr CCryptoGENClosure valueClosure = {comma,      colon,  semicolon, rightBrace, rightBracket, rightParenthesis,
                                            endOfInput, lineEnd};
constexpr CCryptoGENClosure separators = {comma, period, semicolon, colon};
constexpr CCryptoGENClosure operators = {exclamation, equal,  notEqual,  greater,    greaterOrEqual, less,
                                         lessOrEqual, plus,   increment, minus,      decrement,      asterisk,
                                         solidus,     divide, logicalOr, logicalAnd, caseWord};
constexpr CCryptoGENClosure strays = {rightBrace, rightBracket, rightParenthesis};

const CCryptoGENClosure& ClosureOf(ElementType closer)
{
    return closer == rightBrace ? contentClosure : closer == rightBracket ? bracketClosure : modifierClosure;
}

/// Counts a level up until the end of the scope.
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
    explicit List(std::uint32_t& itemsToCome) : itemsLeft(itemsToCome) {}

    std::uint32_t& itemsLeft;
    ElementNodePtr first;
    elementNode* current = nullptr;
    bool wordless = false; ///< "\\" stood in place of the current item's word

    elementNode& startItem()
    {
        countItem();
        wordless = false;
        ElementNodePtr node = elementNode::Make(none);
        current = current == nullptr ? (first = std::move(node)).get() : current->set(LinkKind::sibling, std::move(node));
        return *current;
    }

    void countItem() { itemsLeft -= itemsLeft != 0 ? 1 : 0; }

    /// The current item, or a new one when it has this part already.
    elementNode& itemWithout(LinkKind kind)
    {
        return current == nullptr || current->slot(kind) != nullptr ? startItem() : *current;
    }

    bool currentIsFresh() const
    {
        return current != nullptr && current->type() == none && !wordless && current->firstPart() == nullptr;
    }
};

CCryptoGENParser::CCryptoGENParser(ICryptoIncludeLoader* loader, CCryptoString includeFolder)
    : loader_(loader), folderSource_([folder = std::move(includeFolder)] { return folder; })
{
}

CCryptoGENParser::CCryptoGENParser(std::function<CCryptoString()> includeFolder)
    : loader_(nullptr), folderSource_(std::move(includeFolder))
{
}

ElementNodePtr CCryptoGENParser::Parse(std::string_view text)
{
    CCryptoAutoLogger logger("CCryptoGENParser::Parse");
    itemsLeft_ = maxItems;
    ElementNodePtr first = parseText(text);
    if (first == nullptr) {
        if (!innerReason_.isEmpty())
            logger.WriteLog("%s", innerReason_.c_str());
        return logger.fail(ElementNodePtr(), "%s", reason_.c_str());
    }
    logger.setResult(true);
    return first;
}

ElementNodePtr CCryptoGENParser::TryParse(std::string_view text)
{
    itemsLeft_ = maxItems;
    return parseText(text);
}

ElementNodePtr CCryptoGENParser::TryParse(std::string_view text, std::uint32_t& itemsLeft)
{
    itemsLeft_ = itemsLeft;
    ElementNodePtr first = parseText(text);
    itemsLeft = itemsLeft_;
    return first;
}

ElementNodePtr CCryptoGENParser::parseText(std::string_view text)
{
    included_ = 0;
    includeBytesLeft_ = maxIncludeBytes;
    innerReason_ = CCryptoString();
    List list(itemsLeft_);
    if (!parseInto(text, list))
        return nullptr;
    return list.first != nullptr ? std::move(list.first) : elementNode::Make(none);
}

bool CCryptoGENParser::parseInto(std::string_view text, List& list)
{
    CCryptoLexicalAnalyzer lexer(text);
    CCryptoLexicalAnalyzer* const outer = std::exchange(lexer_, &lexer);
    const bool parsed = advance() && parseNested(textClosure, list);
    lexer_ = outer;
    return parsed;
}

bool CCryptoGENParser::advance()
{
    if (lexer_->scan(lookAhead_))
        return true;
    reason_ = lexer_->cursor().reason();
    return false;
}

bool CCryptoGENParser::fail(const CCryptoString& message)
{
    reason_ = lexer_->cursor().withPlace(message);
    return false;
}

bool CCryptoGENParser::unexpected()
{
    reason_ = lexer_->cursor().notExpected(lookAhead_);
    return false;
}

bool CCryptoGENParser::isClosed(const CCryptoGENClosure& closure, const List& list) const
{
    return closure.contains(lookAhead_.type()) || (closure.contains(lineEnd) && list.first != nullptr && lexer_->beginsLine());
}

bool CCryptoGENParser::parseNested(const CCryptoGENClosure& closure, List& list)
{
    // The outermost items are not nested.
    if (nesting_ > maxNesting)
        return fail("Parsing failed; More than 128 levels of nesting");
    const Nested nested(nesting_);
    while (!isClosed(closure, list)) {
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
    if (itemsLeft_ == 0)
        return fail(tooManyItems);
    if (operators.contains(type))
        return parseOperation(list);
    if (type == rightBrace && nesting_ == 1 && list.current != nullptr && list.current->content() != nullptr)
        return parseSurplusBrace();
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
    case backslash:
        list.startItem();
        list.wordless = true;
        return advance();
    default:
        break;
    }
    elementNode& item = list.currentIsFresh() ? *list.current : list.startItem();
    item.token() = std::move(lookAhead_);
    return advance();
}

/// Templates of card commands are written with a "}" too many after the content of their last item.
bool CCryptoGENParser::parseSurplusBrace()
{
    return advance() && (lookAhead_.type() == endOfInput || unexpected());
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
    List value(itemsLeft_);
    if (!advance() || !parseNested(valueClosure, value))
        return false;
    item.set(kind, std::move(value.first));
    return true;
}

bool CCryptoGENParser::parseBlock(ElementType closer, elementNode& owner, LinkKind kind)
{
    List block(itemsLeft_);
    if (!advance() || !parseNested(ClosureOf(closer), block))
        return false;
    owner.set(kind, std::move(block.first));
    return advance();
}

bool CCryptoGENParser::parseOperation(List& list)
{
    elementNode& item = list.itemWithout(LinkKind::operation);
    elementNode& operation = *item.set(LinkKind::operation, std::move(lookAhead_));
    list.countItem();
    const bool outer = lexer_->setExpression(true);
    List operand(itemsLeft_);
    const bool parsed = advance() && parseNested(valueClosure, operand);
    lexer_->setExpression(outer);
    operation.set(LinkKind::content, std::move(operand.first));
    return parsed;
}

const CCryptoString& CCryptoGENParser::includeFolder()
{
    if (!includeFolder_) {
        includeFolder_ = folderSource_();
        includeFolder_->replaceAll("\\", "/");
        if (!includeFolder_->isEmpty() && !includeFolder_->view().ends_with('/'))
            *includeFolder_ += "/";
    }
    return *includeFolder_;
}

bool CCryptoGENParser::readInclude(const CCryptoString& name, element& text)
{
    if (loader_ != nullptr)
        return loader_->Load(name, text);
    CCryptoFile file;
    if (!file.Open(name, platform::FileMode::read) || file.Size() > includeBytesLeft_)
        return false;
    return file.Size() == 0 || file.Read(0, static_cast<std::uint32_t>(file.Size()), text);
}

bool CCryptoGENParser::parseInclude(List& list)
{
    CCryptoString name(lexer_->scanFileName());
    if (!name.contains("/"))
        name = includeFolder() + name;
    return parseIncluded(name, list) && advance();
}

bool CCryptoGENParser::parseIncluded(const CCryptoString& name, List& list)
{
    if (including_ >= maxIncludeDepth)
        return fail("Parsing failed; More than 16 include files inside each other");
    if (++included_ > maxIncludes)
        return fail("Parsing failed; More than 256 include files");
    const Nested including(including_);

    element text;
    if (name.isEmpty() || !readInclude(name, text))
        return fail(CCryptoString("Failed to read include file: '") + name + "'");
    if (text.length() > includeBytesLeft_)
        return fail("Parsing failed; More than 64 MiB of include files");
    includeBytesLeft_ -= text.length();
    if (parseInto(text.view(), list))
        return true;
    // The innermost reason says most.
    if (innerReason_.isEmpty())
        innerReason_ = reason_;
    return fail(CCryptoString("Failed to parse include file: '") + name + "'");
}
