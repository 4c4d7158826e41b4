#include "tools/cryptotool/keys/signing.h"

#include "core/base/algorithm.h"
#include "crypto/hash/hash.h"
#include "tools/cryptotool/input/file_input.h"

namespace ccrypto {

namespace {

/// The longest salt that an RSA key of 8192 bits has room for.
constexpr std::uint64_t maxSalt = 1024;

/// What the options say by themselves. \return exitDone or exitUsage.
int ReadPadding(Invocation& invocation, Signing& signing)
{
    const Arguments& arguments = invocation.arguments();
    const bool isPss = arguments.has(pssOption.name);
    const std::unique_ptr<ICryptoHash> hash = ICryptoHash::CreateByName(arguments.value(hashOption.name, "sha256"));
    signing.hash = hash != nullptr ? static_cast<algorithm::Id>(hash->algorithmId()) : algorithm::none;
    if (signing.hash == algorithm::none)
        return invocation.misuse("signatures do not support " + arguments.value(hashOption.name));
    if (arguments.has("salt-length")) {
        const std::uint64_t length = arguments.number("salt-length", 0);
        if (!isPss)
            return invocation.misuse("--salt-length requires --pss");
        if (length > maxSalt)
            return invocation.misuse("--salt-length must be at most " + std::to_string(maxSalt));
        signing.padding.masking.saltLength = static_cast<std::int32_t>(length);
    }
    if (isPss && signing.hash == algorithm::md5Sha1)
        return invocation.misuse("--pss does not support md5-sha1");
    signing.padding.scheme = isPss ? SCryptoPadding::Scheme::masked : SCryptoPadding::Scheme::pkcs1;
    signing.padding.masking.hash = signing.hash;
    return exitDone;
}

} // namespace

int StartSigning(Invocation& invocation, const std::vector<std::string>& files, KeyHalf half, Signing& signing)
{
    const std::string& name = files.front();
    KeyInput input;
    int exit = ReadPadding(invocation, signing);
    if (exit == exitDone)
        exit = ReadKey(invocation, files, half, input);
    if (exit != exitDone)
        return exit;
    signing.key = std::move(input.key);
    if (signing.key->signer() == nullptr)
        return invocation.refuse(name, std::string(signing.key->name()) + " keys do not sign");
    if (signing.padding.scheme == SCryptoPadding::Scheme::masked && signing.key->algorithmId() != algorithm::rsaEncryption)
        return invocation.refuse(name, "not an RSA key; --pss requires one");
    if (signing.padding.scheme != SCryptoPadding::Scheme::masked && signing.key->name() == std::string_view("RSA-PSS"))
        return invocation.refuse(name, "the key is for RSASSA-PSS alone; --pss is needed");
    if (signing.key->signer()->signsMessages() && invocation.arguments().has(hashOption.name))
        return invocation.refuse(name, std::string(signing.key->name()) + " keys sign without --hash");
    return exitDone;
}

int ReadSigned(Invocation& invocation, const std::string& file, Signing& signing)
{
    std::string reason;
    if (signing.key->signer()->signsMessages()) {
        signing.hash = algorithm::none;
        return ReadWhole(invocation.console(), file, signing.input, reason) ? exitDone : invocation.refuse(file, reason);
    }
    const std::unique_ptr<ICryptoHash> hash = ICryptoHash::Create(signing.hash);
    const bool isRead = StreamFile(
        invocation.console(), file, [&](std::span<const std::uint8_t> piece) { hash->update(piece); }, reason);
    if (!isRead)
        return invocation.refuse(file, reason);
    signing.input = hash->final();
    return exitDone;
}

} // namespace ccrypto
