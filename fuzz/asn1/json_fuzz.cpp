#include "fuzz/asn1/forms.h"

using namespace ccrypto;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    RequireStableDocument(TextOf(data, size), &CCryptoParser::Load_JSON_Memory);
    return 0;
}
