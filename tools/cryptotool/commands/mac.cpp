#include "core/text/hex.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/cli/suggestion.h"
#include "tools/cryptotool/input/file_input.h"
#include "tools/cryptotool/input/secret_input.h"
#include "tools/cryptotool/sums/mac_algorithms.h"
#include "tools/cryptotool/sums/sum_line.h"

#include <limits>

namespace ccrypto {

namespace {

constexpr std::string_view macDetails =
    R"(Prints the message authentication code of each FILE, "-" or none for standard input, in the line format of "cryptotool hash". ALG is hmac-
with the name of a hash function (hmac-sha256), or aes-cmac, whose key has 16, 24 or 32 bytes, in either case. Without --key-file and
--key-fd the key is asked for at the terminal: it is the line typed there.
)";

constexpr std::string_view macNames = "hmac-md5|hmac-sha1|hmac-sha224|hmac-sha256|hmac-sha384|hmac-sha512|aes-cmac";

constexpr Option macOptions[] = {keySecret.file, keySecret.descriptor, hexKeyOption, outputOption};

int PrintMACs(Invocation& invocation, ICryptoMAC& mac)
{
    const Arguments& arguments = invocation.arguments();
    SumOutput output(invocation.console(), arguments.value(outputOption.name));
    if (!output.open())
        return RefuseOutput(invocation, output);
    int code = exitDone;
    for (const std::string& file : arguments.fileOperands(1)) {
        std::string reason;
        const bool isRead = StreamFile(
            invocation.console(), file, [&](std::span<const std::uint8_t> piece) { mac.update(piece); }, reason);
        const element found = mac.final();
        if (!isRead)
            code = invocation.refuse(file, reason);
        else if (!output.write({std::string(HexText(found.bytes()).view()), file}))
            return RefuseOutput(invocation, output);
    }
    return output.finish() ? code : RefuseOutput(invocation, output);
}

int MACFiles(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    if (const int code = CheckOneStandardInput(invocation, arguments.fileOperands(1), {keySecret}); code != exitDone)
        return code;
    const MACAlgorithm* const algorithm = FindMACAlgorithm(arguments.operand(0));
    if (algorithm == nullptr)
        return invocation.misuse("unknown MAC " + arguments.operand(0) + DidYouMean(arguments.operand(0), SplitChoices(macNames)));
    element key;
    if (const int code = ReadSecretKey(invocation, key); code != exitDone)
        return code;
    std::string reason;
    const auto mac = algorithm->create(arguments.operand(0), key.bytes(), reason);
    return mac != nullptr ? PrintMACs(invocation, *mac) : invocation.refuse(NameOfSecret(arguments, keySecret), reason);
}

} // namespace

const Command macCommand = {"mac",           "",         "prints message authentication codes of files",
                            "ALG [FILE...]", 1,          std::numeric_limits<std::size_t>::max(),
                            macDetails,      macOptions, MACFiles,
                            macNames};

} // namespace ccrypto
