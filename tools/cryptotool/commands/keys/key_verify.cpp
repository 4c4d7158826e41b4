#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/input/file_input.h"
#include "tools/cryptotool/input/secret_input.h"
#include "tools/cryptotool/keys/signing.h"
#include "tools/cryptotool/output/output.h"

namespace ccrypto {

namespace {

constexpr std::string_view keyVerifyDetails =
    R"(Verifies the signature in SIGNATURE, as "cryptotool key sign" writes it, over FILE, or standard input, with the key in KEY, which may be
a private or a public one, or that of a certificate. Prints OK and ends with 0, or prints FAILED and ends with 1.
)";

constexpr Option keyVerifyOptions[] = {
    hashOption,
    pssOption,
    {OptionKind::number, 0, "salt-length", "N", "with --pss: bytes of salt (any)"},
    passwordSecret.file,
    passwordSecret.descriptor,
    outputOption,
};

int Verify(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string signatureFile = arguments.operand(1);
    const std::string file = arguments.fileOperand(2);
    Signing signing;
    signing.padding.masking.saltLength = CCryptoRSAPadding::saltOfAnyLength;
    element signature;
    std::string reason;
    int exit = StartSigning(invocation, {arguments.operand(0), signatureFile, file}, KeyHalf::any, signing);
    if (exit == exitDone && !ReadWhole(invocation.console(), signatureFile, signature, reason))
        exit = invocation.refuse(signatureFile, reason);
    if (exit == exitDone)
        exit = ReadSigned(invocation, file, signing);
    if (exit != exitDone)
        return exit;
    const bool isRight = signing.key->signer()->verify(signing.hash, signing.input.bytes(), signature.bytes(), signing.padding);
    Output output(invocation.console(), arguments.value(outputOption.name), Output::Content::text);
    const bool written = output.open() && output.write(isRight ? "OK\n" : "FAILED\n") && output.finish();
    if (!written)
        return RefuseOutput(invocation, output);
    return isRight ? exitDone : exitRefused;
}

} // namespace

const Command keyVerifyCommand = {
    "key", "verify", "verifies the signature of a file", "KEY SIGNATURE [FILE]", 2, 3, keyVerifyDetails, keyVerifyOptions, Verify};

} // namespace ccrypto
