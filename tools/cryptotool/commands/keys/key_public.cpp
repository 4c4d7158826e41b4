#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/keys/key_input.h"
#include "tools/cryptotool/keys/key_output.h"

namespace ccrypto {

namespace {

constexpr std::string_view keyPublicDetails =
    R"(Writes the public half of the key in FILE, which may be a private or a public one in any form, or the public key of a certificate.
)";

constexpr Option keyPublicOptions[] = {
    {OptionKind::choice, 0, "form", "spki|pkcs1", "SubjectPublicKeyInfo (spki), or RSAPublicKey"},
    keyEncodingOption,
    passwordSecret.file,
    passwordSecret.descriptor,
    outputOption,
};

int WritePublic(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string file = arguments.operand(0);
    KeyInput input;
    if (const int exit = ReadKey(invocation, {file}, KeyHalf::any, input); exit != exitDone)
        return exit;
    const KeyForm form = arguments.value("form") == "pkcs1" ? KeyForm::rsaPublicKey : KeyForm::publicKeyInfo;
    if (form == KeyForm::rsaPublicKey && input.key->algorithmId() != algorithm::rsaEncryption)
        return invocation.misuse("--form pkcs1 requires an RSA key");
    CCryptoKeyFile keyFile;
    const element der = keyFile.Save(*input.key, form);
    if (der.isEmpty())
        return invocation.refuse(file, LastReason("the key cannot be saved"));
    KeyOutput output(invocation, form);
    const int exit = output.open();
    return exit == exitDone ? output.write(der) : exit;
}

} // namespace

const Command keyPublicCommand = {
    "key", "public", "writes the public half of a key", "FILE", 1, 1, keyPublicDetails, keyPublicOptions, WritePublic};

} // namespace ccrypto
