#include "tools/cryptotool/sums/file_digests.h"

#include "core/text/hex.h"
#include "tools/cryptotool/input/file_input.h"

#include <cstdint>
#include <span>
#include <utility>

namespace ccrypto {

bool FileDigests::isReadOnce(const std::string& file, std::string& reason)
{
    const bool isFirst = file != "-" || !std::exchange(hasReadStandardInput_, true);
    if (!isFirst)
        reason = "standard input was read already";
    return isFirst;
}

bool FileDigests::digest(const std::string& file, std::string& digits, std::string& reason)
{
    hash_.reset();
    const auto take = [this](std::span<const std::uint8_t> piece) { hash_.update(piece); };
    if (!isReadOnce(file, reason) || !StreamFile(console_, file, take, reason))
        return false;
    const element found = hash_.final();
    digits = HexText(found.bytes()).view();
    return true;
}

} // namespace ccrypto
