#include "tools/cryptotool/io/sum_output.h"

#include "tools/cryptotool/cli/safe_text.h"

namespace ccrypto {

bool SumOutput::write(std::string_view file, std::string_view finding, ccrypto::Color color)
{
    return Output::write(shown(SumLine::About(file, {})) + paint()(color, finding) + "\n");
}

std::string SumOutput::shown(std::string line) const
{
    line.pop_back();
    return isTerminal_ ? OneLine(line) : line;
}

} // namespace ccrypto
