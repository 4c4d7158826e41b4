#include "core/base/algorithm.h"
#include "core/text/hex.h"
#include "crypto/hash/hash.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/file_input.h"
#include "tools/cryptotool/keys/key_input.h"
#include "tools/cryptotool/output/output.h"

#include <string>

namespace ccrypto {

namespace {

constexpr std::string_view keyEncryptDetails =
    R"(Encrypts FILE, or standard input, with the RSA key in KEY, or of the certificate in KEY. RSA encrypts short texts, such as keys: an
RSA key of 2048 bits takes up to 190 bytes with OAEP and SHA-256, and up to 245 bytes with PKCS#1 v1.5. "cryptotool cipher" encrypts files
of any length.
)";

constexpr std::string_view keyDecryptDetails =
    R"(Decrypts FILE, or standard input, with the private RSA key in KEY. The options of OAEP must be those of the encryption. With PKCS#1
v1.5 a wrong or damaged ciphertext gives other bytes instead of an error, always the same ones for the same ciphertext, so that nobody
learns from the answer whether the padding was right. Only its owner can read a file of -o (on Windows, those whom its directory
grants access).
)";

constexpr Option paddingOption = {OptionKind::choice, 0, "padding", "oaep|pkcs1",
                                  "RSAES-OAEP (oaep), or PKCS#1 v1.5, which is old"};
constexpr Option oaepHashOption = {OptionKind::text, 0, "hash", "ALG", "with OAEP: the hash function (sha256)"};
constexpr Option maskHashOption = {OptionKind::text, 0, "mgf-hash", "ALG",
                                   "with OAEP: the hash function of MGF1 (the one of --hash)"};
constexpr Option labelOption = {OptionKind::text, 0, "label", "HEX", "with OAEP: the bytes of the label, in hexadecimal (none)"};

constexpr Option keyEncryptOptions[] = {
    paddingOption, oaepHashOption, maskHashOption, labelOption, passwordSecret.file, passwordSecret.descriptor, outputOption,
};

/// The padding that the options ask for.
struct EncryptionPadding {
    SCryptoPadding padding;
    element label;
    std::uint32_t overhead = 11; ///< bytes of a ciphertext that hold no text (RFC 8017, 7.1.1 and 7.2.1)
};

/// The hash function that an option names. \return exitDone or exitUsage.
int ReadHash(Invocation& invocation, const Option& option, std::unique_ptr<ICryptoHash>& hash)
{
    const std::string name = invocation.arguments().value(option.name, "sha256");
    hash = ICryptoHash::CreateByName(name);
    const bool isSupported =
        hash != nullptr && hash->algorithmId() != 0 && hash->algorithmId() != algorithm::md5Sha1 && !hash->isExtendable();
    return isSupported ? exitDone : invocation.misuse("--" + std::string(option.name) + " does not support " + name);
}

/// \return exitDone or exitUsage.
int ReadEncryptionPadding(Invocation& invocation, EncryptionPadding& padding)
{
    const Arguments& arguments = invocation.arguments();
    if (arguments.value(paddingOption.name) == "pkcs1") {
        for (const Option& option : {oaepHashOption, maskHashOption, labelOption})
            if (arguments.has(option.name))
                return invocation.misuse("--" + std::string(option.name) + " requires --padding oaep");
        return exitDone;
    }
    std::unique_ptr<ICryptoHash> hash;
    std::unique_ptr<ICryptoHash> maskHash;
    int exit = ReadHash(invocation, oaepHashOption, hash);
    if (exit == exitDone && arguments.has(maskHashOption.name))
        exit = ReadHash(invocation, maskHashOption, maskHash);
    if (exit != exitDone)
        return exit;
    if (!BytesFromHex(arguments.value(labelOption.name), padding.label))
        return invocation.misuse("--label must be hexadecimal digits, two per byte");
    padding.overhead = 2 * hash->digestSize() + 2;
    padding.padding.scheme = SCryptoPadding::Scheme::masked;
    padding.padding.masking.hash = hash->algorithmId();
    padding.padding.masking.maskHash = maskHash != nullptr ? maskHash->algorithmId() : algorithm::none;
    padding.padding.masking.label = padding.label.bytes();
    return exitDone;
}

