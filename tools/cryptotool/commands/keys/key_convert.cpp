#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/keys/key_input.h"
#include "tools/cryptotool/keys/key_output.h"

namespace ccrypto {

namespace {

constexpr std::string_view keyConvertDetails =
    R"(Reads the private key of FILE, in any form, and writes it in another one. Only its owner can read a file of -o
(on Windows, those whom its directory grants access). Passwords without an option are asked
for, a new one twice.
)";

constexpr Option keyConvertOptions[] = {
    privateFormOption,   keyEncodingOption,         keyCipherOption,        keyIterationsOption,          keySchemeOption,
    passwordSecret.file, passwordSecret.descriptor, newPasswordSecret.file, newPasswordSecret.descriptor, outputOption,
};

int Convert(Invocation& invocation)
{
    const std::string file = invocation.arguments().operand(0);
    PrivateKeyTarget target;
    KeyInput input;
    int exit = target.read(invocation, newPasswordSecret);
    if (exit == exitDone)
        exit = ReadKey(invocation, {file}, KeyHalf::privateHalf, input);
    if (exit == exitDone)
        exit =
            target.prepare(invocation, input.key->curveId() != algorithm::none ? input.key->curveId() : input.key->algorithmId());
    return exit == exitDone ? target.write(invocation, *input.key, file) : exit;
}

} // namespace

const Command keyConvertCommand = {
    "key", "convert", "writes a private key in another form", "FILE", 1, 1, keyConvertDetails, keyConvertOptions, Convert};

} // namespace ccrypto
