#include "tools/cryptotool/cli/console.h"

namespace ccrypto {

void Console::setManner(bool isQuiet, std::string_view when)
{
    isQuiet_ = isQuiet;
    const bool inOutput = WantsColor(when, outputIsTerminal());
    const bool inErrors = WantsColor(when, errorIsTerminal());
    // With "always" the sequences may be for what reads them next ("less -R"), whatever a terminal here understands.
    const bool isUnderstood = (inOutput || inErrors) && (enableColor() || when == "always");
    outputPaint_ = Paint(inOutput && isUnderstood);
    errorPaint_ = Paint(inErrors && isUnderstood);
}

} // namespace ccrypto
