#include "asn1/der/ber_tlv.h"
#include "asn1/template/template_match.h"
#include "fuzz/asn1/forms.h"

using namespace ccrypto;

/// Any bytes: what decodes is written as data objects that decode to the same tree, prints as a template that writes and matches
/// them, and is not deeper than it may be.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const CCryptoParser tree(ccrypto::DecodeBerTlv({data, size}));
    if (tree.isEmpty())
        return 0;
    const element written = tree.ToDer();
    Require(!written.isEmpty() && written.length() <= size);
    const CCryptoParser again(ccrypto::DecodeBerTlv(written.bytes()));
    Require(again.ToText() == tree.ToText());

    const CCryptoParser printed(ParseTemplate(tree.ToText().view()));
    Require(printed.ToDer() == written);
    CCryptoTemplateMatch match;
    Require(match.Match(printed.root(), tree.root()));
    return 0;
}
