#include "asn1/template/value_notation.h"
#include "tools/cryptotool/asn1/decoded_blocks.h"
#include "tools/cryptotool/asn1/value_text.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/output/output.h"
#include "tools/text/safe_text.h"

namespace ccrypto {

namespace {

constexpr std::string_view asn1GetDetails =
    R"(Follows PATH from the first element of every block of FILE, and prints what is there. A step is one character:

    {   the content, or a short value       ,   the next element
    =   the value, or the content           P   the parent, or the element before
    [   the bracket list                    (   the modifier list

"|TEMPLATE|" goes on only where the element matches the template.
)";

constexpr Option asn1GetOptions[] = {
    {OptionKind::choice, 0, "as", "value|template|json|xml|der|bytes",
     "how to print it (value); der is the element, bytes its value, both binary"},
    insideOption,
    lenientOption,
    outputOption,
};

/// The length of the step that a path begins with.
std::size_t StepLength(std::string_view path)
{
    const std::size_t end = path[0] == '|' ? path.find('|', 1) : 0;
    return end == std::string_view::npos ? path.size() : end + 1;
}

/// Which step of the path has no node.
std::string FailedStep(elementNode* start, std::string_view path)
{
    std::size_t length = 0;
    for (std::size_t step = 1; length < path.size(); ++step) {
        const std::string_view words = path.substr(length, StepLength(path.substr(length)));
        length += words.size();
        if (CCryptoParser::find_path(start, path.substr(0, length)) == nullptr)
            return "step " + std::to_string(step) + " of the path, \"" + std::string(words) + "\", leads nowhere";
    }
    return "the path leads nowhere";
}

element BytesOf(const elementNode& node)
{
    return IsBareValue(node) ? OctetsOfNode(node) : CCryptoParser::ToDer(node.value());
}

/// Takes a node out of its tree, without its siblings: a copy of a large one would take as much memory again.
ElementNodePtr TakeOut(CCryptoParser& tree, elementNode& node)
{
    ElementNodePtr taken = &node == tree.root() ? tree.takeRoot() : node.detach();
    taken->set(LinkKind::sibling, nullptr);
    return taken;
}

/// Empty, with LastReason() set, when the node cannot be written so. The tree may lose the node.
std::string Form(CCryptoParser& tree, elementNode& node, const std::string& form)
{
    if (form == "value")
        return NodeText(node, false) + "\n";
    if (form == "bytes")
        return std::string(BytesOf(node).view());
    const CCryptoParser part(TakeOut(tree, node));
    if (form == "template")
        return EscapeDocument(part.ToText().view(), EscapeStyle::templateText);
    if (form == "json")
        return EscapeDocument(part.ToJson().view(), EscapeStyle::json);
    if (form == "xml")
        return EscapeDocument(part.ToXml().view(), EscapeStyle::xml);
    return std::string(part.ToDer().view());
}

int Get(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string path = arguments.operand(0);
    const std::string file = arguments.operand(1);
    const std::string form = arguments.value("as", "value");
    const bool isBinary = form == "der" || form == "bytes";
    std::vector<DecodedBlock> blocks;
    std::string reason;
    if (!ReadDecoded(invocation.console(), file, DecodingOptions(arguments), BrokenBlocks::refused, blocks, reason))
        return invocation.refuse(file, reason);

    std::string text;
    for (std::size_t index = 0; index < blocks.size(); ++index) {
        elementNode* const root = blocks[index].tree.root();
        StartReason();
        elementNode* const node = CCryptoParser::find_path(root, path);
        if (node == nullptr)
            return invocation.refuse(file, BlockPrefix(blocks, index) + FailedStep(root, path));
        const std::string shown = Form(blocks[index].tree, *node, form);
        if (shown.empty() && form != "bytes")
            return invocation.refuse(file, BlockPrefix(blocks, index) + LastReason("it cannot be printed in this form"));
        text += shown;
    }
    Output output(invocation.console(), arguments.value("output"), isBinary ? Output::Content::binary : Output::Content::text);
    return FinishOutput(invocation, output, output.open() && output.write(text));
}

} // namespace

const Command asn1GetCommand = {"asn1",         "get", "prints the element at the end of a path", "PATH FILE", 2, 2, asn1GetDetails,
                                asn1GetOptions, Get};

} // namespace ccrypto
