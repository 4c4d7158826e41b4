#include "core/text/hex.h"
#include "crypto/hash/hash.h"
#include "pki/keys/key_pair.h"
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

Facts FactsOf(const KeyInput& input, bool withPrivate)
{
    const ICryptoKeyPair& key = *input.key;
    Facts facts = {
        {"type", key.algorithmId() == algorithm::ecPublicKey ? "EC" : key.name()},
        {"size", CCryptoString(std::to_string(key.keySize())), true},
    };
    if (key.algorithmId() == algorithm::ecPublicKey)
        facts.push_back({"curve", key.name()});
    facts.push_back({"form", input.isOfCertificate ? "Certificate (X.509)" : NameOf(input.form)});
    for (const SCryptoKeyNumber& number : key.publicNumbers())
        Add(facts, number.name, number.value);
    if (withPrivate)
        for (const SCryptoKeyNumber& number : key.privateNumbers())
            Add(facts, number.name, number.value);
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
