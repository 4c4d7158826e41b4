#include "tools/cryptotool/input/secret_input.h"

#include "core/text/hex.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/file_input.h"

#include <algorithm>
#include <limits>

namespace ccrypto {

namespace {

/// What is read at most: a secret that is too long is noticed after the end of its line.
constexpr std::uint32_t maxReading = maxSecret + 3;

/// All that `read` gives, up to maxReading, in one piece of memory. \return false with `reason`.
template <typename Read>
bool ReadAll(const Read& read, element& secret, std::string& reason)
{
    secret.reserve(maxReading);
    while (secret.length() < maxReading) {
        const std::int64_t count = read(std::span(secret.data() + secret.length(), maxReading - secret.length()));
        if (count < 0) {
            reason = SystemReason();
            return false;
        }
        if (count == 0)
            break;
        secret.lengthen(static_cast<std::uint32_t>(count));
    }
    return true;
}

bool ReadDescriptor(std::uint64_t number, element& secret, std::string& reason)
{
    SequentialFile file;
    if (number <= std::numeric_limits<int>::max() && file.openDescriptor(static_cast<int>(number)))
        return ReadAll([&](std::span<std::uint8_t> target) { return file.read(target); }, secret, reason);
    reason = "no such descriptor";
    return false;
}

bool ReadSecretFile(Console& console, const std::string& name, element& secret, std::string& reason)
{
    InputStream file(console);
    if (file.open(name))
        return ReadAll([&](std::span<std::uint8_t> target) { return file.read(target); }, secret, reason);
    reason = file.reason();
    return false;
}

bool Ask(Console& console, const SecretKind& kind, Asking asking, element& secret, std::string& reason)
{
    const std::string what(kind.what);
    element again;
    if (!console.readHiddenLine("Enter the " + what + ": ", secret) ||
        (asking == Asking::twice && !console.readHiddenLine("Enter the " + what + " again: ", again))) {
        reason = "no line came from a terminal; --" + std::string(kind.file.name) + " or --" + std::string(kind.descriptor.name) +
                 " provides it";
        return false;
    }
    if (asking == Asking::once || secret == again)
        return true;
    reason = "the two lines differ";
    return false;
}

void DropLineEnd(element& text)
{
    for (const char end : {'\n', '\r'})
        if (!text.isEmpty() && text.view().back() == end)
            text.erase(text.length() - 1, 1);
}

} // namespace

bool IsStandardInput(const Arguments& arguments, const SecretKind& kind)
{
    return arguments.value(kind.file.name) == "-" || arguments.number(kind.descriptor.name, 1) == 0;
}

std::string NameOfSecret(const Arguments& arguments, const SecretKind& kind)
{
    if (arguments.has(kind.file.name))
        return arguments.value(kind.file.name);
    return arguments.has(kind.descriptor.name) ? "descriptor " + arguments.value(kind.descriptor.name) : std::string(kind.what);
}

int CheckOneStandardInput(Invocation& invocation, const std::vector<std::string>& files, std::initializer_list<SecretKind> secrets)
{
    const Arguments& arguments = invocation.arguments();
    const auto count = std::ranges::count(files, "-") +
                       std::ranges::count_if(secrets, [&](const SecretKind& kind) { return IsStandardInput(arguments, kind); });
    return count < 2 ? exitDone : invocation.misuse("only one of the files can be standard input");
}

int ReadSecret(Invocation& invocation, const SecretKind& kind, Asking asking, element& secret)
{
    const Arguments& arguments = invocation.arguments();
    const bool hasFile = arguments.has(kind.file.name);
    const bool hasDescriptor = arguments.has(kind.descriptor.name);
    if (hasFile && hasDescriptor)
        return invocation.misuse("--" + std::string(kind.file.name) + " and --" + std::string(kind.descriptor.name) +
                                 " are mutually exclusive");

    secret = element();
    std::string reason;
    bool isRead = false;
    if (hasFile) {
        isRead = ReadSecretFile(invocation.console(), arguments.value(kind.file.name), secret, reason);
    } else if (hasDescriptor) {
        isRead = ReadDescriptor(arguments.number(kind.descriptor.name, 0), secret, reason);
    } else {
        isRead = Ask(invocation.console(), kind, asking, secret, reason);
    }
    if (isRead && kind.isText && (hasFile || hasDescriptor))
        DropLineEnd(secret);
    if (isRead && secret.length() > maxSecret)
        reason = "it is longer than " + std::to_string(maxSecret) + " bytes";
    else if (isRead && secret.isEmpty() && (!kind.isText || asking == Asking::twice))
        reason = "it is empty";
    else if (isRead)
        return exitDone;
    secret = element();
    return invocation.refuse(NameOfSecret(arguments, kind), reason);
}

int ReadSecretKey(Invocation& invocation, element& key)
{
    const int code = ReadSecret(invocation, keySecret, Asking::once, key);
    if (code != exitDone || !invocation.arguments().has(hexKeyOption.name))
        return code;
    while (!key.isEmpty() && (key.view().back() == '\n' || key.view().back() == '\r'))
        key.erase(key.length() - 1, 1);
    element bytes;
    const bool isHex = BytesFromHex(key.view(), bytes) && !bytes.isEmpty();
    key = std::move(bytes);
    return isHex ? exitDone
                 : invocation.refuse(NameOfSecret(invocation.arguments(), keySecret), "it is not made of hexadecimal digits");
}

} // namespace ccrypto
