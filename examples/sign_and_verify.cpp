// Hashes a text, signs the digest with a new key, and verifies the signature with the key's public half as others receive it.

#include "core/core.h"
#include "crypto/crypto.h"
#include "pki/pki.h"

#include <cstdio>

using ccrypto::algorithm::Id;

namespace {

/// Says what failed last on this thread, and why.
int Fail(const char* what)
{
    const ccrypto::Failure failure = ccrypto::LastFailure().value_or(ccrypto::Failure{});
    std::fprintf(stderr, "%s: %s: %s\n", what, failure.operation.c_str(), failure.text.c_str());
    return 1;
}

} // namespace

int main()
{
    const std::string_view text = "To whom it may concern";
    const auto hash = ICryptoHash::Create(Id::sha256);
    const element digest = hash->digestOf({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});

    auto made = CCryptoEC::Generate(Id::prime256v1);
    if (made == nullptr)
        return Fail("no key was made");
    CCryptoECKeyPair own(std::move(made));
    const element signature = own.signer()->sign(Id::sha256, digest.bytes());
    if (signature.isEmpty())
        return Fail("not signed");

    CCryptoKeyFile file;
    const auto received = file.Load(own.publicKeyInfo().bytes());
    ICryptoSigner* const verifier = received == nullptr ? nullptr : received->signer();
    if (verifier == nullptr || !verifier->verify(Id::sha256, digest.bytes(), signature.bytes()))
        return Fail("not verified");
    std::printf("verified with a key of %u bits\n", received->keySize());
    return 0;
}
