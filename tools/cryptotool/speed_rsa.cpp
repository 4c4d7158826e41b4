#include "asn1/algorithm_table.h"
#include "crypto/montgomery_calls.h"
#include "crypto/rsa.h"
#include "tools/cryptotool/speed_row.h"

#include <array>
#include <memory>

namespace {

using Key = std::shared_ptr<const CCryptoRSA>;
using PrepareCall = SpeedRow::Call (*)(const Key& key);

constexpr std::array<std::uint8_t, 32> digest = {1, 2, 3};

SpeedRow::Call PrepareSign(const Key& key)
{
    return [key] { key->signPKCS1(algorithm::sha256, digest); };
}

SpeedRow::Call PrepareVerify(const Key& key)
{
    return [key, signature = key->signPKCS1(algorithm::sha256, digest)] {
        key->verifyPKCS1(algorithm::sha256, digest, signature.bytes());
    };
}

/// Makes the key when the first of its rows wants it.
class LateKey {
public:
    explicit LateKey(std::uint32_t bits) : bits_(bits) {}

    const Key& get()
    {
        if (key_ == nullptr)
            key_ = CCryptoRSA::Generate(bits_);
        return key_;
    }

private:
    std::uint32_t bits_;
    Key key_;
};

} // namespace

void AddRsaRows(SpeedRows& rows)
{
    const char* const variant = ChooseVariant<MontgomeryCalls>(MontgomeryVariants()).name;
    const struct {
        const char* name;
        PrepareCall prepare;
    } operations[] = {{" sign", PrepareSign}, {" verify", PrepareVerify}};
    for (const std::uint32_t bits : {2048, 4096}) {
        const auto key = std::make_shared<LateKey>(bits);
        for (const auto& operation : operations)
            rows.push_back({"RSA-" + std::to_string(bits) + operation.name, variant, true, false,
                            [key, prepare = operation.prepare](std::size_t) {
                                return key->get() != nullptr ? prepare(key->get()) : SpeedRow::Call();
                            }});
    }
}
