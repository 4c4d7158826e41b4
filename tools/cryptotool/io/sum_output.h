#pragma once

#include "tools/cryptotool/io/output.h"
#include "tools/cryptotool/io/sum_line.h"

#include <string>
#include <string_view>

namespace ccrypto {

/// Lines as the sum programs print them. Names go to files and pipes unchanged, so that the lines can be checked; on a terminal,
/// control characters become escapes.
class SumOutput : public Output {
public:
    SumOutput(Console& console, const std::string& name)
        : Output(console, name, Content::text), isTerminal_(Output::name() == "-" && console.outputIsTerminal())
    {
    }

    bool write(const SumLine& sum) { return Output::write(shown(sum.text()) + "\n"); }
    /// What was found about a file.
    bool write(std::string_view file, std::string_view finding, ccrypto::Color color);

private:
    /// The line without its end, as it may be shown.
    std::string shown(std::string line) const;

    bool isTerminal_;
};

} // namespace ccrypto
