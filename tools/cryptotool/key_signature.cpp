#include "tools/cryptotool/key_signature.h"

#include "asn1/algorithm_table.h"
#include "crypto/hash.h"
#include "tools/cryptotool/input.h"
#include "tools/cryptotool/progress.h"

#include <vector>

namespace {

constexpr std::size_t pieceSize = 1U << 16;

/// The longest salt that an RSA key of 8192 bits has room for.
constexpr std::uint64_t longestSalt = 1024;

} // namespace

int ReadPadding(Invocation& invocation, const ICryptoKeyPair& pair, const std::string& key, SignedDigest& what)
{
    const Arguments& arguments = invocation.arguments();
    const bool isPss = arguments.has(pssOption.name);
    const std::unique_ptr<ICryptoHash> hash = ICryptoHash::CreateByName(arguments.value(hashOption.name, "sha256"));
    what.hash = hash != nullptr ? hash->algorithmId() : std::uint32_t{algorithm::none};
    if (what.hash == algorithm::none)
        return invocation.misuse("there are no signatures with " + arguments.value(hashOption.name));
    if (arguments.has("salt-length")) {
        const std::uint64_t length = arguments.number("salt-length", 0);
        if (!isPss)
            return invocation.misuse("--salt-length goes with --pss");
        if (length > longestSalt)
            return invocation.misuse("--salt-length is at most " + std::to_string(longestSalt));
        what.padding.masking.saltLength = static_cast<std::int32_t>(length);
    }
    if (isPss && what.hash == algorithm::md5Sha1)
        return invocation.misuse("--pss does not go with md5-sha1");
    if (pair.signatureSize() == 0)
        return invocation.refuse(key, std::string(pair.name()) + " keys do not sign");
    if (isPss && pair.algorithmId() != algorithm::rsaEncryption)
        return invocation.refuse(key, "it is no RSA key, which --pss is for");
    what.padding.scheme = isPss ? SCryptoPadding::Scheme::masked : SCryptoPadding::Scheme::pkcs1;
    what.padding.masking.hash = what.hash;
    return exitDone;
}

int HashFile(Invocation& invocation, const std::string& file, SignedDigest& what)
{
    InputStream input(invocation.console());
    if (!input.open(file))
        return invocation.refuse(file, input.reason());
    const std::unique_ptr<ICryptoHash> hash = ICryptoHash::Create(what.hash);
    Progress progress(invocation.console(), input.size());
    std::vector<std::uint8_t> piece(pieceSize);
    std::int64_t count = 0;
    while ((count = input.read(piece)) > 0) {
        hash->update(piece.data(), static_cast<std::size_t>(count));
        progress.add(static_cast<std::uint64_t>(count));
    }
    if (count < 0)
        return invocation.refuse(file, input.reason());
    what.digest = hash->final();
    return exitDone;
}
