#include "asn1/template/template_match.h"
#include "fuzz/asn1/forms.h"

using namespace ccrypto;

/// A template, and after a line feed DER: a match binds names of the template, and a failure names its step.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto [text, bytes] = SplitLine(TextOf(data, size));
    const ElementNodePtr pattern = ParseTemplate(text);
    CCryptoParser tree;
    if (pattern == nullptr ||
        !tree.Load_DER_Memory(element(bytes.data(), static_cast<std::uint32_t>(bytes.size())), {true, true, true}))
        return 0;
    CCryptoTemplateMatch match;
    const bool matched = match.Match(pattern.get(), tree.root());
    Require(matched == match.failedStep().isEmpty());
    for (const TemplateBinding& binding : match.bindings())
        Require(match.find(binding.name) != nullptr);
    return 0;
}
