#include "tools/cryptotool/io/streamed_file.h"

#include "tools/cryptotool/cli/progress.h"
#include "tools/cryptotool/io/input.h"

namespace ccrypto {

bool StreamFile(Console& console, const std::string& name, const std::function<void(std::span<const std::uint8_t>)>& take,
                std::string& reason)
{
    InputStream input(console);
    if (!input.open(name)) {
        reason = input.reason();
        return false;
    }
    Progress progress(console, input.size());
    element piece;
    piece.resize(1U << 16);
    for (;;) {
        const std::int64_t count = input.read({piece.data(), piece.length()});
        if (count < 0)
            reason = input.reason();
        if (count <= 0)
            return count == 0;
        take(piece.bytes().first(static_cast<std::size_t>(count)));
        progress.add(static_cast<std::uint64_t>(count));
    }
}

} // namespace ccrypto
