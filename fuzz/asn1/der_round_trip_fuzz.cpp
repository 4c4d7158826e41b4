#include "fuzz/asn1/forms.h"

using namespace ccrypto;

namespace {

void RequireSameDer(const CCryptoParser& tree, const element& der)
{
    Require(!tree.isEmpty() && tree.ToDer().view() == der.view());
}

} // namespace

/// An octet of options, then DER: what decodes is written as DER that decodes to the same again, and as template text, JSON and XML
/// that give the same DER.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const DerOptions options{(*data & 1) != 0, (*data & 2) != 0, (*data & 4) != 0};
    CCryptoParser tree;
    if (!tree.Load_DER_Memory(element(data + 1, static_cast<std::uint32_t>(size - 1)), options))
        return 0;
    const element der = tree.ToDer();
    CCryptoDERParser decoder(options);
    Require(decoder.Decode({data + 1, size - 1}) != nullptr);
    Require(decoder.isDer() == (der.view() == TextOf(data + 1, size - 1)));
    CCryptoParser again;
    // Looking into strings changes nothing.
    if (!options.lenient) {
        (void)again.Load_DER_Memory(element(data + 1, static_cast<std::uint32_t>(size - 1)));
        RequireSameDer(again, der);
    }
    // Elements of unknown tags, which lenient decoding keeps, are written as nothing.
    if (!der.isEmpty()) {
        (void)again.Load_DER_Memory(der, options);
        RequireSameDer(again, der);
    }
    RequireStableJson(tree);
    RequireStableXml(tree);
    (void)again.Load_JSON_Memory(tree.ToJson().view());
    RequireSameDer(again, der);
    (void)again.Load_XML_Memory(tree.ToXml().view());
    RequireSameDer(again, der);
    (void)again.Load_ASCII_Memory(tree.ToText().view());
    RequireSameDer(again, der);
    return 0;
}
