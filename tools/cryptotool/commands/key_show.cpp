#include "core/text/hex.h"
#include "crypto/hash/hash.h"
#include "pki/keys/ec_key_pair.h"
#include "pki/keys/eddsa_key_pair.h"
#include "pki/keys/rsa_key_pair.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/keys/key_input.h"
#include "tools/cryptotool/output/output.h"

#include <string>
#include <vector>

namespace ccrypto {

namespace {

constexpr std::string_view keyShowDetails =
    R"(Describes the key in FILE: its type, its size in bits, the form it is stored in, its public numbers in hexadecimal, and its fingerprint,
the SHA-256 of its SubjectPublicKeyInfo. FILE may hold a private or a public key in any form, or a certificate, whose public key is shown.
)";

constexpr Option keyShowOptions[] = {
    {OptionKind::flag, 0, "private", "", "print the private numbers too"},
    jsonOption,
    passwordSecret.file,
    passwordSecret.descriptor,
    outputOption,
};

/// One line, or several when the value is a long number. The value may be secret: it is wiped.
struct Fact {
    const char* name;
    CCryptoString value;
    bool isCount = false; ///< in JSON, one without quotes
};

using Facts = std::vector<Fact>;

constexpr std::size_t nameWidth = 18;
constexpr std::size_t digitsInLine = 64;

void Add(Facts& facts, const char* name, const element& number)
{
    facts.push_back({name, HexText(number.bytes())});
}

const char* NameOf(KeyForm form)
{
    switch (form) {
    case KeyForm::publicKeyInfo:
        return "SubjectPublicKeyInfo";
    case KeyForm::rsaPublicKey:
        return "RSAPublicKey (PKCS#1)";
    case KeyForm::privateKeyInfo:
        return "PrivateKeyInfo (PKCS#8)";
    case KeyForm::encryptedPrivateKey:
        return "EncryptedPrivateKeyInfo (PKCS#8)";
    case KeyForm::rsaPrivateKey:
        return "RSAPrivateKey (PKCS#1)";
    case KeyForm::ecPrivateKey:
        break;
    }
    return "ECPrivateKey (SEC 1)";
}

void AddNumbers(Facts& facts, const CCryptoRSA& key, bool withPrivate)
{
    const CCryptoRSANumbers numbers = key.numbers();
    Add(facts, "modulus", numbers.modulus);
    Add(facts, "publicExponent", numbers.publicExponent);
    if (!withPrivate)
        return;
    Add(facts, "privateExponent", numbers.privateExponent);
    Add(facts, "prime1", numbers.prime1);
    Add(facts, "prime2", numbers.prime2);
    Add(facts, "exponent1", numbers.exponent1);
    Add(facts, "exponent2", numbers.exponent2);
    Add(facts, "coefficient", numbers.coefficient);
}

Facts FactsOf(const KeyInput& input, bool withPrivate)
{
    const ICryptoKeyPair& key = *input.key;
    const auto* const rsa = dynamic_cast<const CCryptoRSAKeyPair*>(&key);
    const auto* const ec = dynamic_cast<const CCryptoECKeyPair*>(&key);
    const auto* const eddsa = dynamic_cast<const CCryptoEddsaKeyPair*>(&key);
    Facts facts = {
        {"type", key.algorithmId() == algorithm::ecPublicKey ? "EC" : key.name()},
        {"size", CCryptoString(std::to_string(key.keySize())), true},
    };
    if (key.algorithmId() == algorithm::ecPublicKey)
        facts.push_back({"curve", key.name()});
    facts.push_back({"form", input.isOfCertificate ? "Certificate (X.509)" : NameOf(input.form)});
    if (rsa != nullptr)
        AddNumbers(facts, rsa->key(), withPrivate);
    if (ec != nullptr)
        Add(facts, "publicPoint", ec->key().publicPoint());
    if (ec != nullptr && withPrivate)
        Add(facts, "privateScalar", ec->key().privateScalar());
    if (eddsa != nullptr)
        Add(facts, "publicKey", eddsa->key().publicKey());
    if (eddsa != nullptr && withPrivate)
        Add(facts, "seed", eddsa->key().seed());
    Add(facts, "fingerprint", ICryptoHash::Create(algorithm::sha256)->digestOf(key.publicKeyInfo().bytes()));
    return facts;
}

element Text(const Facts& facts)
{
    element text;
    for (const Fact& fact : facts) {
        std::string_view rest = fact.value.view();
        text.append(fact.name + std::string(nameWidth - std::string_view(fact.name).size(), ' '));
        for (; rest.size() > digitsInLine; rest.remove_prefix(digitsInLine)) {
            text.append(rest.substr(0, digitsInLine));
            text.append("\n" + std::string(nameWidth, ' '));
        }
        text.append(rest);
        text.append("\n");
    }
    return text;
}

/// Names and digits need no escapes.
element Json(const Facts& facts)
{
    element text;
    for (const Fact& fact : facts) {
        const std::string_view quote = fact.isCount ? "" : "\"";
        text.append((text.isEmpty() ? "{\"" : ",\n\"") + std::string(fact.name) + "\":");
        text.append(quote);
        text.append(fact.value.view());
        text.append(quote);
    }
    text.append("}\n");
    return text;
}

int Show(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string file = arguments.operand(0);
    const bool withPrivate = arguments.has("private");
    KeyInput input;
    if (const int exit = ReadKey(invocation, {file}, withPrivate ? KeyHalf::privateHalf : KeyHalf::any, input); exit != exitDone)
        return exit;
    const Facts facts = FactsOf(input, withPrivate);
    Output output(invocation.console(), arguments.value(outputOption.name), Output::Content::text);
    if (withPrivate)
        output.keepPrivate();
    return FinishOutput(invocation, output,
                        output.open() && output.write((arguments.has("json") ? Json(facts) : Text(facts)).bytes()));
}

} // namespace

const Command keyShowCommand = {"key", "show", "describes a key", "FILE", 1, 1, keyShowDetails, keyShowOptions, Show};

} // namespace ccrypto
