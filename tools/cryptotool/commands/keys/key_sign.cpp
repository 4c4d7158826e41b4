#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/secret_input.h"
#include "tools/cryptotool/keys/signing.h"
#include "tools/cryptotool/output/output.h"

namespace ccrypto {

namespace {

constexpr std::string_view keySignDetails =
    R"(Signs FILE, or standard input, with the private key in KEY. The signature is binary: the octets of RSA, Ed25519 and Ed448, or the
DER of ECDSA. Ed25519 and Ed448 sign the file itself, without --hash; they read all of it into memory, so
FILE may have 256 MiB.
)";

constexpr Option keySignOptions[] = {
    hashOption,
    pssOption,
    {OptionKind::number, 0, "salt-length", "N", "with --pss: bytes of salt (as many as the hash has)"},
    passwordSecret.file,
    passwordSecret.descriptor,
    outputOption,
};

int Sign(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string key = arguments.operand(0);
    const std::string file = arguments.fileOperand(1);
    Signing signing;
    int exit = StartSigning(invocation, {key, file}, KeyHalf::privateHalf, signing);
    Output output(invocation.console(), arguments.value(outputOption.name), Output::Content::binary);
    if (exit == exitDone && !output.open())
        exit = RefuseOutput(invocation, output);
    if (exit == exitDone)
        exit = ReadSigned(invocation, file, signing);
    if (exit != exitDone)
        return exit;
    StartReason();
    const element signature = signing.key->signer()->sign(signing.hash, signing.input.bytes(), signing.padding);
    if (signature.isEmpty())
        return invocation.refuse(key, LastReason("it cannot sign this"));
    return FinishOutput(invocation, output, output.write(signature.bytes()));
}

} // namespace

const Command keySignCommand = {"key", "sign", "signs a file", "KEY [FILE]", 1, 2, keySignDetails, keySignOptions, Sign};

} // namespace ccrypto
