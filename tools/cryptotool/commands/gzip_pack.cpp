#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/io/packed_transfer.h"

namespace ccrypto {

namespace {

constexpr std::string_view gzipDetails =
    R"(Packs FILE, or standard input, in the GZIP format. FILE stays unchanged; neither its name nor its time is stored, so that the same
data always packs to the same bytes.
)";

constexpr Option gzipOptions[] = {
    {OptionKind::level, 0, "level", "", "from fastest to smallest (-6)"},
    stdoutOption,
    outputOption,
};

int Pack(Invocation& invocation)
{
    const auto level = static_cast<int>(invocation.arguments().number("level", CDeflateStream::usual));
    return TransferPacked(invocation, Output::Content::binary, [level](CDeflateStream& stream, const DeflateSink& sink) {
        return stream.StartDeflate(DeflateFormat::gzip, sink, level);
    });
}

} // namespace

const Command gzipCommand = {"gzip", "", "packs a file in the GZIP format", "[FILE]", 0, 1, gzipDetails, gzipOptions, Pack};

} // namespace ccrypto
