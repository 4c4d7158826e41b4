#include "tools/cryptotool/placeholder_values.h"

#include "asn1/bracket_list.h"
#include "asn1/decimal.h"
#include "asn1/der_analyzer.h"
#include "asn1/hex.h"
#include "asn1/parser_search.h"
#include "tools/cryptotool/decoded_input.h"
#include "tools/cryptotool/input.h"

#include <algorithm>

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

bool TextValue(std::string_view text, ElementType owner, element& value)
{
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
        return TextValue(text.substr(textMark.size()), owner, value);
    if (IsTagNumber(placeholder) || owner == ElementType::asn1Integer || owner == ElementType::enumerated) {
        const bool isNumber = SignedFromDecimal(text, value) && !(IsTagNumber(placeholder) && value.negative());
        return isNumber || Fail(problem, "a number is asked for there, or #hex");
    }
    if (owner == ElementType::boolean) {
        value = element::FromTruth(text == "TRUE" || text == "true");
        return value.toTruth() || text == "FALSE" || text == "false" || Fail(problem, "TRUE or FALSE is asked for there");
    }
    return TextValue(text, owner, value);
}

bool ReadTree(std::string_view file, Console& console, CCryptoParser& tree, FillProblem& problem)
{
    std::vector<DecodedBlock> blocks;
    if (!ReadDecoded(console, std::string(file), {}, blocks, problem.reason)) {
        problem.file = file;
        return false;
    }
    tree.setRoot(blocks[0].tree.takeRoot());
    for (std::size_t index = 1; index < blocks.size(); ++index)
        tree.root()->last()->set(LinkKind::sibling, blocks[index].tree.takeRoot());
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
        return Fail(problem, "the template has no name " + std::string(name));
    CCryptoParser subTree;
    element bytes;
    const bool isTree = value.starts_with(treeMark);
    const bool isFile = value.starts_with('@');
    if (isTree && !ReadTree(value.substr(treeMark.size()), console, subTree, problem))
        return false;
    if (isFile && !ReadWhole(console, std::string(value.substr(1)), bytes, problem.reason)) {
        problem.file = value.substr(1);
        return false;
    }
    for (; placeholder != nullptr; placeholder = CCryptoParser::find_name(tree.root(), name, true, true)) {
        element plain = bytes;
        if (isTree) {
            KeepPrimitive(*placeholder);
            tree.fill_tree(name, subTree.root());
        } else if (isFile || PlainValue(value, *placeholder, plain, problem)) {
            tree.fill(name, plain);
        } else {
            problem.reason = std::string(name) + ": " + problem.reason;
            return false;
        }
    }
    return true;
}

std::vector<std::string> UnfilledNames(const CCryptoParser& tree)
{
    std::vector<std::string> names;
    CCryptoParserSearch search(tree.root(), true, true);
    const auto isPlaceholder = [](const elementNode& node) { return node.type() == ElementType::identifier; };
    while (elementNode* const found = search.find(isPlaceholder)) {
        bool isOptional = false;
        for (elementNode* node = found; node != nullptr && !isOptional; node = node->owner())
            isOptional = HasModifier(*node, ElementType::optional);
        const std::string name(found->token().view());
        if (!isOptional && std::ranges::find(names, name) == names.end())
            names.push_back(name);
    }
    return names;
}
