#include "asn1/tree/node_parts.h"

namespace ccrypto {

namespace {

constexpr std::string_view excludeWord = "EXCLUDE";

bool IsWord(const element& token, ElementType word)
{
    return token.type() == word || (token.type() == ElementType::text && token.view() == TokenText(word));
}

bool HasWord(const elementNode* list, ElementType word)
{
    while (list != nullptr && !IsWord(list->token(), word))
        list = list->next();
    return list != nullptr;
}

bool IsExclude(const element& token)
{
    return (token.type() == ElementType::identifier || token.type() == ElementType::text) && token.view() == excludeWord;
}

void ReadBrackets(const elementNode* item, EncodingMarks& marks)
{
    for (; item != nullptr; item = item->next()) {
        const element& token = item->token();
        if (token.type() == ElementType::integer) {
            if (marks.number == nullptr)
                marks.number = &token;
            continue;
        }
        marks.excluded |= IsExclude(token);
        marks.primitive |= IsWord(token, ElementType::primitive) || IsWord(token, ElementType::implicit);
        marks.constructed |= IsWord(token, ElementType::constructed) || IsWord(token, ElementType::explicitTag);
    }
}

} // namespace

bool IsValue(ElementType type)
{
    switch (type) {
    case ElementType::bytes:
    case ElementType::text:
    case ElementType::quotedText:
    case ElementType::utf8Text:
    case ElementType::characterData:
    case ElementType::integer:
    case ElementType::truth:
        return true;
    default:
        return false;
    }
}

bool HasBracket(const elementNode& node, ElementType word)
{
    return HasWord(node.brackets(), word);
}

bool HasModifier(const elementNode& node, ElementType word)
{
    return HasWord(node.modifiers(), word);
}

bool IsExcluded(const elementNode& node)
{
    const elementNode* item = node.brackets();
    while (item != nullptr && !IsExclude(item->token()))
        item = item->next();
    return item != nullptr;
}

const element* BracketNumber(const elementNode& node)
{
    const elementNode* const number = node.find(LinkKind::brackets, ElementType::integer);
    return number != nullptr ? &number->token() : nullptr;
}

EncodingMarks EncodingMarksOf(const elementNode& node)
{
    EncodingMarks marks;
    for (const elementNode* part = node.firstPart(); part != nullptr; part = part->nextPart()) {
        switch (part->linkKind()) {
        case LinkKind::modifiers:
            marks.optional = HasWord(part, ElementType::optional);
            break;
        case LinkKind::brackets:
            ReadBrackets(part, marks);
            break;
        case LinkKind::shortValue:
        case LinkKind::content:
            marks.value = part;
            break;
        default:
            break;
        }
    }
    return marks;
}

} // namespace ccrypto
