#include "asn1/xml/xml_tree.h"

#include "asn1/template/lexical_analyzer.h"
#include "asn1/template/value_notation.h"
#include "asn1/text/decimal.h"
#include "asn1/text/unicode_text.h"
#include "asn1/tree/item_list.h"

#include <algorithm>
#include <vector>

namespace ccrypto {

namespace {

bool IsNamed(const elementNode& node)
{
    return node.type() == ElementType::identifier && IsXmlName(node.token().view());
}

bool IsXmlTextOfKind(const elementNode& node, bool isAttribute)
{
    const bool isText = node.type() == ElementType::utf8Text || (node.type() == ElementType::text && IsAscii(node.token().view()));
    const bool isKind = isAttribute ? isText : node.type() == ElementType::characterData && !node.token().isEmpty();
    return isKind && IsBare(node) && IsXmlText(node.token().view());
}

bool AreAttributes(const elementNode* first)
{
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        const elementNode* const value = node->shortValue();
        const bool bare = node->modifiers() == nullptr && node->brackets() == nullptr && node->operation() == nullptr &&
                          node->content() == nullptr;
        if (!bare || !IsNamed(*node) || value == nullptr || value->next() != nullptr || !IsXmlTextOfKind(*value, true))
            return false;
    }
    return NamesDiffer(first);
}

bool IsElement(const elementNode& node, std::uint32_t depth)
{
    if (depth >= maxTreeDepth || !IsNamed(node) || node.modifiers() != nullptr || node.shortValue() != nullptr ||
        node.operation() != nullptr || !AreAttributes(node.brackets()))
        return false;
    bool afterText = false;
    for (const elementNode* child = node.content(); child != nullptr; child = child->next()) {
        const bool isText = IsXmlTextOfKind(*child, false);
        // Texts side by side would be one when they are read back.
        if ((isText && afterText) || (!isText && !IsElement(*child, depth + 1)))
            return false;
        afterText = isText;
    }
    return true;
}

/// Not "case", which is an operator, nor "include".
bool IsItemWord(ElementType keyword)
{
    return keyword != ElementType::caseWord && keyword != ElementType::include;
}

} // namespace

bool NamesDiffer(const elementNode* attributes)
{
    std::vector<std::string_view> names;
    for (const elementNode* node = attributes; node != nullptr; node = node->next())
        names.push_back(node->token().view());
    std::ranges::sort(names);
    return std::ranges::adjacent_find(names) == names.end();
}

bool DeclaresTemplate(const elementNode* attributes)
{
    for (const elementNode* node = attributes; node != nullptr; node = node->next()) {
        if (node->isNamed(xmlNamespaceAttribute))
            return node->shortValue()->token().view() == xmlNamespace;
    }
    return false;
}

bool IsOrdinaryXml(const elementNode* first)
{
    return first->next() == nullptr && IsElement(*first, 0) && !DeclaresTemplate(first->brackets());
}

CCryptoString XmlItemTag(const element& token)
{
    const std::string_view name = token.view();
    if (token.type() == ElementType::identifier) {
        const bool isTag = IsXmlName(name) && name.find(':') == std::string_view::npos && name != xmlItemTag &&
                           name != xmlListTag && KeywordType(name) == ElementType::identifier;
        return CCryptoString(isTag ? name : xmlItemTag);
    }
    const char* const word = TokenText(token.type());
    const bool isTag = word != nullptr && KeywordType(word) == token.type() && IsItemWord(token.type());
    return CCryptoString(isTag ? word : xmlItemTag);
}

element TokenOfXmlTag(std::string_view tag)
{
    const ElementType keyword = KeywordType(tag);
    if (keyword != ElementType::identifier && IsItemWord(keyword))
        return element(keyword);
    element name(tag);
    name.setType(ElementType::identifier);
    return name;
}

CCryptoString XmlText(const element& value, const elementNode* owner)
{
    const CCryptoString decimal = HoldsNumber(owner) ? DecimalNotation(value, owner) : CCryptoString();
    if (!decimal.isEmpty())
        return decimal;
    CCryptoString text = StringNotation(value, owner);
    return !text.isEmpty() && IsXmlText(text.view()) ? text : MarkedNotation(value);
}

} // namespace ccrypto
