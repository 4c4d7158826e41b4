#include "tools/cryptotool/pki/report_output.h"

#include "tools/cryptotool/output/output.h"

namespace ccrypto {

int WriteText(Invocation& invocation, const std::string& text)
{
    Output output(invocation.console(), invocation.arguments().value(outputOption.name), Output::Content::text);
    return FinishOutput(invocation, output, output.open() && output.write(text));
}

int WriteReport(Invocation& invocation, const Report& report)
{
    if (invocation.arguments().has(jsonOption.name))
        return WriteText(invocation, report.json() + "\n");
    const std::string file = invocation.arguments().value(outputOption.name, "-");
    return WriteText(invocation, report.text(file == "-" ? invocation.console().outputPaint() : Paint()));
}

} // namespace ccrypto
