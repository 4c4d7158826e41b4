#include "crypto/hash/hash.h"

#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/cli/suggestion.h"
#include "tools/cryptotool/commands/hash_check.h"
#include "tools/cryptotool/input/secret_input.h"
#include "tools/text/safe_text.h"

#include <limits>
#include <optional>

namespace ccrypto {

namespace {

constexpr std::string_view hashDetails =
    R"(Prints the digest of each FILE, "-" or none for standard input, in the line format of sha256sum. ALG is md4, md5, sha1, sha224, sha256,
sha384, sha512, md5-sha1, sha3-224, sha3-256, sha3-384 or sha3-512, in either case, with or without "-".

With --check each FILE is a list of such lines, or of lines in the BSD format ("SHA256 (FILE) = ..."), and each file that they name
is reported as OK or FAILED, with a summary on standard error; --quiet leaves out the summary and the files that are OK. Empty lines
and lines that begin with "#" are ignored. The exit code is 1 when a file failed or a line is malformed.
)";
constexpr std::string_view hashNames = "md4|md5|sha1|sha224|sha256|sha384|sha512|md5-sha1|sha3-224|sha3-256|sha3-384|sha3-512";

constexpr Option checkOption = {OptionKind::flag, 'c', "check", "", "check the files that the lines of each FILE name"};
constexpr Option ignoreMissingOption = {OptionKind::flag, 0, "ignore-missing", "", "with --check, ignore files that do not exist"};
constexpr Option hashOptions[] = {checkOption, ignoreMissingOption, jsonOption, outputOption};

using Files = std::span<const std::string>;

/// \return the exit code, or none when the output could not be written.
std::optional<int> PrintSums(Invocation& invocation, FileDigests& digests, Files files, SumOutput& output)
{
    const bool isJson = invocation.arguments().has(jsonOption.name);
    int code = exitDone;
    const char* before = "{\"files\":[\n";
    for (const std::string& file : files) {
        std::string digits;
        std::string reason;
        if (!digests.digest(file, digits, reason)) {
            code = invocation.refuse(file, reason);
            continue;
        }
        const bool isWritten = isJson ? output.Output::write(before + ("{\"file\":" + JsonString(file)) + ",\"algorithm\":" +
                                                             JsonString(digests.algorithm()) + ",\"digest\":\"" + digits + "\"}")
                                      : output.write({digits, file});
        if (!isWritten)
            return {};
        before = ",\n";
    }
    if (isJson && !output.Output::write(*before == ',' ? "\n]}\n" : "{\"files\":[]}\n"))
        return {};
    return code;
}

std::optional<int> CheckSums(Invocation& invocation, FileDigests& digests, Files lists, SumOutput& output)
{
    HashCheck check(invocation, digests, output);
    for (const std::string& list : lists)
        if (!check.list(list))
            return {};
    if (!check.finish())
        return {};
    return check.code();
}

int HashFiles(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::vector<std::string> files = arguments.fileOperands(1);
    if (const int code = CheckOneStandardInput(invocation, files, {}); code != exitDone)
        return code;
    if (arguments.has(ignoreMissingOption.name) && !arguments.has(checkOption.name))
        return invocation.misuse("--ignore-missing requires --check");
    const std::string name = arguments.operand(0);
    const auto hash = ICryptoHash::CreateByName(name);
    if (hash == nullptr)
        return invocation.misuse("unknown hash function " + name + DidYouMean(name, SplitChoices(hashNames)));
    SumOutput output(invocation.console(), arguments.value(outputOption.name));
    if (!output.open())
        return RefuseOutput(invocation, output);
    FileDigests digests(invocation.console(), *hash);
    const auto work = arguments.has(checkOption.name) ? CheckSums : PrintSums;
    const std::optional<int> code = work(invocation, digests, files, output);
    return code && output.finish() ? *code : RefuseOutput(invocation, output);
}

} // namespace

const Command hashCommand = {"hash",          "",          "prints or checks digests of files",
                             "ALG [FILE...]", 1,           std::numeric_limits<std::size_t>::max(),
                             hashDetails,     hashOptions, HashFiles,
                             hashNames};

} // namespace ccrypto