/// Reads options, key and text, and sees that the key does what is asked. \return exitDone, or the exit code after the reason was
/// printed.
int ReadKeyAndText(Invocation& invocation, KeyHalf half, EncryptionPadding& padding, KeyInput& input, element& text)
{
    const std::string keyFile = invocation.arguments().operand(0);
    const std::string file = invocation.arguments().fileOperand(1);
    int exit = ReadEncryptionPadding(invocation, padding);
    if (exit == exitDone)
        exit = ReadKey(invocation, {keyFile, file}, half, input);
    if (exit != exitDone)
        return exit;
    if (input.key->decrypter() == nullptr)
        return invocation.refuse(keyFile, std::string(input.key->name()) + " keys do not encrypt");
    std::string reason;
    return ReadWhole(invocation.console(), file, text, reason) ? exitDone : invocation.refuse(file, reason);
}

std::uint32_t ModulusBytes(const ICryptoKeyPair& key)
{
    return (key.keySize() + 7) / 8;
}

int EncryptWithKey(Invocation& invocation)
{
    EncryptionPadding padding;
    KeyInput input;
    element text;
    if (const int exit = ReadKeyAndText(invocation, KeyHalf::any, padding, input, text); exit != exitDone)
        return exit;
    const std::string keyFile = invocation.arguments().operand(0);
    const std::uint32_t size = ModulusBytes(*input.key);
    if (padding.overhead > size)
        return invocation.refuse(keyFile, "the key is too short for OAEP with this hash function");
    if (text.length() > size - padding.overhead)
        return invocation.refuse(invocation.arguments().fileOperand(1), "it has " + std::to_string(text.length()) +
                                                                            " bytes; this key and padding encrypt up to " +
                                                                            std::to_string(size - padding.overhead));
    StartReason();
    const element ciphertext = input.key->decrypter()->encrypt(text.bytes(), padding.padding);
    if (ciphertext.isEmpty())
        return invocation.refuse(keyFile, LastReason("it cannot encrypt this"));
    Output output(invocation.console(), invocation.arguments().value(outputOption.name), Output::Content::binary);
    return FinishOutput(invocation, output, output.open() && output.write(ciphertext.bytes()));
}

int DecryptWithKey(Invocation& invocation)
{
    EncryptionPadding padding;
    KeyInput input;
    element ciphertext;
    if (const int exit = ReadKeyAndText(invocation, KeyHalf::privateHalf, padding, input, ciphertext); exit != exitDone)
        return exit;
    const std::string file = invocation.arguments().fileOperand(1);
    const std::uint32_t size = ModulusBytes(*input.key);
    if (ciphertext.length() != size)
        return invocation.refuse(file, "it has " + std::to_string(ciphertext.length()) + " bytes; a ciphertext of this key has " +
                                           std::to_string(size));
    element text;
    if (!input.key->decrypter()->decrypt(ciphertext.bytes(), text, padding.padding))
        return invocation.refuse(file, "it cannot be decrypted with this key and these options");
    Output output(invocation.console(), invocation.arguments().value(outputOption.name), Output::Content::binary);
    output.keepPrivate();
    return FinishOutput(invocation, output, output.open() && output.write(text.bytes()));
}

} // namespace

const Command keyEncryptCommand = {
    "key",         "encrypt", "encrypts a short text with an RSA key", "KEY [FILE]", 1, 2, keyEncryptDetails, keyEncryptOptions,
    EncryptWithKey};
const Command keyDecryptCommand = {
    "key",         "decrypt", "decrypts what \"key encrypt\" wrote", "KEY [FILE]", 1, 2, keyDecryptDetails, keyEncryptOptions,
    DecryptWithKey};

} // namespace ccrypto
