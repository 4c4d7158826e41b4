#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/cli/safe_text.h"
#include "tools/cryptotool/io/decoded_input.h"
#include "tools/cryptotool/io/depth_limit.h"
#include "tools/cryptotool/io/outline_report.h"
#include "tools/cryptotool/io/output.h"

namespace ccrypto {

namespace {

constexpr std::string_view asn1ShowDetails =
    R"(Prints the elements of FILE. The outline has one line an element: its offset in the block, the length of its header and of its
value, whether it is constructed, its type and value, and the name of an object identifier. The other forms are the whole tree;
"cryptotool asn1 build" makes the same DER of each of them.
)";

constexpr Option asn1ShowOptions[] = {
    {OptionKind::choice, 0, "as", "template|json|xml|outline", "how to print it (outline)"},
    insideOption,
    lenientOption,
    {OptionKind::number, 0, "depth", "N", "take N levels apart; in a tree, what lies deeper stays bytes"},
    {OptionKind::flag, 0, "json", "", "print the outline as JSON"},
    outputOption,
};

using Blocks = std::vector<DecodedBlock>;

bool WriteOutline(const Blocks& blocks, const DerOptions& options, std::uint32_t levels, Output& output)
{
    bool written = true;
    for (std::size_t index = 0; index < blocks.size(); ++index) {
        const DecodedBlock& block = blocks[index];
        written = written && output.write(BlockHeading(blocks, index)) && output.write(OutlineHeading());
        WalkOutline(block.data.bytes.bytes(), block.root(), options, levels,
                    [&](const OutlineElement& line) { written = written && output.write(OutlineLine(line)); });
    }
    return written;
}

bool WriteOutlineJson(const Blocks& blocks, const DerOptions& options, std::uint32_t levels, Output& output)
{
    bool written = output.write("{\"blocks\":[");
    const char* before = "\n";
    for (const DecodedBlock& block : blocks) {
        written = written && output.write(before + ("{\"label\":" + BlockLabelJson(block)) + ",\"elements\":[");
        before = "\n";
        WalkOutline(block.data.bytes.bytes(), block.root(), options, levels, [&](const OutlineElement& line) {
            written = written && output.write(before + OutlineJson(line));
            before = ",\n";
        });
        written = written && output.write("\n]}");
        before = ",\n";
    }
    return written && output.write("\n]}\n");
}

/// Empty, with Reason() set, when the tree cannot be written so.
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

int Show(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string form = arguments.value("as", "outline");
    const std::uint64_t levels = arguments.number("depth", 0);
    if (arguments.has("json") && form != "outline")
        return invocation.misuse("--json prints an outline; --as " + form + " does not go with it");
    if (arguments.has("depth") && (levels == 0 || levels > UINT32_MAX))
        return invocation.misuse("--depth needs a number of at least 1");

    const DerOptions decoding = DecodingOptions(arguments);
    const std::string file = arguments.operand(0);
    Blocks blocks;
    std::string reason;
    const BrokenBlocks broken = form == "outline" && decoding.lenient ? BrokenBlocks::kept : BrokenBlocks::refused;
    if (!ReadDecoded(invocation.console(), file, decoding, broken, blocks, reason))
        return invocation.refuse(file, reason);
    Output output(invocation.console(), arguments.value("output"), Output::Content::text);
    if (!output.open())
        return invocation.refuse(output.name(), output.reason());

    bool written = false;
    if (form == "outline") {
        written =
            (arguments.has("json") ? WriteOutlineJson : WriteOutline)(blocks, decoding, static_cast<std::uint32_t>(levels), output);
        for (const DecodedBlock& block : blocks)
            if (!block.problem.empty())
                invocation.warn(file, block.problem);
    } else {
        if (levels != 0) {
            for (DecodedBlock& block : blocks)
                LimitDepth(block.tree.root(), static_cast<std::uint32_t>(levels));
        }
        const std::string text = TreeText(blocks, form);
        if (text.empty())
            return invocation.refuse(file, Reason("it cannot be printed so"));
        written = output.write(text);
    }
    return written && output.finish() ? exitDone : invocation.refuse(output.name(), output.reason());
}

} // namespace

const Command asn1ShowCommand = {"asn1",          "show", "prints the elements of DER data", "FILE", 1, 1, asn1ShowDetails,
                                 asn1ShowOptions, Show};

} // namespace ccrypto
