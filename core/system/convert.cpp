#include "core/system/convert.h"

#include "core/base/c_text.h"
#include "core/diagnostics/auto_logger.h"
#include "core/log/log_writers.h"
#include "core/text/string.h"

#include <cstdio>
#include <cstring>
#include <string_view>

using namespace ccrypto;

namespace {

/// What one byte becomes; the view is into `reference` or into constants.
std::string_view EncodedByte(char character, bool keepQuotes, char (&reference)[7])
{
    reference[0] = character;
    const std::string_view unchanged(reference, 1);
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return keepQuotes ? unchanged : "&quot;";
    case '\'':
        return keepQuotes ? unchanged : "&apos;";
    default:
        break;
    }
    const auto byte = static_cast<std::uint8_t>(character);
    const bool passes = keepQuotes || (byte > 32 && byte < 127) || byte > 159;
    if (passes)
        return unchanged;
    std::snprintf(reference, sizeof reference, "&#x%02x;", byte);
    return {reference, 6};
}

} // namespace

std::uint32_t CCryptoConvert::html_encode(const char* source, char* target, std::uint32_t size, bool keepQuotes)
{
    char reference[7];
    std::uint64_t written = 0;
    for (const char* byte = OrEmpty(source); *byte != 0; ++byte) {
        const std::string_view encoded = EncodedByte(*byte, keepQuotes, reference);
        if (target != nullptr) {
            if (encoded.size() + 1 > size - written || size == 0) {
                WriteErrorEx_G("CCryptoConvert::html_encode : Too short buffer");
                if (size != 0)
                    target[written] = 0;
                return 0;
            }
            std::memcpy(target + written, encoded.data(), encoded.size());
        }
        written += encoded.size();
    }
    if (target != nullptr) {
        if (size != 0)
            target[written] = 0;
        return static_cast<std::uint32_t>(written);
    }
    if (written < UINT32_MAX)
        return static_cast<std::uint32_t>(written + 1);
    WriteErrorEx_G("CCryptoConvert::html_encode : Too short buffer");
    return 0;
}

element CCryptoConvert::base64url_decode(const CCryptoString& text)
{
    CCryptoString padded = text;
    padded.replaceAll("-", "+");
    padded.replaceAll("_", "/");
    switch (padded.length() % 4) {
    case 1: {
        CCryptoAutoLogger logger("CCryptoConvert::base64url_decode");
        logger.setError("Illegal base64url string!");
        break;
    }
    case 2:
        padded += "==";
        break;
    case 3:
        padded += "=";
        break;
    default:
        break;
    }
    return element::FromBase64(padded.view());
}
