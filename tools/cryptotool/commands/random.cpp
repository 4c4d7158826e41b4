#include "crypto/random/random.h"

#include "core/text/hex.h"
#include "core/text/string.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/cli/progress.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/output/output.h"

#include <algorithm>
#include <limits>

namespace ccrypto {

namespace {

constexpr std::string_view randomDetails =
    R"(Writes N random bytes, which are good for keys. N may end in k, M or G: times 1024, 1024^2 or 1024^3. Only its owner can read a file
of -o (on Windows, those whom its directory grants access).
)";

constexpr Option randomOptions[] = {
    {OptionKind::flag, 0, "hex", "", "write hexadecimal digits, in one line"},
    {OptionKind::flag, 0, "base64", "", "write base64, in lines of 64 characters"},
    outputOption,
};

/// The bytes of a line of base64.
constexpr std::uint32_t bytesInLine = 48;
/// Whole lines.
constexpr std::uint32_t pieceSize = 1024 * bytesInLine;

enum class Form { binary, hex, base64 };

/// \return false for what is not a number of bytes, and above 2^63 - 1.
bool ParseCount(std::string_view text, std::uint64_t& count)
{
    constexpr std::string_view suffixes = "kMG";
    const std::size_t suffix = text.empty() ? std::string_view::npos : suffixes.find(text.back());
    const std::uint32_t shift = suffix == std::string_view::npos ? 0 : 10 * (static_cast<std::uint32_t>(suffix) + 1);
    if (shift != 0)
        text.remove_suffix(1);
    if (!ParseDecimal(text, count) || count > (std::numeric_limits<std::uint64_t>::max() >> 1 >> shift))
        return false;
    count <<= shift;
    return true;
}

bool WriteBase64(Output& output, std::span<const std::uint8_t> bytes)
{
    element text;
    text.reserve(static_cast<std::uint32_t>(bytes.size() / 3 * 4 + bytes.size() / bytesInLine + 8));
    while (!bytes.empty()) {
        const std::size_t count = std::min<std::size_t>(bytes.size(), bytesInLine);
        text.append(element(bytes.data(), static_cast<std::uint32_t>(count)).toBase64().view());
        text.append("\n");
        bytes = bytes.subspan(count);
    }
    return output.write(text.bytes());
}

bool WritePiece(Output& output, Form form, std::span<const std::uint8_t> bytes)
{
    if (form == Form::hex)
        return output.write(HexText(bytes).view());
    return form == Form::base64 ? WriteBase64(output, bytes) : output.write(bytes);
}

int WriteRandom(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    if (arguments.has("hex") && arguments.has("base64"))
        return invocation.misuse("--hex and --base64 are mutually exclusive");
    std::uint64_t count = 0;
    if (!ParseCount(arguments.operand(0), count))
        return invocation.misuse("N must be a number of bytes, alone or with k, M or G, not " + arguments.operand(0));
    const Form form = arguments.has("hex") ? Form::hex : arguments.has("base64") ? Form::base64 : Form::binary;
    Output output(invocation.console(), arguments.value(outputOption.name),
                  form == Form::binary ? Output::Content::binary : Output::Content::text);
    output.keepPrivate();
    if (!output.open())
        return RefuseOutput(invocation, output);
    Progress progress(invocation.console(), static_cast<std::int64_t>(count));
    element piece;
    StartReason();
    for (std::uint64_t left = count; left != 0; left -= piece.length()) {
        piece.resize(static_cast<std::uint32_t>(std::min<std::uint64_t>(left, pieceSize)));
        if (!ICryptoRandom::Instance().generate({piece.data(), piece.length()}))
            return invocation.refuse({}, LastReason("no random bytes are available"));
        if (!WritePiece(output, form, piece.bytes()))
            return RefuseOutput(invocation, output);
        progress.add(piece.length());
    }
    return FinishOutput(invocation, output, (form != Form::hex || output.write("\n")));
}

} // namespace

const Command randomCommand = {"random", "", "writes random bytes", "N", 1, 1, randomDetails, randomOptions, WriteRandom};

} // namespace ccrypto
