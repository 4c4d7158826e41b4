#include "tools/cryptotool/input/file_input.h"

#include "tools/cryptotool/cli/progress.h"
#include "tools/cryptotool/cli/reason.h"

namespace ccrypto {

namespace {

constexpr std::uint32_t chunk = 1U << 16;

} // namespace

bool InputStream::open(const std::string& name)
{
    isConsole_ = name == "-";
    if (isConsole_)
        return true;
    if (name.empty() || name.find('\0') != std::string::npos) {
        reason_ = name.empty() ? "the name of a file is empty" : "not a file name";
        return false;
    }
    if (!file_.openToRead(name)) {
        reason_ = SystemReason();
        return false;
    }
    return true;
}

std::int64_t InputStream::read(std::span<std::uint8_t> target)
{
    const std::int64_t count = isConsole_ ? console_.readInput(target) : file_.read(target);
    if (count < 0)
        reason_ = SystemReason();
    return count;
}

bool ReadWhole(Console& console, const std::string& name, element& bytes, std::string& reason)
{
    InputStream stream(console);
    if (!stream.open(name)) {
        reason = stream.reason();
        return false;
    }
    bytes = element();
    const std::int64_t size = stream.size();
    bool tooLong = size > static_cast<std::int64_t>(maxInput);
    if (!tooLong && size > 0)
        bytes.reserve(static_cast<std::uint32_t>(size) + chunk);
    while (!tooLong) {
        bytes.makeRoom(chunk);
        const std::int64_t count = stream.read({bytes.data() + bytes.length(), chunk});
        if (count < 0) {
            reason = stream.reason();
            return false;
        }
        if (count == 0)
            return true;
        bytes.lengthen(static_cast<std::uint32_t>(count));
        tooLong = bytes.length() > maxInput;
    }
    reason = "it is longer than 256 MiB";
    return false;
}

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
    piece.resize(chunk);
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
