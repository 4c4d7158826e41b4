#include "core/base/algorithm.h"
#include "crypto/bigint/montgomery_calls.h"
#include "crypto/rsa/rsa.h"
#include "tools/cryptotool/commands/speed/speed_row.h"

#include <memory>

namespace ccrypto {

namespace {

using RsaKey = std::shared_ptr<const CCryptoRSA>;
using PrepareRsaCall = SpeedRow::Call (*)(const RsaKey& key);

SpeedRow::Call PrepareRsaSign(const RsaKey& key)
{
    return [key] { static_cast<void>(key->signPKCS1(algorithm::sha256, digestToSign)); };
}

SpeedRow::Call PrepareRsaVerify(const RsaKey& key)
{
    return [key, signature = key->signPKCS1(algorithm::sha256, digestToSign)] {
        static_cast<void>(key->verifyPKCS1(algorithm::sha256, digestToSign, signature.bytes()));
    };
}

/// Makes the key when the first of its rows wants it.
class LateKey {
public:
    explicit LateKey(std::uint32_t bits) : bits_(bits) {}

    const RsaKey& get()
    {
        if (key_ == nullptr)
            key_ = CCryptoRSA::Generate(bits_);
        return key_;
    }

private:
    std::uint32_t bits_;
    RsaKey key_;
};

} // namespace

void AddRsaRows(SpeedRows& rows)
{
    const char* const variant = ChooseVariant<MontgomeryCalls>(MontgomeryVariants()).name;
    const struct {
        const char* name;
        PrepareRsaCall prepare;
    } operations[] = {{" sign", PrepareRsaSign}, {" verify", PrepareRsaVerify}};
    for (const std::uint32_t bits : {2048U, 4096U}) {
        const auto key = std::make_shared<LateKey>(bits);
        for (const auto& operation : operations)
            rows.push_back({"RSA-" + std::to_string(bits) + operation.name, variant, true, false,
                            [key, prepare = operation.prepare](std::size_t) {
                                return key->get() != nullptr ? prepare(key->get()) : SpeedRow::Call();
                            }});
    }
}

} // namespace ccrypto
