#include "tools/cryptotool/io/sum_output.h"

#include "tools/cryptotool/cli/safe_text.h"

namespace ccrypto {

bool SumOutput::put(std::string line)
{
    if (isTerminal_) {
        line.pop_back();
        line = OneLine(line) + "\n";
    }
    return Output::write(std::string_view(line));
}

} // namespace ccrypto
