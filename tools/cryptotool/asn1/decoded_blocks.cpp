#include "tools/cryptotool/asn1/decoded_blocks.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/tree/node_parts.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/encoding_detection.h"
#include "tools/text/safe_text.h"

namespace ccrypto {

namespace {

void CloseNode(elementNode& node)
{
    const bool isPrimitive = HasBracket(node, ElementType::primitive) || HasBracket(node, ElementType::implicit);
    node.set(LinkKind::content, CCryptoParser::ToDer(node.content()));
    if (!isPrimitive && !HasBracket(node, ElementType::constructed))
        node.append(LinkKind::brackets, elementNode::Make(ElementType::constructed));
}

} // namespace

bool HasLongTag(std::span<const std::uint8_t> octets)
{
    return !octets.empty() && (octets[0] & 0x1F) == 0x1F;
}

DerOptions DecodingOptions(const Arguments& arguments)
{
    DerOptions options;
    options.lenient = arguments.has(lenientOption.name);
    options.insideOctetStrings = arguments.has(insideOption.name);
    options.insideBitStrings = options.insideOctetStrings;
    return options;
}

bool ReadDecoded(Console& console, const std::string& name, const DerOptions& options, BrokenBlocks broken,
                 std::vector<DecodedBlock>& blocks, std::string& reason)
{
    std::vector<DataBlock> found;
    if (!ReadBlocks(console, name, found, reason))
        return false;
    for (DataBlock& data : found) {
        DecodedBlock& block = blocks.emplace_back();
        block.data = std::move(data);
        StartReason();
        if (block.tree.Load_DER_Memory(block.data.bytes, options))
            continue;
        block.problem = LastReason("it does not decode");
        const bool isText = block.data.label.empty() && IsText(block.data.bytes.view());
        if (!isText && HasLongTag(block.data.bytes.bytes()))
            block.problem += "; its tag is above 30, which is not supported";
        if (!block.data.label.empty())
            block.problem.insert(0, PemBlockName(blocks.size(), block.data.label) + ": ");
        else if (isText)
            block.problem += "; it is text, but not PEM, base64 or hexadecimal";
        if (isText || broken == BrokenBlocks::refused) {
            reason = block.problem;
            return false;
        }
    }
    return true;
}

CCryptoParser JoinBlocks(std::vector<DecodedBlock>& blocks)
{
    CCryptoParser joined(blocks[0].tree.takeRoot());
    elementNode* last = joined.root();
    for (std::size_t index = 1; index < blocks.size(); ++index)
        last = last->last()->set(LinkKind::sibling, blocks[index].tree.takeRoot());
    return joined;
}

std::string BlockPrefix(const std::vector<DecodedBlock>& blocks, std::size_t index)
{
    return blocks.size() > 1 ? PemBlockName(index + 1, blocks[index].data.label) + ": " : std::string();
}

std::string BlockHeading(const std::vector<DecodedBlock>& blocks, std::size_t index)
{
    if (blocks.size() < 2)
        return {};
    const std::string place = "(" + std::to_string(index + 1) + " of " + std::to_string(blocks.size()) + ")";
    return "-- " + OneLine(blocks[index].data.label) + " " + place + "\n";
}

std::string BlockLabelJson(const DecodedBlock& block)
{
    return block.data.label.empty() ? "null" : JsonString(block.data.label);
}

void LimitDepth(elementNode* first, std::uint32_t levels)
{
    for (elementNode* node = first; node != nullptr; node = node->next()) {
        const elementNode* const content = node->content();
        if (content == nullptr || !IsAsn1Type(content->type()))
            continue;
        if (levels > 1)
            LimitDepth(node->content(), levels - 1);
        else
            CloseNode(*node);
    }
}

} // namespace ccrypto
