#include "tools/cryptotool/asn1/placeholder_values.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/parser/parser_search.h"
#include "asn1/text/decimal.h"
#include "asn1/text/unicode_text.h"
#include "asn1/tree/node_parts.h"
#include "core/text/hex.h"
#include "tools/cryptotool/asn1/decoded_blocks.h"
#include "tools/cryptotool/input/file_input.h"

#include <set>

namespace ccrypto {

namespace {

constexpr std::string_view treeMark = "der:@";
constexpr std::string_view textMark = "text:";

bool IsTagNumber(elementNode& placeholder)
{
    const elementNode* first = placeholder.first();
    return first->linkKind() == LinkKind::brackets;
}

ElementType OwnerType(elementNode& placeholder)
{
    const elementNode* const owner = placeholder.owner();
    return owner != nullptr ? owner->type() : ElementType::none;
}

bool Fail(FillProblem& problem, std::string reason)
{
    problem.reason = std::move(reason);
    return false;
}

bool TextValue(std::string_view text, ElementType owner, element& value, FillProblem& problem)
{
    if (!IsUtf8(text))
        return Fail(problem, "it is not UTF-8; octets are written as #hex");
    value = CCryptoString(text).data();
    // Characters of two bytes are made from UTF-8 text alone.
    if (owner == ElementType::bmpString)
        value.setType(ElementType::utf8Text);
    return true;
}

/// A value written out, for a placeholder in this place.
bool PlainValue(std::string_view text, elementNode& placeholder, element& value, FillProblem& problem)
{
    const ElementType owner = OwnerType(placeholder);
    if (text.starts_with('#'))
        return BytesFromHex(text.substr(1), value) || Fail(problem, "\"#\" is not followed by pairs of hexadecimal digits");
    if (text.starts_with(textMark))
        return TextValue(text.substr(textMark.size()), owner, value, problem);
    if (IsTagNumber(placeholder) || owner == ElementType::asn1Integer || owner == ElementType::enumerated) {
        const bool isNumber = SignedFromDecimal(text, value) && !(IsTagNumber(placeholder) && value.negative());
        return isNumber || Fail(problem, "a number is asked for there, or #hex");
    }
    if (owner == ElementType::boolean) {
        value = element::FromTruth(text == "TRUE" || text == "true");
        return value.toTruth() || text == "FALSE" || text == "false" || Fail(problem, "TRUE or FALSE is asked for there");
    }
    return TextValue(text, owner, value, problem);
}

bool ReadTree(std::string_view file, Console& console, CCryptoParser& tree, FillProblem& problem)
{
    std::vector<DecodedBlock> blocks;
    if (!ReadDecoded(console, std::string(file), {}, BrokenBlocks::refused, blocks, problem.reason)) {
        problem.file = file;
        return false;
    }
    tree = JoinBlocks(blocks);
    return true;
}

/// DER inside a string does not make the string a constructed one.
void KeepPrimitive(elementNode& placeholder)
{
    elementNode* const owner = placeholder.owner();
    const bool isString =
        owner != nullptr && (owner->type() == ElementType::octetString || owner->type() == ElementType::bitString);
    if (isString && !IsTagNumber(placeholder) && !HasBracket(*owner, ElementType::constructed) &&
        !HasBracket(*owner, ElementType::primitive))
        owner->append(LinkKind::brackets, elementNode::Make(ElementType::primitive));
}

} // namespace

bool FillPlaceholders(CCryptoParser& tree, std::string_view name, std::string_view value, Console& console, FillProblem& problem)
{
    elementNode* placeholder = CCryptoParser::find_name(tree.root(), name, true, true);
    if (placeholder == nullptr)
        return Fail(problem, "the template has no name " + std::string(name) + " that is still without a value");
    if (value.starts_with(treeMark)) {
        CCryptoParser subTree;
        if (!ReadTree(value.substr(treeMark.size()), console, subTree, problem))
            return false;
        // The parts of a placeholder are replaced with it, and others of the name inside them.
        for (; placeholder != nullptr; placeholder = CCryptoParser::find_name(tree.root(), name, true, true)) {
            KeepPrimitive(*placeholder);
            if (!tree.fill_tree(name, subTree.root()))
                return Fail(problem, "the template has no name " + std::string(name));
        }
        return true;
    }
    const bool isFile = value.starts_with('@');
    element plain;
    if (isFile && !ReadWhole(console, std::string(value.substr(1)), plain, problem.reason)) {
        problem.file = value.substr(1);
        return false;
    }
    CCryptoParserSearch search(tree.root(), true, true);
    const auto isPlaceholder = [name](const elementNode& node) { return node.isNamed(name); };
    while ((placeholder = search.find(isPlaceholder)) != nullptr) {
        if (!isFile && !PlainValue(value, *placeholder, plain, problem)) {
            problem.reason = std::string(name) + ": " + problem.reason;
            return false;
        }
        placeholder->token() = plain;
    }
    return true;
}

std::string_view FileOfValue(std::string_view value)
{
    const std::string_view file = value.starts_with(treeMark) ? value.substr(treeMark.size() - 1) : value;
    return file.starts_with('@') ? file.substr(1) : std::string_view();
}

std::vector<std::string> UnfilledNames(const CCryptoParser& tree)
{
    std::vector<std::string> names;
    std::set<std::string, std::less<>> seen;
    CCryptoParserSearch search(tree.root(), true, true);
    const auto isPlaceholder = [](const elementNode& node) {
        return node.type() == ElementType::identifier && !node.isNamed("EXCLUDE");
    };
    while (elementNode* const found = search.find(isPlaceholder)) {
        bool isOptional = false;
        for (elementNode* node = found; node != nullptr && !isOptional; node = node->owner())
            isOptional = HasModifier(*node, ElementType::optional);
        if (!isOptional && seen.emplace(found->token().view()).second)
            names.emplace_back(found->token().view());
    }
    return names;
}

} // namespace ccrypto
