#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/io/packed_transfer.h"

namespace ccrypto {

namespace {

constexpr std::string_view gunzipDetails =
    R"(Unpacks FILE, or standard input, which holds one or more GZIP members; zeros after the last are ignored. Standard output gets what was
unpacked before damage was found; a file of -o appears only when all of it is intact.
)";

constexpr Option gunzipOptions[] = {
    {OptionKind::number, 0, "max-output", "BYTES", "refuse what unpacks to more (1073741824); 0 lifts the limit"},
    {OptionKind::number, 0, "max-ratio", "N",
     "refuse what unpacks to more than N times its packed size (256), once it is above 16 MiB; 0 lifts the limit"},
    stdoutOption,
    outputOption,
};

int Unpack(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    InflateLimits limits;
    limits.maxOutput = arguments.number("max-output", limits.maxOutput);
    const std::uint64_t ratio = arguments.number("max-ratio", limits.maxRatio);
    if (ratio > UINT32_MAX)
        return invocation.misuse("--max-ratio needs a number of at most 4294967295");
    limits.maxRatio = static_cast<std::uint32_t>(ratio);
    return TransferPacked(invocation, Output::Content::text, [&limits](CDeflateStream& stream, const DeflateSink& sink) {
        stream.StartInflate(DeflateFormat::gzip, sink, limits);
        return true;
    });
}

} // namespace

const Command gunzipCommand = {"gunzip",      "",    "unpacks a file in the GZIP format", "[FILE]", 0, 1, gunzipDetails,
                               gunzipOptions, Unpack};

} // namespace ccrypto
