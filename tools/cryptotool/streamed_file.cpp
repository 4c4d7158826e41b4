#include "tools/cryptotool/streamed_file.h"

#include "tools/cryptotool/input.h"
#include "tools/cryptotool/progress.h"

#include <vector>

bool StreamFile(Console& console, const std::string& name, const std::function<void(std::span<const std::uint8_t>)>& take,
                std::string& reason)
{
    InputStream input(console);
    if (!input.open(name)) {
        reason = input.reason();
        return false;
    }
    Progress progress(console, input.size());
    std::vector<std::uint8_t> piece(std::size_t{1} << 16);
    for (;;) {
        const std::int64_t count = input.read(piece);
        if (count < 0)
            reason = input.reason();
        if (count <= 0)
            return count == 0;
        take(std::span(piece).first(static_cast<std::size_t>(count)));
        progress.add(static_cast<std::uint64_t>(count));
    }
}
