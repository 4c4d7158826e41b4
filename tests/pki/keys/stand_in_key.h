#pragma once

#include "pki/keys/key_pair.h"

#include <memory>
#include <vector>

namespace ccrypto {

/// A key that says of itself what another one says, and can do nothing: what it shall do is added.
class StandInKey : public ICryptoKeyPair {
public:
    explicit StandInKey(const ICryptoKeyPair& key) : key_(key) {}

    algorithm::Id algorithmId() const override { return key_.algorithmId(); }
    algorithm::Id curveId() const override { return key_.curveId(); }
    const char* name() const override { return key_.name(); }
    std::uint32_t keySize() const override { return key_.keySize(); }
    bool hasPrivate() const override { return true; }
    std::vector<SCryptoKeyNumber> publicNumbers() const override { return key_.publicNumbers(); }
    std::vector<SCryptoKeyNumber> privateNumbers() const override { return {}; }
    element publicKeyInfo() const override { return key_.publicKeyInfo(); }
    element privateKeyInfo() const override { return {}; }
    element ownForm(KeyForm) const override { return {}; }
    std::unique_ptr<ICryptoKeyPair> publicHalf() const override { return key_.publicHalf(); }
    ICryptoSigner* signer() override { return nullptr; }
    ICryptoDecrypter* decrypter() override { return nullptr; }
    ICryptoKeyAgreement* agreement() override { return nullptr; }

private:
    const ICryptoKeyPair& key_;
};

} // namespace ccrypto
