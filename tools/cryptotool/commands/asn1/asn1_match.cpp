#include "asn1/template/template_match.h"
#include "asn1/template/value_notation.h"
#include "core/text/hex.h"
#include "tools/cryptotool/asn1/decoded_blocks.h"
#include "tools/cryptotool/asn1/template_input.h"
#include "tools/cryptotool/asn1/value_text.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/output/output.h"
#include "tools/text/safe_text.h"

namespace ccrypto {

namespace {

constexpr std::string_view asn1MatchDetails =
    R"(Compares every block of FILE with the template in TEMPLATE-FILE, and prints what its names stand for: "NAME = VALUE", or an element as
template text, or several of them in braces. For a block that does not match, the reason names the item of the template that failed.
)";

constexpr Option asn1MatchOptions[] = {
    fromOption, insideOption, lenientOption, {OptionKind::flag, 0, "json", "", "print the names and values as JSON"}, outputOption,
};

bool IsValueBinding(const TemplateBinding& binding)
{
    return IsBareValue(*binding.node) && (!binding.withSiblings || binding.node->next() == nullptr);
}

std::string BindingLine(const TemplateBinding& binding)
{
    const std::string name = OneLine(binding.name) + " = ";
    if (binding.node == nullptr)
        return name + "(empty)\n";
    const std::string text = NodeText(*binding.node, binding.withSiblings);
    if (!binding.withSiblings || binding.node->next() == nullptr)
        return name + text + "\n";
    std::string block = name + "{\n    ";
    for (const char character : text) {
        block += character;
        if (character == '\n')
            block += "    ";
    }
    return block + "\n}\n";
}

/// The value octets of a value, the DER of elements.
element BindingBytes(const TemplateBinding& binding)
{
    if (IsValueBinding(binding))
        return OctetsOfNode(*binding.node);
    const CCryptoParser part(binding.node->clone(binding.withSiblings));
    return part.ToDer();
}

std::string BindingJson(const TemplateBinding& binding)
{
    std::string json = "{\"name\":" + JsonString(binding.name);
    if (binding.node == nullptr)
        return json + ",\"kind\":\"empty\"}";
    json += IsValueBinding(binding) ? ",\"kind\":\"value\"" : ",\"kind\":\"elements\"";
    json += ",\"text\":" + JsonString(NodeText(*binding.node, binding.withSiblings));
    return json + ",\"hex\":\"" + std::string(HexText(BindingBytes(binding).bytes()).view()) + "\"}";
}

std::string BlockJson(const DecodedBlock& block, const CCryptoTemplateMatch& match, bool matched)
{
    std::string json = "{\"label\":" + BlockLabelJson(block) + ",\"matched\":" + (matched ? "true" : "false");
    if (!matched)
        return json + ",\"failedStep\":" + JsonString(match.failedStep().view()) + "}";
    json += ",\"bindings\":[";
    const char* before = "\n";
    for (const TemplateBinding& binding : match.bindings()) {
        json += before + BindingJson(binding);
        before = ",\n";
    }
    return json + "\n]}";
}

int Match(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string templateFile = arguments.operand(0);
    const std::string file = arguments.operand(1);
    if (templateFile == "-" && file == "-")
        return invocation.misuse("standard input can be one file only");
    CCryptoParser pattern;
    std::vector<DecodedBlock> blocks;
    std::string reason;
    if (!ReadTemplate(invocation.console(), templateFile, arguments.value("from"), pattern, reason))
        return invocation.refuse(templateFile, reason);
    if (!ReadDecoded(invocation.console(), file, DecodingOptions(arguments), BrokenBlocks::refused, blocks, reason))
        return invocation.refuse(file, reason);

    std::string text;
    std::string failure;
    for (std::size_t index = 0; index < blocks.size(); ++index) {
        CCryptoTemplateMatch match;
        const bool matched = match.Match(pattern.root(), blocks[index].root());
        if (!matched && failure.empty())
            failure = BlockPrefix(blocks, index) + "no match: " + std::string(match.failedStep().view());
        if (arguments.has("json")) {
            text += (index == 0 ? "{\"blocks\":[\n" : ",\n") + BlockJson(blocks[index], match, matched);
        } else if (matched) {
            text += BlockHeading(blocks, index);
            for (const TemplateBinding& binding : match.bindings())
                text += BindingLine(binding);
        }
    }
    if (arguments.has("json"))
        text += "\n]}\n";
    Output output(invocation.console(), arguments.value("output"), Output::Content::text);
    if (!output.open() || !output.write(text) || !output.finish())
        return RefuseOutput(invocation, output);
    return failure.empty() ? exitDone : invocation.refuse(file, failure);
}

} // namespace

const Command asn1MatchCommand = {"asn1",
                                  "match",
                                  "compares DER with a template and prints what its names stand for",
                                  "TEMPLATE-FILE FILE",
                                  2,
                                  2,
                                  asn1MatchDetails,
                                  asn1MatchOptions,
                                  Match};

} // namespace ccrypto
