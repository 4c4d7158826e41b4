#include "asn1/der/pem.h"
#include "pki/pkcs12/pkcs12.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/keys/key_output.h"
#include "tools/cryptotool/output/output.h"
#include "tools/cryptotool/pki/store_input.h"

namespace ccrypto {

namespace {

constexpr std::string_view p12ImportDetails =
    R"(Takes keys and certificates out of the PKCS#12 file FILE, and writes them as PEM: each key, PKCS#8, with its certificate, then the
other certificates and the revocation lists. Keys are encrypted with a new password unless --plain is given. Only its
owner can read a file of -o (on Windows, those whom its directory grants access). Passwords without an option are asked
for, the new one twice.
)";
constexpr Option plainOption = {OptionKind::flag, 0, "plain", "", "write keys without encryption"};
constexpr Option onlyOption = {OptionKind::choice, 0, "only", "all|keys|certificates", "what is written (all)"};
constexpr Option p12ImportOptions[] = {
    plainOption,
    onlyOption,
    keyCipherOption,
    keyIterationsOption,
    keySchemeOption,
    passwordSecret.file,
    passwordSecret.descriptor,
    newPasswordSecret.file,
    newPasswordSecret.descriptor,
    outputOption,
};

/// What the options ask for.
struct ImportTarget {
    bool withKeys = true;
    bool withOthers = true;
    bool isPlain = false;
    SCryptoPasswordEncryption encryption;
    element password;

    int read(Invocation& invocation)
    {
        const Arguments& arguments = invocation.arguments();
        const std::string only = arguments.value(onlyOption.name);
        withKeys = only != "certificates";
        withOthers = only != "keys";
        isPlain = arguments.has(plainOption.name);
        if (!isPlain && withKeys)
            return ReadPasswordEncryption(invocation, encryption);
        // Ignoring a password would leave a key unprotected that its user takes for encrypted.
        for (const Option& option :
             {keyCipherOption, keyIterationsOption, keySchemeOption, newPasswordSecret.file, newPasswordSecret.descriptor})
            if (arguments.has(option.name))
                return invocation.misuse("--" + std::string(option.name) + " does not go with " +
                                         (isPlain ? "--plain" : "--only certificates"));
        return exitDone;
    }
};

class StoreImport {
public:
    StoreImport(Invocation& invocation, const CCryptoPKCS12& file, const ImportTarget& target, Output& output)
        : invocation_(invocation), file_(file), target_(target), output_(output)
    {
    }

    bool writeKey(const PKCS12Bag& bag)
    {
        CCryptoKeyFile keys;
        const KeyForm form = target_.isPlain ? KeyForm::privateKeyInfo : KeyForm::encryptedPrivateKey;
        const element der = keys.Save(*bag.key, form, target_.password.view(), target_.encryption);
        return !der.isEmpty() && output_.write(CCryptoKeyFile::ToPem(form, der).view());
    }

    /// Keys and their certificates.
    bool writeKeys(const std::string& name)
    {
        for (const PKCS12Bag& bag : file_.bags()) {
            if (bag.kind != PKCS12Bag::Kind::key)
                continue;
            if (bag.key == nullptr)
                invocation_.warn(name, "a key of an unsupported algorithm is left out");
            else if (target_.withKeys && !writeKey(bag))
                return false;
            const PKCS12Bag* const certificate = file_.certificateOf(bag);
            if (target_.withOthers && certificate != nullptr && !writeOther(*certificate))
                return false;
        }
        return true;
    }

    /// Each once.
    bool writeOther(const PKCS12Bag& bag)
    {
        const auto index = static_cast<std::size_t>(&bag - file_.bags().data());
        isWritten_.resize(file_.bags().size());
        if (isWritten_[index])
            return true;
        isWritten_[index] = true;
        const char* const label = bag.kind == PKCS12Bag::Kind::certificate ? "CERTIFICATE" : "X509 CRL";
        return output_.write(WritePem(label, bag.octets).view());
    }

    bool writeOthers()
    {
        for (const PKCS12Bag& bag : file_.bags()) {
            const bool isOther = bag.certificate != nullptr || bag.revocationList != nullptr;
            if (isOther && !writeOther(bag))
                return false;
        }
        return true;
    }

private:
    Invocation& invocation_;
    const CCryptoPKCS12& file_;
    const ImportTarget& target_;
    Output& output_;
    std::vector<bool> isWritten_;
};

int ImportStore(Invocation& invocation)
{
    const std::string name = invocation.arguments().operand(0);
    ImportTarget target;
    if (const int exit = target.read(invocation); exit != exitDone)
        return exit;
    if (const int exit = CheckOneStandardInput(invocation, {name}, {passwordSecret, newPasswordSecret}); exit != exitDone)
        return exit;
    CCryptoPKCS12 file;
    if (const int exit = ReadStore(invocation, name, StoreAccess::open, file); exit != exitDone)
        return exit;
    bool hasKey = false;
    for (const PKCS12Bag& bag : file.bags())
        hasKey |= bag.key != nullptr;
    if (target.withKeys && !target.withOthers && !hasKey)
        return invocation.refuse(name, "it holds no key that is supported");
    const bool isSecret = target.withKeys && hasKey;
    if (isSecret && !target.isPlain)
        if (const int exit = ReadSecret(invocation, newPasswordSecret, Asking::twice, target.password); exit != exitDone)
            return exit;

    Output output(invocation.console(), invocation.arguments().value(outputOption.name), Output::Content::text);
    if (isSecret)
        output.keepPrivate();
    if (!output.open())
        return RefuseOutput(invocation, output);
    StoreImport import(invocation, file, target, output);
    const bool isWritten = import.writeKeys(name) && (!target.withOthers || import.writeOthers());
    return FinishOutput(invocation, output, isWritten);
}

} // namespace

const Command p12ImportCommand = {
    "p12",      "import", "takes keys and certificates out of a PKCS#12 file", "FILE", 1, 1, p12ImportDetails, p12ImportOptions,
    ImportStore};

} // namespace ccrypto
