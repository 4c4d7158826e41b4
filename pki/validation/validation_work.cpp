#include "pki/validation/validation_work.h"

#include "pki/keys/dsa_key_pair.h"

namespace ccrypto {

std::optional<SignatureResult> ValidationWork::check(const CCrypto_X509_Base& object, const SignatureAlgorithm& algorithm,
                                                     ICryptoKeyPair& key)
{
    if (const std::optional<SignatureResult> known = checked(object, key))
        return known;
    if (!takeSignatures(1))
        return std::nullopt;
    const SignatureResult result = VerifySignature(key, algorithm, object.signedOctets(), object.signature().bytes());
    results_[{&object, &key}] = result;
    return result;
}

std::optional<SignatureResult> ValidationWork::checked(const CCrypto_X509_Base& object, const ICryptoKeyPair& key) const
{
    const auto found = results_.find({&object, &key});
    return found == results_.end() ? std::nullopt : std::optional(found->second);
}

std::shared_ptr<ICryptoKeyPair> ValidationWork::completed(const std::shared_ptr<ICryptoKeyPair>& key,
                                                          const std::shared_ptr<ICryptoKeyPair>& issuer)
{
    if (key->algorithmId() != algorithm::dsa || key->signer() != nullptr)
        return key;
    const auto [position, isNew] = completed_.try_emplace({key.get(), issuer.get()});
    if (isNew)
        position->second = WithInheritedParameters(key, *issuer);
    return position->second;
}

bool ValidationWork::take(std::uint32_t& spent, std::uint32_t count, std::uint32_t limit)
{
    if (exceeded_ || count > limit - spent) {
        exceeded_ = true;
        return false;
    }
    spent += count;
    return true;
}

} // namespace ccrypto
