#include "core/base/ascii.h"
#include "pki/keys/ec_key_pair.h"
#include "pki/keys/eddsa_key_pair.h"
#include "pki/keys/rsa_key_pair.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/progress.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/cli/suggestion.h"
#include "tools/cryptotool/keys/key_output.h"

#include <string>

namespace ccrypto {

namespace {

constexpr std::string_view keyGenDetails =
    R"(Makes a new private key. ALG is rsa, or a curve: secp112r1, secp160r1, prime192v1, prime256v1 (P-256), secp384r1 (P-384), secp521r1
(P-521), secp224r1 (P-224), secp256k1, brainpoolP160r1, brainpoolP224r1, brainpoolP256r1, brainpoolP320r1, brainpoolP384r1,
brainpoolP384t1, brainpoolP512r1, x25519, x448, ed25519 or ed448. Only its owner can read a file of -o (on Windows, those whom its directory grants
access). Without an option for it, the password of an encrypted key is asked for, twice.
)";

constexpr std::string_view keyNames =
    "rsa|secp112r1|secp160r1|prime192v1|prime256v1|P-256|secp384r1|P-384|secp521r1|P-521|secp224r1|P-224|secp256k1|"
    "brainpoolP160r1|brainpoolP224r1|brainpoolP256r1|brainpoolP320r1|brainpoolP384r1|brainpoolP384t1|brainpoolP512r1|x25519|x448|"
    "ed25519|ed448";

constexpr Option keyGenOptions[] = {
    {OptionKind::number, 0, "bits", "N", "for rsa: the length of the modulus, an even number from 1024 to 8192 (3072)"},
    privateFormOption,
    keyEncodingOption,
    keyCipherOption,
    keyIterationsOption,
    keySchemeOption,
    passwordSecret.file,
    passwordSecret.descriptor,
    outputOption,
};

constexpr std::uint64_t defaultBits = 3072;

std::unique_ptr<ICryptoKeyPair> GenerateRsa(Console& console, std::uint32_t bits)
{
    ProgressLine line(console);
    auto key = CCryptoRSA::Generate(bits, 65537, [&](std::uint32_t candidates) {
        if (line.isDue())
            line.show("looking for primes: " + std::to_string(candidates) + " candidates");
        return true;
    });
    return key != nullptr ? std::make_unique<CCryptoRSAKeyPair>(std::move(key)) : nullptr;
}

/// None for names of other algorithms.
algorithm::Id CurveOfName(const std::string& name)
{
    for (const algorithm::Id id : {algorithm::ed25519, algorithm::ed448})
        if (SameInAnyCase(name, id == algorithm::ed25519 ? "ed25519" : "ed448"))
            return id;
    const CurveFacts* const curve = FindCurve(name);
    return curve != nullptr ? curve->id : algorithm::none;
}

std::unique_ptr<ICryptoKeyPair> GenerateOnCurve(algorithm::Id curve)
{
    if (curve == algorithm::ed25519 || curve == algorithm::ed448) {
        auto key = EddsaKey::Generate(curve);
        return key != nullptr ? std::make_unique<CCryptoEddsaKeyPair>(std::move(key)) : nullptr;
    }
    auto key = CCryptoEC::Generate(curve);
    return key != nullptr ? std::make_unique<CCryptoECKeyPair>(std::move(key)) : nullptr;
}

int Generate(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string name = arguments.operand(0);
    const bool isRsa = SameInAnyCase(name, "rsa");
    const algorithm::Id kind = isRsa ? algorithm::rsaEncryption : CurveOfName(name);
    if (kind == algorithm::none)
        return invocation.misuse("unknown algorithm " + name + DidYouMean(name, SplitChoices(keyNames)));
    const std::uint64_t bits = arguments.number("bits", defaultBits);
    if (!isRsa && arguments.has("bits"))
        return invocation.misuse("--bits requires rsa");
    if (bits < CCryptoRSA::minBits || bits > CCryptoRSA::maxBits || bits % 2 != 0)
        return invocation.misuse("--bits must be an even number from 1024 to 8192");

    PrivateKeyTarget target;
    int exit = target.read(invocation, passwordSecret);
    if (exit == exitDone)
        exit = target.prepare(invocation, kind);
    if (exit != exitDone)
        return exit;
    StartReason();
    const std::unique_ptr<ICryptoKeyPair> key =
        isRsa ? GenerateRsa(invocation.console(), static_cast<std::uint32_t>(bits)) : GenerateOnCurve(kind);
    return key != nullptr ? target.write(invocation, *key, name) : invocation.refuse(name, LastReason("no key could be made"));
}

} // namespace

const Command keyGenCommand = {"key",    "gen",   "makes a new private key", "ALG", 1, 1, keyGenDetails, keyGenOptions,
                               Generate, keyNames};

} // namespace ccrypto
