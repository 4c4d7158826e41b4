#include "asn1/bracket_list.h"

namespace {

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

} // namespace

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
    constexpr std::string_view word = "EXCLUDE";
    for (const elementNode* item = node.brackets(); item != nullptr; item = item->next()) {
        const bool isWord = item->type() == ElementType::identifier || item->type() == ElementType::text;
        if (isWord && item->token().view() == word)
            return true;
    }
    return false;
}

const element* BracketNumber(const elementNode& node)
{
    const elementNode* const number = node.find(LinkKind::brackets, ElementType::integer);
    return number != nullptr ? &number->token() : nullptr;
}
