#pragma once

#include "tools/cryptotool/io/output.h"
#include "tools/cryptotool/io/sum_line.h"

#include <string>
#include <string_view>

namespace ccrypto {

/// Lines as the sum programs print them. Names go to files and pipes as they are, so that the lines can be checked; on a terminal,
/// what may steer it stands as an escape.
class SumOutput : public Output {
public:
    SumOutput(Console& console, const std::string& name)
        : Output(console, name, Content::text), isTerminal_(Output::name() == "-" && console.outputIsTerminal())
    {
    }

    bool write(const SumLine& sum) { return put(sum.text()); }
    /// What was found about a file.
    bool write(std::string_view file, std::string_view finding) { return put(SumLine::About(file, finding)); }

private:
    bool put(std::string line);

    bool isTerminal_;
};

} // namespace ccrypto
