#include "tools/cryptotool/io/input.h"

#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/io/text_decoding.h"

#include <algorithm>

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
        reason_ = "not a file name";
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

bool IsText(std::string_view bytes)
{
    return std::ranges::all_of(bytes, [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return (byte >= 0x20 && byte != 0x7F) || (byte >= '\t' && byte <= '\r');
    });
}

std::string_view WithoutByteOrderMark(std::string_view text)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

bool SplitBlocks(element bytes, std::vector<DataBlock>& blocks, std::string& reason)
{
    const std::string_view text = WithoutByteOrderMark(bytes.view());
    if (text.empty()) {
        reason = "it is empty";
        return false;
    }
    // A file that begins as PEM is PEM, whatever follows.
    if (HasPemBlock(text) && (text.starts_with("-----BEGIN ") || IsText(text)))
        return ReadPem(text, blocks, reason);
    DataBlock block;
    const ccrypto::TextDecoding decoding = ccrypto::DecodeText(text, block.bytes, reason);
    if (decoding == ccrypto::TextDecoding::broken)
        return false;
    if (decoding == ccrypto::TextDecoding::none)
        block.bytes = std::move(bytes);
    blocks.push_back(std::move(block));
    return true;
}

bool ReadBlocks(Console& console, const std::string& name, std::vector<DataBlock>& blocks, std::string& reason)
{
    element bytes;
    return ReadWhole(console, name, bytes, reason) && SplitBlocks(std::move(bytes), blocks, reason);
}

} // namespace ccrypto
