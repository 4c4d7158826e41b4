#include "tools/cryptotool/asn1/decoded_blocks.h"
#include "tools/cryptotool/asn1/outline_text.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/output/output.h"
#include "tools/text/safe_text.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace ccrypto {

namespace {

constexpr std::string_view asn1ShowDetails =
    R"(Prints the elements of FILE. The outline has one line per element: its offset in the block, the length of its header and of its
value, whether it is constructed, its type and value, and what the value means: the name of an object identifier, a readable time,
with --inside the IP addresses of certificates. The other forms are the whole tree; "cryptotool asn1 build" makes the same octets of
each of them, when the data is DER. A warning says when it is not, as with indefinite lengths.

OFFSET is decimal, or hexadecimal after 0x; only the element that starts there is shown, of a file with one block.
)";

constexpr Option atOption = {OptionKind::text, 0, "at", "OFFSET", "show the element at this offset alone"};
constexpr Option asn1ShowOptions[] = {
    {OptionKind::choice, 0, "as", "template|json|xml|der|outline", "how to print it (outline); der is binary"},
    atOption,
    insideOption,
    lenientOption,
    {OptionKind::number, 0, "depth", "N", "show N levels; in a tree, what is deeper stays bytes"},
    {OptionKind::flag, 0, "json", "", "print the outline as JSON"},
    outputOption,
};

using Blocks = std::vector<DecodedBlock>;

/// How an outline is made.
struct OutlineSetting {
    DerOptions decoding;
    std::uint32_t levels = 0;
    std::uint32_t start = 0; ///< the offset of the first element in the file's block
};

/// Visits the elements of a block, with their offsets in the file's block.
template <typename Visit>
void ForEachElement(const DecodedBlock& block, const OutlineSetting& setting, const Visit& visit)
{
    WalkOutline(block.data.bytes.bytes(), block.root(), setting.decoding, setting.levels, [&](OutlineElement line) {
        line.header.start += setting.start;
        line.header.valueStart += setting.start;
        visit(line);
    });
}

bool WriteOutline(const Blocks& blocks, const OutlineSetting& setting, Output& output)
{
    bool written = true;
    for (std::size_t index = 0; index < blocks.size(); ++index) {
        written = written && output.write(BlockHeading(blocks, index)) && output.write(OutlineHeading());
        ForEachElement(blocks[index], setting,
                       [&](const OutlineElement& line) { written = written && output.write(OutlineLine(line, output.paint())); });
    }
    return written;
}

bool WriteOutlineJson(const Blocks& blocks, const OutlineSetting& setting, Output& output)
{
    bool written = output.write("{\"blocks\":[");
    const char* before = "\n";
    for (const DecodedBlock& block : blocks) {
        written = written && output.write(before + ("{\"label\":" + BlockLabelJson(block)) + ",\"elements\":[");
        before = "\n";
        ForEachElement(block, setting, [&](const OutlineElement& line) {
            written = written && output.write(before + OutlineJson(line));
            before = ",\n";
        });
        written = written && output.write("\n]}");
        before = ",\n";
    }
    return written && output.write("\n]}\n");
}

/// An offset in decimal, or in hexadecimal after "0x".
bool ParseOffset(std::string_view text, std::uint32_t& offset)
{
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    const std::string_view digits = text.substr(isHex ? 2 : 0);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), offset, isHex ? 16 : 10);
    return error == std::errc() && end == digits.data() + digits.size();
}

/// Leaves of the block the element that starts at `offset`. \return false with `reason`, which names the nearest element.
bool KeepElementAt(std::uint32_t offset, const DerOptions& decoding, DecodedBlock& block, std::string& reason)
{
    OutlineElement nearest;
    std::uint32_t end = 0;
    bool isOpenEnded = false; ///< the end-of-contents octets have not come
    std::uint32_t leastDistance = UINT32_MAX;
    WalkOutline(block.data.bytes.bytes(), block.root(), decoding, 0, [&](const OutlineElement& line) {
        const std::uint32_t start = line.header.start;
        const std::uint32_t distance = start < offset ? offset - start : start - offset;
        if (line.kind == OutlineElement::Kind::element && distance < leastDistance) {
            leastDistance = distance;
            nearest = line;
            end = line.header.valueStart + std::min(line.header.length, static_cast<std::uint32_t>(line.value.size()));
            isOpenEnded = line.header.indefinite;
        } else if (isOpenEnded && line.kind == OutlineElement::Kind::endOfContents && line.depth == nearest.depth + 1) {
            end = line.header.valueStart;
            isOpenEnded = false;
        }
    });
    if (leastDistance != 0) {
        reason = "no element starts at offset " + std::to_string(offset) + "; the nearest is the " +
                 std::string(nearest.typeName()) + " at " + std::to_string(nearest.header.start);
        return false;
    }
    block.data.bytes = element(block.data.bytes.data() + offset, end - offset);
    StartReason();
    if (!block.tree.Load_DER_Memory(block.data.bytes, decoding) && block.problem.empty())
        block.problem = LastReason("it does not decode");
    return true;
}

element BlockBytes(const Blocks& blocks)
{
    element bytes;
    for (const DecodedBlock& block : blocks)
        bytes.append(block.data.bytes.data(), block.data.bytes.length());
    return bytes;
}

