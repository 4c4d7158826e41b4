#include "deflate/deflate_stream.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/cli/progress.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/file_input.h"
#include "tools/cryptotool/output/output.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace ccrypto {

namespace {

constexpr std::string_view gzipDetails =
    R"(Packs FILE, or standard input, in the GZIP format. FILE stays unchanged; neither its name nor its time is stored, so that the same
data always packs to the same bytes.
)";

constexpr std::string_view gunzipDetails =
    R"(Unpacks FILE, or standard input, which holds one or more GZIP members; zeros after the last are ignored. Standard output gets what was
unpacked before damage was found; a file of -o appears only when all of it is intact.
)";

constexpr Option stdoutOption = {OptionKind::flag, 'c', "stdout", "", "write to standard output, which is the default"};

constexpr Option gzipOptions[] = {
    {OptionKind::level, 0, "level", "", "from fastest to smallest (-6)"},
    stdoutOption,
    outputOption,
};

constexpr Option gunzipOptions[] = {
    {OptionKind::number, 0, "max-output", "BYTES", "refuse what unpacks to more (1073741824); 0 lifts the limit"},
    {OptionKind::number, 0, "max-ratio", "N",
     "refuse what unpacks to more than N times its packed size (256), once it is above 16 MiB; 0 lifts the limit"},
    stdoutOption,
    outputOption,
};

constexpr std::size_t packedPieceSize = 1U << 16;

/// Whether a byte, after the one before it, is a control character, which text for a terminal does not have; C1 in UTF-8 included.
bool IsControl(std::uint8_t before, std::uint8_t byte)
{
    return (byte < 0x20 && (byte < '\t' || byte > '\r')) || byte == 0x7F || (before == 0xC2 && byte >= 0x80 && byte < 0xA0);
}

class Transfer {
public:
    Transfer(Invocation& invocation, Output& output, std::string file)
        : invocation_(invocation), output_(output), file_(std::move(file)), input_(invocation.console()),
          isTerminal_(output.name() == "-" && invocation.console().outputIsTerminal())
    {
    }

    int run(const std::function<bool(CDeflateStream&, const DeflateSink&)>& start);

private:
    /// Takes what was packed or unpacked. \return false, with the reason kept, to stop.
    bool put(std::span<const std::uint8_t> bytes);
    int refuseStream(const CDeflateStream& stream);
    /// What came before the fault is still written.
    int refuseInput(std::string_view reason);

    Invocation& invocation_;
    Output& output_;
    std::string file_;
    InputStream input_;
    bool isTerminal_;
    std::uint8_t before_ = 0; ///< the last byte that came out
    std::string outputReason_;
};

bool Transfer::put(std::span<const std::uint8_t> bytes)
{
    const auto isControl = [this](std::uint8_t byte) { return IsControl(std::exchange(before_, byte), byte); };
    if (isTerminal_ && std::ranges::any_of(bytes, isControl)) {
        outputReason_ = "binary data is not written to a terminal; use -o FILE";
        return false;
    }
    if (output_.write(bytes))
        return true;
    outputReason_ = output_.reason();
    return false;
}

int Transfer::refuseStream(const CDeflateStream& stream)
{
    if (!outputReason_.empty())
        return invocation_.refuse(output_.name(), outputReason_);
    std::string reason = stream.reason();
    if (reason.empty())
        return refuseInput(LastReason("it cannot be processed"));
    const std::string_view option = reason == InflateLimits::outputReason  ? "--max-output"
                                    : reason == InflateLimits::ratioReason ? "--max-ratio"
                                                                           : "";
    reason += " (offset " + std::to_string(stream.reasonOffset()) + ")";
    return refuseInput(option.empty() ? reason : reason + "; " + std::string(option) + " changes the limit");
}

int Transfer::refuseInput(std::string_view reason)
{
    if (!output_.flush())
        return invocation_.refuse(output_.name(), output_.reason());
    return invocation_.refuse(file_, reason);
}

int Transfer::run(const std::function<bool(CDeflateStream&, const DeflateSink&)>& start)
{
    if (!input_.open(file_))
        return invocation_.refuse(file_, input_.reason());
    std::vector<std::uint8_t> piece(packedPieceSize);
    std::int64_t count = input_.read(piece);
    // An input that cannot be read creates no output.
    if (count < 0)
        return invocation_.refuse(file_, input_.reason());
    if (!output_.open())
        return invocation_.refuse(output_.name(), output_.reason());
    CDeflateStream stream;
    StartReason();
    if (!start(stream, [this](std::span<const std::uint8_t> bytes) { return put(bytes); }))
        return refuseStream(stream);
    Progress progress(invocation_.console(), input_.size());
    for (; count > 0; count = input_.read(piece)) {
        const auto size = static_cast<std::size_t>(count);
        if (!stream.Write(std::span(piece).first(size)))
            return refuseStream(stream);
        progress.add(size);
    }
    if (count < 0)
        return refuseInput(input_.reason());
    if (!stream.Finish())
        return refuseStream(stream);
    return output_.finish() ? exitDone : invocation_.refuse(output_.name(), output_.reason());
}

/// Takes the file of the first operand through a stream that packs or unpacks, piece by piece, to the place the options name.
/// \param start starts the stream with the sink it is given. \return the exit code.
int TransferPacked(Invocation& invocation, Output::Content content,
                   const std::function<bool(CDeflateStream& stream, const DeflateSink& sink)>& start)
{
    const Arguments& arguments = invocation.arguments();
    if (arguments.has(stdoutOption.name) && arguments.has(outputOption.name))
        return invocation.misuse("--stdout and --output are mutually exclusive");
    Output output(invocation.console(), arguments.value(outputOption.name), content);
    return Transfer(invocation, output, arguments.fileOperand(0)).run(start);
}

int Pack(Invocation& invocation)
{
    const auto level = static_cast<int>(invocation.arguments().number("level", CDeflateStream::usual));
    return TransferPacked(invocation, Output::Content::binary, [level](CDeflateStream& stream, const DeflateSink& sink) {
        return stream.StartDeflate(DeflateFormat::gzip, sink, level);
    });
}

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

const Command gzipCommand = {"gzip", "", "packs a file in the GZIP format", "[FILE]", 0, 1, gzipDetails, gzipOptions, Pack};
const Command gunzipCommand = {"gunzip",      "",    "unpacks a file in the GZIP format", "[FILE]", 0, 1, gunzipDetails,
                               gunzipOptions, Unpack};

} // namespace ccrypto
