#include "fuzz/asn1/forms.h"

using namespace ccrypto;

/// Any text: what is read prints the same after a round through template text, JSON and XML.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const CCryptoParser tree(ParseTemplate(TextOf(data, size)));
    if (tree.isEmpty())
        return 0;
    const CCryptoString text = tree.ToText();
    const CCryptoParser again(ParseTemplate(text.view()));
    Require(!again.isEmpty());
    Require(again.ToText() == text);
    RequireStableJson(tree);
    RequireStableXml(tree);

    CCryptoParser other;
    Require(other.Load_JSON_Memory(tree.ToJson().view()));
    Require(other.ToText() == text);
    Require(other.Load_XML_Memory(tree.ToXml().view()));
    Require(other.ToText() == text);
    return 0;
}