/// Empty, with LastReason() set, when the tree cannot be written so.
std::string TreeText(Blocks& blocks, const std::string& form)
{
    StartReason();
    if (form != "template") {
        const CCryptoParser joined = JoinBlocks(blocks);
        return form == "json" ? EscapeDocument(joined.ToJson().view(), EscapeStyle::json)
                              : EscapeDocument(joined.ToXml().view(), EscapeStyle::xml);
    }
    std::string text;
    for (std::size_t index = 0; index < blocks.size(); ++index) {
        const CCryptoString block = blocks[index].tree.ToText();
        if (block.isEmpty())
            return {};
        text += BlockHeading(blocks, index) + EscapeDocument(block.view(), EscapeStyle::templateText);
        // A value goes on to the next separator.
        if (index + 1 < blocks.size())
            text.insert(text.size() - 1, ",");
    }
    return text;
}

bool WriteTree(Blocks& blocks, const std::string& form, std::uint32_t levels, Output& output, std::string& reason)
{
    if (form == "der")
        return output.write(BlockBytes(blocks).bytes());
    for (DecodedBlock& block : blocks)
        if (levels != 0)
            LimitDepth(block.tree.root(), levels);
    const std::string text = TreeText(blocks, form);
    if (text.empty())
        reason = LastReason("it cannot be printed in this form");
    return !text.empty() && output.write(text);
}

/// The outline shows what was read; of the other forms "asn1 build" makes other octets then.
void WarnOfBlocksThatAreNotDer(Invocation& invocation, const std::string& file, const Blocks& blocks)
{
    for (std::size_t index = 0; index < blocks.size(); ++index)
        if (blocks[index].problem.empty() && !blocks[index].tree.isDer())
            invocation.warn(file, BlockPrefix(blocks, index) + "it is not DER; encoded again, it gives other octets");
}

/// In DER, tags above 30 take further octets, which are not read as such.
void WarnOfLongTags(Invocation& invocation, const std::string& file, const Blocks& blocks, const DerOptions& decoding)
{
    for (std::size_t index = 0; index < blocks.size(); ++index) {
        const std::span<const std::uint8_t> bytes = blocks[index].data.bytes.bytes();
        std::optional<std::uint32_t> place;
        WalkOutline(bytes, blocks[index].root(), decoding, 0, [&](const OutlineElement& line) {
            if (!place && line.kind == OutlineElement::Kind::element && HasLongTag(bytes.subspan(line.header.start)))
                place = line.header.start;
        });
        if (place)
            invocation.warn(file, BlockPrefix(blocks, index) + "the tag at offset " + std::to_string(*place) +
                                      " is above 30, which is not supported: what is shown of it is wrong");
    }
}

int Show(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string form = arguments.value("as", "outline");
    const std::uint64_t levels = arguments.number("depth", 0);
    std::uint32_t offset = 0;
    if (arguments.has("json") && form != "outline")
        return invocation.misuse("--json and --as " + form + " are mutually exclusive");
    if (arguments.has("depth") && (levels == 0 || levels > UINT32_MAX || form == "der"))
        return invocation.misuse(form == "der" ? "--depth and --as der are mutually exclusive" : "--depth must be at least 1");
    if (arguments.has(atOption.name) && !ParseOffset(arguments.value(atOption.name), offset))
        return invocation.misuse("--at must be an offset like 60 or 0x3c, not " + arguments.value(atOption.name));

    OutlineSetting setting = {DecodingOptions(arguments), static_cast<std::uint32_t>(levels), offset};
    const std::string file = arguments.operand(0);
    Blocks blocks;
    std::string reason;
    const BrokenBlocks broken = form == "outline" && setting.decoding.lenient ? BrokenBlocks::kept : BrokenBlocks::refused;
    if (!ReadDecoded(invocation.console(), file, setting.decoding, broken, blocks, reason))
        return invocation.refuse(file, reason);
    if (arguments.has(atOption.name) && blocks.size() > 1)
        return invocation.refuse(file, "--at requires one block, and it has " + std::to_string(blocks.size()));
    if (arguments.has(atOption.name) && !KeepElementAt(offset, setting.decoding, blocks.front(), reason))
        return invocation.refuse(file, reason);
    if (form != "der")
        WarnOfBlocksThatAreNotDer(invocation, file, blocks);
    WarnOfLongTags(invocation, file, blocks, setting.decoding);
    Output output(invocation.console(), arguments.value("output"), form == "der" ? Output::Content::binary : Output::Content::text);
    if (!output.open())
        return RefuseOutput(invocation, output);

    if (form != "outline") {
        std::string treeReason;
        const bool written = WriteTree(blocks, form, setting.levels, output, treeReason);
        return treeReason.empty() ? FinishOutput(invocation, output, written) : invocation.refuse(file, treeReason);
    }
    const bool written = (arguments.has("json") ? WriteOutlineJson : WriteOutline)(blocks, setting, output);
    for (const DecodedBlock& block : blocks)
        if (!block.problem.empty())
            invocation.warn(file, block.problem);
    return FinishOutput(invocation, output, written);
}

} // namespace

const Command asn1ShowCommand = {"asn1",          "show", "prints the elements of DER data", "FILE", 1, 1, asn1ShowDetails,
                                 asn1ShowOptions, Show};

} // namespace ccrypto
