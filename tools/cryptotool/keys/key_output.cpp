#include "tools/cryptotool/keys/key_output.h"

#include "core/base/ascii.h"
#include "crypto/ec/ec.h"
#include "tools/cryptotool/cli/reason.h"

#include <algorithm>

namespace ccrypto {

namespace {

struct NamedId {
    std::string_view name;
    algorithm::Id id;
};

constexpr NamedId ciphers[] = {
    {"aes-128-cbc", algorithm::aes128Cbc},
    {"aes-192-cbc", algorithm::aes192Cbc},
    {"aes-256-cbc", algorithm::aes256Cbc},
    {"des-ede3-cbc", algorithm::tripleDesCbc},
};

constexpr NamedId schemes[] = {
    {"sha1-3des", algorithm::pkcs12Sha1TripleDes3Key}, {"sha1-2des", algorithm::pkcs12Sha1TripleDes2Key},
    {"sha1-rc2-128", algorithm::pkcs12Sha1Rc2_128},    {"sha1-rc2-40", algorithm::pkcs12Sha1Rc2_40},
    {"sha1-rc4-128", algorithm::pkcs12Sha1Rc4_128},    {"sha1-rc4-40", algorithm::pkcs12Sha1Rc4_40},
};

constexpr std::uint64_t minIterations = 1000;
constexpr std::uint64_t maxIterations = 50'000'000;

KeyForm FormOf(std::string_view name)
{
    if (name == "pkcs1")
        return KeyForm::rsaPrivateKey;
    if (name == "sec1")
        return KeyForm::ecPrivateKey;
    return name == "encrypted" ? KeyForm::encryptedPrivateKey : KeyForm::privateKeyInfo;
}

/// Takes the id of the name that an option gives, if it is given. \return exitDone, or exitUsage after the reason was printed.
int ReadName(Invocation& invocation, const Option& option, std::span<const NamedId> names, algorithm::Id& id)
{
    const Arguments& arguments = invocation.arguments();
    if (!arguments.has(option.name))
        return exitDone;
    const std::string given = arguments.value(option.name);
    const auto found = std::ranges::find_if(names, [&](const NamedId& row) { return SameInAnyCase(row.name, given); });
    if (found == names.end())
        return invocation.misuse("--" + std::string(option.name) + " does not support " + given);
    id = found->id;
    return exitDone;
}

} // namespace

int ReadPasswordEncryption(Invocation& invocation, SCryptoPasswordEncryption& encryption)
{
    const Arguments& arguments = invocation.arguments();
    const bool hasScheme = arguments.has(keySchemeOption.name);
    if (hasScheme && arguments.has(keyCipherOption.name))
        return invocation.misuse("--cipher and --scheme are mutually exclusive");
    const std::uint64_t iterations = arguments.number(keyIterationsOption.name, encryption.iterations);
    if (iterations < minIterations || iterations > maxIterations)
        return invocation.misuse("--iterations must be from " + std::to_string(minIterations) + " to " +
                                 std::to_string(maxIterations));
    encryption.iterations = static_cast<std::uint32_t>(iterations);
    int exit = ReadName(invocation, keyCipherOption, ciphers, encryption.cipher);
    if (exit == exitDone)
        exit = ReadName(invocation, keySchemeOption, schemes, encryption.scheme);
    if (exit == exitDone && hasScheme)
        invocation.warn({}, arguments.value(keySchemeOption.name) +
                                " is weak: anyone with the file may recover the key without the password");
    return exit;
}

int PrivateKeyTarget::read(Invocation& invocation, const SecretKind& secret)
{
    const Arguments& arguments = invocation.arguments();
    form_ = FormOf(arguments.value(privateFormOption.name));
    secret_ = &secret;
    if (form_ == KeyForm::encryptedPrivateKey)
        return ReadPasswordEncryption(invocation, encryption_);
    // Ignoring a password would leave a key unprotected that its user takes for encrypted.
    for (const Option& option : {keyCipherOption, keyIterationsOption, keySchemeOption, secret.file, secret.descriptor})
        if (arguments.has(option.name))
            return invocation.misuse("--" + std::string(option.name) + " requires --form encrypted");
    return exitDone;
}

int PrivateKeyTarget::prepare(Invocation& invocation, algorithm::Id kind)
{
    if (form_ == KeyForm::rsaPrivateKey && kind != algorithm::rsaEncryption)
        return invocation.misuse("--form pkcs1 requires an RSA key");
    const CurveFacts* const curve = FindCurve(kind);
    const bool hasEcForm = curve != nullptr && curve->signs;
    if (form_ == KeyForm::ecPrivateKey && !hasEcForm)
        return invocation.misuse("--form sec1 requires a key for ECDSA");
    if (form_ == KeyForm::encryptedPrivateKey)
        if (const int exit = ReadSecret(invocation, *secret_, Asking::twice, password_); exit != exitDone)
            return exit;
    output_.emplace(invocation, form_);
    return output_->open();
}

int PrivateKeyTarget::write(Invocation& invocation, const ICryptoKeyPair& key, std::string_view source)
{
    CCryptoKeyFile file;
    const element der = file.Save(key, form_, password_.view(), encryption_);
    return der.isEmpty() ? invocation.refuse(source, LastReason("the key cannot be saved")) : output_->write(der);
}

KeyOutput::KeyOutput(Invocation& invocation, KeyForm form)
    : invocation_(invocation), form_(form), isDer_(invocation.arguments().value(keyEncodingOption.name) == "der"),
      output_(invocation.console(), invocation.arguments().value(outputOption.name),
              isDer_ ? Output::Content::binary : Output::Content::text)
{
    if (form != KeyForm::publicKeyInfo && form != KeyForm::rsaPublicKey)
        output_.keepPrivate();
}

int KeyOutput::open()
{
    return output_.open() ? exitDone : RefuseOutput(invocation_, output_);
}

int KeyOutput::write(const element& der)
{
    const bool isWritten = isDer_ ? output_.write(der.bytes()) : output_.write(CCryptoKeyFile::ToPem(form_, der).view());
    return FinishOutput(invocation_, output_, isWritten);
}

} // namespace ccrypto
