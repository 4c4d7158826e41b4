#include "asn1/parser/parser.h"

#include "asn1/der/push_der_buffer.h"
#include "asn1/json/push_json_buffer.h"
#include "asn1/parser/parser_search.h"
#include "asn1/template/gen_parser.h"
#include "asn1/template/lexical_analyzer.h"
#include "asn1/template/push_ascii_buffer.h"
#include "asn1/template/template_cache.h"
#include "asn1/template/template_match.h"
#include "asn1/xml/push_xml_buffer.h"
#include "core/diagnostics/auto_logger.h"

#include <utility>

using namespace ccrypto;

namespace {

elementNode* FollowStep(const elementNode& node, char step)
{
    switch (step) {
    case '{':
        return node.content() != nullptr ? node.content() : node.shortValue();
    case '=':
        return node.shortValue() != nullptr ? node.shortValue() : node.content();
    case '[':
        return node.brackets();
    case '(':
        return node.modifiers();
    case ',':
        return node.next();
    case 'P':
        return node.parent();
    default:
        return nullptr;
    }
}

} // namespace

bool CCryptoParser::owns(const elementNode* node) const
{
    while (node != nullptr && node->parent() != nullptr)
        node = node->parent();
    return node != nullptr && node == root_.get();
}

bool CCryptoParser::remove_node(elementNode* node)
{
    CCryptoAutoLogger logger("CCryptoParser::remove_node");
    if (!owns(node))
        return logger.fail(false, "This is not our tree!");
    ElementNodePtr rest = node->release(LinkKind::sibling);
    if (node == root_.get()) {
        root_ = std::move(rest);
        return logger.setResult(true);
    }
    elementNode& parent = *node->parent();
    parent.set(node->linkKind(), std::move(rest));
    return logger.setResult(true);
}

elementNode* CCryptoParser::replace_node(elementNode* old, ElementNodePtr replacement)
{
    CCryptoAutoLogger logger("CCryptoParser::replace_node");
    if (replacement != nullptr && replacement->parent() != nullptr) {
        // Its parent owns it.
        replacement.release();
        return logger.fail(static_cast<elementNode*>(nullptr), "replace_node; newNode has parent");
    }
    if (replacement == nullptr || !owns(old))
        return logger.fail(static_cast<elementNode*>(nullptr), "This is not our tree!");

    elementNode* const placed = replacement.get();
    for (const LinkKind kind : {LinkKind::content, LinkKind::sibling}) {
        if (ElementNodePtr follows = old->release(kind))
            placed->last()->set(LinkKind::sibling, std::move(follows));
    }
    if (old == root_.get())
        root_ = std::move(replacement);
    else
        old->parent()->set(old->linkKind(), std::move(replacement));
    logger.setResult(true);
    return placed;
}

elementNode* CCryptoParser::find_path(elementNode* start, std::string_view path)
{
    elementNode* node = start;
    while (node != nullptr && !path.empty()) {
        const char step = path[0];
        path.remove_prefix(1);
        if (step != '|') {
            node = FollowStep(*node, step);
            continue;
        }
        const std::size_t end = path.find('|');
        const ElementNodePtr pattern = end != std::string_view::npos ? ParseInlineTemplate(path.substr(0, end)) : nullptr;
        if (pattern == nullptr || !CCryptoTemplateMatch().Match(pattern.get(), node))
            return nullptr;
        path.remove_prefix(end + 1);
    }
    return node;
}

const element* CCryptoParser::find_path_element(elementNode* start, std::string_view path)
{
    const elementNode* const node = find_path(start, path);
    return node != nullptr ? &node->token() : nullptr;
}

elementNode* CCryptoParser::find_name(elementNode* start, std::string_view name, bool inDepth, bool followSiblings)
{
    CCryptoParserSearch search(start, inDepth, followSiblings);
    return search.find([name](const elementNode& node) { return node.isNamed(name); });
}

elementNode* CCryptoParser::index_node(std::string_view name) const
{
    elementNode* const node = find_name(root_.get(), name, true, true);
    if (node == nullptr) {
        CCryptoAutoLogger logger("CCryptoParser::index_node");
        logger.fail(false, "Index node not found: %s", CCryptoString(name).c_str());
    }
    return node;
}

const elementNode* CCryptoParser::index_value(std::string_view name) const
{
    const elementNode* const node = index_node(name);
    const elementNode* const value = node != nullptr ? node->value() : nullptr;
    if (node != nullptr && value == nullptr) {
        CCryptoAutoLogger logger("CCryptoParser::index_value");
        logger.fail(false, "Index node has no value: %s", CCryptoString(name).c_str());
    }
    return value;
}

CCryptoString CCryptoParser::get_text(std::string_view name) const
{
    const elementNode* const value = index_value(name);
    return value != nullptr ? value->token().toString() : CCryptoString();
}

std::uint32_t CCryptoParser::get_number(std::string_view name) const
{
    const elementNode* const value = index_value(name);
    return value != nullptr ? value->token().toWord32() : 0;
}

element CCryptoParser::get_bytes(std::string_view name) const
{
    const elementNode* const value = index_value(name);
    return value != nullptr ? value->token() : element();
}

ElementNodePtr CCryptoParser::get_tree(std::string_view name) const
{
    const elementNode* const value = index_value(name);
    return value != nullptr ? value->clone(true) : nullptr;
}

bool CCryptoParser::fill(std::string_view name, const element& value)
{
    elementNode* const node = index_node(name);
    if (node == nullptr)
        return false;
    node->token() = value;
    return true;
}

bool CCryptoParser::fill_word(std::string_view name, std::string_view word)
{
    const ElementType keyword = KeywordType(word);
    if (keyword == ElementType::identifier)
        return fill(name, CCryptoString(word).data());
    elementNode* const node = index_node(name);
    if (node == nullptr)
        return false;
    // A type without a value is there all the same, though the placeholder may be left out.
    node->token() = element(keyword);
    node->set(LinkKind::modifiers, nullptr);
    return true;
}

bool CCryptoParser::fill_tree(std::string_view name, const elementNode* tree)
{
    elementNode* const node = index_node(name);
    if (node == nullptr || tree == nullptr)
        return node != nullptr;
    ElementNodePtr copy = tree->clone(true);
    if (ElementNodePtr rest = node->release(LinkKind::sibling))
        copy->last()->set(LinkKind::sibling, std::move(rest));
    if (node == root_.get())
        root_ = std::move(copy);
    else
        node->parent()->set(node->linkKind(), std::move(copy));
    return true;
}

element CCryptoParser::ToDer(const elementNode* node)
{
    CPushDerBuffer buffer;
    return buffer.Push(node) ? buffer.takeBuffer() : element();
}

namespace {

template <typename Buffer>
CCryptoString TextOf(const elementNode* node)
{
    Buffer buffer;
    return buffer.Push(node) ? CCryptoString(buffer.buffer().view()) : CCryptoString();
}

} // namespace

CCryptoString CCryptoParser::ToText(const elementNode* node)
{
    return TextOf<CPushAsciiBuffer>(node);
}

CCryptoString CCryptoParser::ToJson(const elementNode* node)
{
    return TextOf<CPushJSONBuffer>(node);
}

CCryptoString CCryptoParser::ToXml(const elementNode* node)
{
    return TextOf<CPushXmlBuffer>(node);
}
