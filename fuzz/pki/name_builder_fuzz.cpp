#include "fuzz/require.h"
#include "pki/x509/name.h"

#include <string_view>

using namespace ccrypto;

namespace {

constexpr CCryptoString NameStrings::*strings[] = {
    &NameStrings::country,      &NameStrings::state,        &NameStrings::locality,
    &NameStrings::serialNumber, &NameStrings::organisation, &NameStrings::organisationalUnit,
    &NameStrings::surname,      &NameStrings::givenName,    &NameStrings::email,
    &NameStrings::commonName,   &NameStrings::title,        &NameStrings::pseudonym,
};

} // namespace

/// Twelve texts, a line each: what is built has as many attributes as there are texts, and each comes back unchanged.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    NameStrings texts;
    std::size_t count = 0;
    for (CCryptoString NameStrings::*const text : strings) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(line.size() == rest.size() ? rest.size() : line.size() + 1);
        texts.*text = CCryptoString(line);
        count += !line.empty();
    }
    CCrypto_X509_ValueList name;
    if (!BuildName(texts, name)) {
        Require(name.isEmpty());
        return 0;
    }
    Require(name.values().size() == count);
    CCryptoParser parser;
    CCrypto_X509_ValueList again;
    Require(parser.Load_DER_Memory(name.GetDerEncodedElement()) && parser.isDer() && again.Parse(parser.root()->content(), true));
    Require(again.values().size() == count);
    for (CCryptoString NameStrings::*const text : strings) {
        bool isThere = (texts.*text).isEmpty();
        for (const auto& value : again.values())
            isThere |= value->text() == texts.*text;
        Require(isThere);
    }
    return 0;
}
