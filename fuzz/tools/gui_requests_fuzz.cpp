#include "tests/ipc/wire_bytes.h"
#include "tools/guiserver/request_report.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

using namespace ccrypto;

// Input: the request type in one byte, then the body.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size)
{
    if (size == 0)
        return 0;
    wire::Message message(input[0]);
    if (!message.Receive(std::string_view(reinterpret_cast<const char*>(input) + 1, size - 1)))
        std::abort();
    const ReceivedRequest request = ReadGuiRequest(message);
    const GivenAnswer answer = {-1, true, request.items};
    const std::string text = DescribeAsText(1, request, answer, true);
    const std::string json = DescribeAsJson(1, request, answer, true);
    // One line of JSON, and nothing that steers a terminal.
    if (json.find('\n') != json.size() - 1 || text.find('\x1b') != std::string::npos || json.find('\x1b') != std::string::npos)
        std::abort();
    return 0;
}
