#include "tools/cryptotool/cli/reason.h"

#include "core/base/ascii.h"
#include "core/diagnostics/error_handler.h"
#include "core/platform/process.h"

#include <string_view>

namespace ccrypto {

namespace {

/// How many characters of "Class::Operation:message" stand before the message.
std::size_t OperationLength(std::string_view text)
{
    std::size_t place = 0;
    bool isQualified = false;
    while (place < text.size()) {
        const char character = text[place];
        const bool isName = IsAsciiLetter(character) || IsDigit(character) || character == '_' || character == '~';
        if (isName) {
            ++place;
        } else if (text.substr(place).starts_with("::")) {
            isQualified = true;
            place += 2;
        } else {
            return isQualified && character == ':' ? place + 1 : 0;
        }
    }
    return 0;
}

} // namespace

void StartReason()
{
    CCryptoErrorHandler::ClearLastErrorText();
}

std::string Reason(const char* otherwise)
{
    const CCryptoString text = CCryptoErrorHandler::LastErrorText();
    const std::string_view message = text.view().substr(OperationLength(text.view()));
    return std::string(message.empty() ? otherwise : message);
}

std::string SystemReason()
{
    const std::uint32_t code = platform::LastError();
    std::string text = platform::SystemErrorText(code);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == '.' || text.back() == ' '))
        text.pop_back();
    return text.empty() ? "system error " + std::to_string(code) : text;
}

} // namespace ccrypto
