#include "deflate/inflate_output.h"

namespace ccrypto {

void InflateOutput::startMember()
{
    checksum_.reset();
    memberLength_ = 0;
}

const char* InflateOutput::deliver(std::span<const std::uint8_t> bytes)
{
    const bool tooLarge = bytes.size() > left();
    if (tooLarge)
        bytes = bytes.first(static_cast<std::size_t>(left()));
    if (!bytes.empty()) {
        total_ += bytes.size();
        memberLength_ += static_cast<std::uint32_t>(bytes.size());
        checksum_.update(bytes);
        if (!sink_(bytes))
            return "The receiver of the output stopped";
    }
    return tooLarge ? InflateLimits::outputReason : nullptr;
}

const char* InflateOutput::judge(std::uint64_t consumed) const
{
    if (limits_.maxRatio == 0 || total_ <= limits_.freeOutput || total_ / limits_.maxRatio <= consumed)
        return nullptr;
    return InflateLimits::ratioReason;
}

} // namespace ccrypto
