#include "core/text/hex.h"
#include "crypto/hash/hash.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/io/input.h"
#include "tools/cryptotool/io/secret_input.h"
#include "tools/cryptotool/io/streamed_file.h"
#include "tools/cryptotool/io/sum_line.h"
#include "tools/cryptotool/io/sum_output.h"

#include <limits>
#include <utility>

namespace ccrypto {

namespace {

constexpr std::string_view hashDetails =
    R"(Prints the digest of each FILE, "-" for standard input, on a line as sha256sum and its like do. ALG is md4, md5, sha1, sha224,
sha256, sha384, sha512 or md5-sha1, in either case, with or without "-". With --check the FILEs are lists of such lines, or of
lines in BSD's form ("SHA256 (FILE) = ..."), and each file they name is reported as OK or FAILED; the exit is 1 when one failed.
)";

constexpr Option checkOption = {OptionKind::flag, 'c', "check", "", "check the files that the lines of each FILE name"};
constexpr Option hashOptions[] = {checkOption, outputOption};

class HashRun {
public:
    HashRun(Invocation& invocation, ICryptoHash& hash, SumOutput& output) : invocation_(invocation), hash_(hash), output_(output) {}

    /// \return false only when the output cannot be written.
    bool print(const std::string& file)
    {
        std::string digits;
        std::string reason;
        if (digest(file, digits, reason))
            return output_.write({digits, file});
        code_ = invocation_.refuse(file, reason);
        return true;
    }
    bool check(const std::string& list)
    {
        element bytes;
        std::string reason;
        if (!isReadOnce(list, reason) || !ReadWhole(invocation_.console(), list, bytes, reason)) {
            code_ = invocation_.refuse(list, reason);
            return true;
        }
        std::string_view rest = WithoutByteOrderMark(bytes.view());
        if (rest.empty())
            code_ = invocation_.refuse(list, "it is empty");
        for (std::size_t number = 1; !rest.empty(); ++number) {
            const std::size_t end = rest.find('\n');
            std::string_view line = rest.substr(0, end);
            rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
            if (line.ends_with('\r'))
                line.remove_suffix(1);
            SumLine sum;
            if (!sum.read(line) || !isOurs(sum))
                code_ = invocation_.refuse(list, "line " + std::to_string(number) + " holds no " + hash_.name() + " sum");
            else if (!checkLine(sum))
                return false;
        }
        return true;
    }
    int code() const { return code_; }

private:
    /// False, with `reason`, for standard input that another file, or a line of one, was before.
    bool isReadOnce(const std::string& file, std::string& reason)
    {
        const bool isRight = file != "-" || !std::exchange(hasReadStandardInput_, true);
        if (!isRight)
            reason = "standard input was read already";
        return isRight;
    }
    bool digest(const std::string& file, std::string& digits, std::string& reason)
    {
        hash_.reset();
        if (!isReadOnce(file, reason) ||
            !StreamFile(
                invocation_.console(), file, [this](std::span<const std::uint8_t> piece) { hash_.update(piece); }, reason))
            return false;
        const element found = hash_.final();
        digits = HexText(found.bytes()).view();
        return true;
    }
    bool isOurs(const SumLine& sum) const
    {
        if (sum.digits.size() != std::size_t{2} * hash_.digestSize())
            return false;
        if (sum.algorithm.empty())
            return true;
        const auto named = ICryptoHash::CreateByName(sum.algorithm);
        return named != nullptr && std::string_view(named->name()) == hash_.name();
    }
    bool checkLine(const SumLine& sum)
    {
        std::string digits;
        std::string reason;
        if (!digest(sum.file, digits, reason)) {
            code_ = invocation_.refuse(sum.file, reason);
            return output_.write(sum.file, "FAILED open or read");
        }
        const bool isRight = digits == sum.digits;
        if (!isRight)
            code_ = exitRefused;
        return output_.write(sum.file, isRight ? "OK" : "FAILED");
    }

    Invocation& invocation_;
    ICryptoHash& hash_;
    SumOutput& output_;
    bool hasReadStandardInput_ = false;
    int code_ = exitDone;
};

int HashFiles(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    if (const int code = CheckOneStandardInput(invocation, arguments.operands(), {}); code != exitDone)
        return code;
    const auto hash = ICryptoHash::CreateByName(arguments.operand(0));
    if (hash == nullptr)
        return invocation.misuse("there is no hash function " + arguments.operand(0));
    SumOutput output(invocation.console(), arguments.value(outputOption.name));
    if (!output.open())
        return invocation.refuse(output.name(), output.reason());
    HashRun run(invocation, *hash, output);
    bool isWritten = true;
    for (const std::string& file : std::span(arguments.operands()).subspan(1))
        isWritten = isWritten && (arguments.has(checkOption.name) ? run.check(file) : run.print(file));
    return isWritten && output.finish() ? run.code() : invocation.refuse(output.name(), output.reason());
}

} // namespace

const Command hashCommand = {"hash",        "",          "prints or checks digests of files",
                             "ALG FILE...", 2,           std::numeric_limits<std::size_t>::max(),
                             hashDetails,   hashOptions, HashFiles};

} // namespace ccrypto
