#include "core/text/hex.h"
#include "crypto/hash/hash.h"
#include "crypto/kdf/key_derivation.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/keys/key_input.h"
#include "tools/cryptotool/output/output.h"

#include <string>

namespace ccrypto {

namespace {

constexpr std::string_view keyAgreeDetails =
    R"(Writes the secret that the private key in KEY and the public key in PEER, or of the certificate in PEER, agree on: X25519, X448, or
ECDH of one curve. The secret is the x coordinate of RFC 5480 and SP 800-56A, or the result of RFC 7748. It is not evenly distributed:
use it as a key only after a derivation, which --kdf does. Only its owner can read a file of -o (on Windows, those whom its directory
grants access).
)";

constexpr Option kdfOption = {OptionKind::choice, 0, "kdf", "x963|hkdf",
                              "derive a key from the secret, by ANSI X9.63 or by HKDF (RFC 5869)"};
constexpr Option kdfHashOption = {OptionKind::text, 0, "hash", "ALG", "with --kdf: the hash function (sha256)"};
constexpr Option lengthOption = {OptionKind::number, 0, "length", "N", "with --kdf: bytes of the key (32)"};
constexpr Option infoOption = {OptionKind::text, 0, "info", "HEX",
                               "with --kdf: the bytes of info or SharedInfo, in hexadecimal (none)"};
constexpr Option saltOption = {OptionKind::text, 0, "salt", "HEX", "with --kdf hkdf: the bytes of the salt, in hexadecimal (none)"};
constexpr Option hexOutputOption = {OptionKind::flag, 0, "hex", "", "write hexadecimal digits, in one line"};

constexpr Option keyAgreeOptions[] = {
    kdfOption,    kdfHashOption,   lengthOption,        infoOption,
    saltOption,   hexOutputOption, passwordSecret.file, passwordSecret.descriptor,
    outputOption,
};

/// How a key is derived from the secret.
struct Derivation {
    bool isHkdf = false;
    algorithm::Id hash = algorithm::none; ///< none when nothing is derived
    std::uint32_t length = 0;
    element info;
    element salt;

    element derive(const element& secret) const
    {
        return isHkdf ? CCryptoKeyDerivation::HKDF(hash, salt.bytes(), secret.bytes(), info.bytes(), length)
                      : CCryptoKeyDerivation::X963(hash, secret.bytes(), info.bytes(), length);
    }
};

/// \return exitDone or exitUsage.
int ReadDerivation(Invocation& invocation, Derivation& derivation)
{
    const Arguments& arguments = invocation.arguments();
    const bool hasKdf = arguments.has(kdfOption.name);
    derivation.isHkdf = arguments.value(kdfOption.name) == "hkdf";
    for (const Option& option : {kdfHashOption, lengthOption, infoOption})
        if (arguments.has(option.name) && !hasKdf)
            return invocation.misuse("--" + std::string(option.name) + " requires --kdf");
    if (arguments.has(saltOption.name) && !derivation.isHkdf)
        return invocation.misuse("--salt requires --kdf hkdf");
    if (!hasKdf)
        return exitDone;

    const std::string name = arguments.value(kdfHashOption.name, "sha256");
    const auto hash = ICryptoHash::CreateByName(name);
    derivation.hash = hash != nullptr ? hash->algorithmId() : algorithm::none;
    const std::uint64_t length = arguments.number(lengthOption.name, 32);
    // One byte derived from a secret of one byte says whether the derivation has such a hash function.
    const std::uint8_t probe = 0;
    derivation.length = 1;
    if (derivation.hash == algorithm::none || derivation.derive(element(&probe, 1)).isEmpty())
        return invocation.misuse("--kdf " + arguments.value(kdfOption.name) + " does not support " + name);
    const std::uint64_t maxLength =
        derivation.isHkdf ? std::uint64_t{255} * hash->digestSize() : std::uint64_t{CCryptoKeyDerivation::maxKey};
    if (length < 1 || length > maxLength)
        return invocation.misuse("--length must be from 1 to " + std::to_string(maxLength));
    derivation.length = static_cast<std::uint32_t>(length);
    if (!BytesFromHex(arguments.value(infoOption.name), derivation.info))
        return invocation.misuse("--info must be hexadecimal digits, two per byte");
    if (!BytesFromHex(arguments.value(saltOption.name), derivation.salt))
        return invocation.misuse("--salt must be hexadecimal digits, two per byte");
    return exitDone;
}

int Agree(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string file = arguments.operand(0);
    const std::string peerFile = arguments.operand(1);
    Derivation derivation;
    KeyInput own;
    KeyInput peer;
    int exit = ReadDerivation(invocation, derivation);
    if (exit == exitDone)
        exit = ReadKey(invocation, {file, peerFile}, KeyHalf::privateHalf, own);
    if (exit == exitDone && own.key->agreement() == nullptr)
        exit = invocation.refuse(file, std::string(own.key->name()) + " keys do not agree on secrets");
    if (exit == exitDone)
        exit = ReadPeerKey(invocation, peerFile, peer);
    if (exit != exitDone)
        return exit;

    StartReason();
    element secret = own.key->agreement()->agree(*peer.key);
    if (!secret.isEmpty() && derivation.hash != algorithm::none)
        secret = derivation.derive(secret);
    if (secret.isEmpty())
        return invocation.refuse(peerFile, LastReason("the keys do not agree"));
    const bool isHex = arguments.has(hexOutputOption.name);
    Output output(invocation.console(), arguments.value(outputOption.name),
                  isHex ? Output::Content::text : Output::Content::binary);
    output.keepPrivate();
    return FinishOutput(invocation, output,
                        output.open() && (isHex ? output.write(HexText(secret.bytes()).view()) && output.write("\n")
                                                : output.write(secret.bytes())));
}

} // namespace

const Command keyAgreeCommand = {"key",           "agree", "agrees on a secret with another key", "KEY PEER", 2, 2, keyAgreeDetails,
                                 keyAgreeOptions, Agree};

} // namespace ccrypto
