// Unpacks a GZIP file in constant memory, at most 64 MiB of it.
//
//     gunzip_file PACKED UNPACKED

#include "core/core.h"
#include "deflate/deflate.h"

#include <cstdio>

namespace {

/// Appends what is unpacked to the file.
ccrypto::DeflateSink AppendTo(CCryptoFile& file)
{
    return [&file](std::span<const std::uint8_t> piece) { return file.Write(piece, file.CurrentPos()); };
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 3) {
        std::fputs("usage: gunzip_file PACKED UNPACKED\n", stderr);
        return 2;
    }
    CCryptoFile packed(CCryptoString(arguments[1]), CCryptoFile::Mode::read);
    CCryptoFile unpacked(CCryptoString(arguments[2]), CCryptoFile::Mode::write);
    CDeflateStream stream;
    stream.StartInflate(ccrypto::DeflateFormat::gzip, AppendTo(unpacked), {.maxOutput = std::uint64_t{64} << 20});

    bool good = packed.isOpen() && unpacked.isOpen();
    while (good && packed.CurrentPos() < packed.Size()) {
        element piece;
        good = packed.Read(packed.CurrentPos(), 1U << 16, piece) && stream.Write(piece.bytes());
    }
    // Only now is it known that the data was whole: its checksum stands at its end.
    if (!good || !stream.Finish()) {
        const ccrypto::Failure failure = ccrypto::LastFailure().value_or(ccrypto::Failure{});
        std::fprintf(stderr, "not unpacked: %s: %s\n", failure.operation.c_str(), failure.text.c_str());
        return 1;
    }
    std::printf("%lld bytes\n", static_cast<long long>(unpacked.Size()));
    return 0;
}
