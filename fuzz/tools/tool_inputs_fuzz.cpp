#include "fuzz/require.h"
#include "tools/cryptotool/cipher/cipher_header.h"
#include "tools/cryptotool/input/encoding_detection.h"
#include "tools/cryptotool/keys/certificate_key.h"
#include "tools/cryptotool/sums/sum_line.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

using namespace ccrypto;

namespace {

using Bytes = std::span<const std::uint8_t>;

/// A header that is read writes the same bytes.
void ReadCipherHeader(Bytes bytes)
{
    CipherHeader header;
    const std::size_t length = header.read(bytes);
    Require(length <= bytes.size());
    Require(length == 0 || std::ranges::equal(header.write().bytes(), bytes.first(length)));
}

/// A line that is read is one line when it is written, and means the same.
void ReadSumLine(Bytes bytes)
{
    SumLine sum;
    if (!sum.read({reinterpret_cast<const char*>(bytes.data()), bytes.size()}))
        return;
    const std::string text = sum.text();
    Require(text.find('\n') == text.size() - 1);
    SumLine again;
    Require(again.read(std::string_view(text).substr(0, text.size() - 1)));
    Require(again.digits == sum.digits && again.file == sum.file);
}

/// Decoding takes less space than its text, and there is a reason for a refusal.
void DetectEncoding(Bytes bytes)
{
    std::vector<DataBlock> blocks;
    std::string reason;
    const bool isRead = SplitBlocks(element(bytes.data(), static_cast<std::uint32_t>(bytes.size())), blocks, reason);
    Require(isRead ? !blocks.empty() : !reason.empty());
    std::size_t total = 0;
    for (const DataBlock& block : blocks)
        total += block.bytes.length();
    Require(total <= bytes.size());
}

void ReadCertificate(Bytes bytes)
{
    const element key = PublicKeyOfCertificate(bytes);
    // The same key of the same bytes.
    Require(key == PublicKeyOfCertificate(bytes));
}

constexpr void (*readers[])(Bytes bytes) = {ReadCipherHeader, ReadSumLine, DetectEncoding, ReadCertificate};

} // namespace

// Input: which of the readers of files in one byte, then the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size)
{
    if (size != 0 && input[0] < std::size(readers))
        readers[input[0]]({input + 1, size - 1});
    return 0;
}
