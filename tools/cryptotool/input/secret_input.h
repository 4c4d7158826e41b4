#pragma once

#include "core/text/element.h"
#include "tools/cryptotool/cli/command.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

class Arguments;
class Invocation;

/// The longest key or password, in bytes.
constexpr std::uint32_t maxSecret = 65536;

/// A key or a password, which never stands on the command line, where a list of processes would show it: it is the content of a
/// file, or what a descriptor of the process gives until its end, or a line that is typed at the terminal without being shown.
struct SecretKind {
    std::string_view what; ///< what the user is asked for
    bool isText;           ///< of a file's content, a line end after the last line is not part of it
    Option file;
    Option descriptor;
};

constexpr SecretKind keySecret = {
    "key",
    false,
    {OptionKind::text, 0, "key-file", "FILE", "read the key from FILE, byte for byte; \"-\" is stdin"},
    {OptionKind::number, 0, "key-fd", "N", "read the key from descriptor N, to its end"},
};
/// For a key that is read with ReadSecretKey().
constexpr Option hexKeyOption = {OptionKind::flag, 0, "hex-key", "", "the key is written in hexadecimal digits"};
constexpr SecretKind passwordSecret = {
    "password",
    true,
    {OptionKind::text, 0, "password-file", "FILE", "read the password from FILE, without the end of its line; \"-\" is stdin"},
    {OptionKind::number, 0, "password-fd", "N", "read the password from descriptor N, to its end"},
};

/// The password of a key that is written where another one is read.
constexpr SecretKind newPasswordSecret = {
    "new password",
    true,
    {OptionKind::text, 0, "new-password-file", "FILE", "as --password-file, for what is written"},
    {OptionKind::number, 0, "new-password-fd", "N", "as --password-fd, for what is written"},
};

/// Whether standard input is named as the source of the secret, as a file or as the descriptor 0.
bool IsStandardInput(const Arguments& arguments, const SecretKind& kind);

/// For messages: the file of the secret, "descriptor N", or what it is.
std::string NameOfSecret(const Arguments& arguments, const SecretKind& kind);

/// Whether at most one of these files, and of those that the options of `secrets` name, is standard input, which gives its bytes
/// once. Prints what is wrong otherwise. \return exitDone or exitUsage.
int CheckOneStandardInput(Invocation& invocation, const std::vector<std::string>& files, std::initializer_list<SecretKind> secrets);

/// How often a typed secret is asked for: twice for one that is new, and both lines must agree. A new password is not empty,
/// wherever it comes from: where a store of passwords failed, what it should have protected would be open to everybody.
enum class Asking { once, twice };

/// Reads the secret that the two options of `kind` name; without them, asks for it. A key is not empty; a password that is not new
/// may be. \return exitDone, or the exit code after the reason was printed, with `secret` empty.
int ReadSecret(Invocation& invocation, const SecretKind& kind, Asking asking, element& secret);
/// The same for a key, which hexKeyOption says is written in hexadecimal digits.
int ReadSecretKey(Invocation& invocation, element& key);

} // namespace ccrypto
