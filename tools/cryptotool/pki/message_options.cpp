#include "tools/cryptotool/pki/message_options.h"

#include "asn1/der/pem.h"
#include "tools/cryptotool/output/output.h"

namespace ccrypto {

int WriteMessage(Invocation& invocation, const element& message)
{
    const Arguments& arguments = invocation.arguments();
    if (arguments.value(messageEncodingOption.name) != "pem")
        return WriteBytes(invocation, arguments.value(outputOption.name), message.bytes(), false);
    Output output(invocation.console(), arguments.value(outputOption.name), Output::Content::text);
    return FinishOutput(invocation, output, output.open() && output.write(WritePem("CMS", message).view()));
}

int WriteBytes(Invocation& invocation, const std::string& file, std::span<const std::uint8_t> bytes, bool isSecret)
{
    Output output(invocation.console(), file, Output::Content::binary);
    if (isSecret)
        output.keepPrivate();
    return FinishOutput(invocation, output, output.open() && output.write(bytes));
}

} // namespace ccrypto
