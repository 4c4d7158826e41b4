#include "tools/cryptotool/decoded_input.h"

#include "tools/cryptotool/input.h"
#include "tools/cryptotool/reason.h"
#include "tools/cryptotool/safe_text.h"

DerOptions DecodingOptions(const Arguments& arguments)
{
    DerOptions options;
    options.lenient = arguments.has(lenientOption.name);
    options.insideOctetStrings = arguments.has(insideOption.name);
    options.insideBitStrings = options.insideOctetStrings;
    return options;
}

bool ReadDecoded(Console& console, const std::string& name, const DerOptions& options, std::vector<DecodedBlock>& blocks,
                 std::string& reason)
{
    std::vector<DataBlock> found;
    if (!ReadBlocks(console, name, found, reason))
        return false;
    for (DataBlock& data : found) {
        DecodedBlock& block = blocks.emplace_back();
        block.data = std::move(data);
        StartReason();
        if (!block.tree.Load_DER_Memory(block.data.bytes, options)) {
            reason = Reason("it does not decode");
            if (found.size() > 1)
                reason.insert(0, "PEM block " + std::to_string(blocks.size()) + " (" + block.data.label + "): ");
            return false;
        }
    }
    return true;
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
