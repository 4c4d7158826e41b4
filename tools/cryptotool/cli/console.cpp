#include "tools/cryptotool/cli/console.h"

namespace ccrypto {

void Console::setManner(bool isQuiet, std::string_view when)
{
    isQuiet_ = isQuiet;
    const bool inOutput = ccrypto::WantsColor(when, outputIsTerminal());
    const bool inErrors = ccrypto::WantsColor(when, errorIsTerminal());
    // With "always" the sequences may be for what reads them next ("less -R"), whatever a terminal here understands.
    const bool isUnderstood = (inOutput || inErrors) && (enableColor() || when == "always");
    outputPaint_ = ccrypto::Paint(inOutput && isUnderstood);
    errorPaint_ = ccrypto::Paint(inErrors && isUnderstood);
}

} // namespace ccrypto
