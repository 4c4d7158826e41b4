#include "asn1/inflate_output.h"

void InflateOutput::startMember()
{
    checksum_.reset();
    memberLength_ = 0;
}

const char* InflateOutput::deliver(std::span<const std::uint8_t> bytes, std::uint64_t consumed)
{
    if (bytes.empty())
        return nullptr;
    const std::uint64_t total = total_ + bytes.size();
    if (limits_.mostOutput != 0 && total > limits_.mostOutput)
        return "The output exceeds the limit of its size";
    if (limits_.mostRatio != 0 && total > limits_.freeOutput && total / limits_.mostRatio > consumed)
        return "The output exceeds the limit of its ratio to the input";
    total_ = total;
    memberLength_ += static_cast<std::uint32_t>(bytes.size());
    checksum_.update(bytes);
    return sink_(bytes) ? nullptr : "The receiver of the output stopped";
}
