#include "core/base/algorithm.h"
#include "crypto/ec/ec.h"
#include "crypto/ec/prime_curves.h"
#include "crypto/ec/x25519.h"
#include "tools/cryptotool/commands/speed/speed_row.h"

#include <memory>

namespace ccrypto {

namespace {

using CurveKey = std::shared_ptr<const CCryptoEC>;

SpeedRow::Call PrepareCurveSign(const CurveKey& key)
{
    return [key] { static_cast<void>(key->signHash(digestToSign, SignatureForm::der)); };
}

SpeedRow::Call PrepareCurveVerify(const CurveKey& key)
{
    return [key, signature = key->signHash(digestToSign, SignatureForm::der)] {
        static_cast<void>(key->verifyHash(digestToSign, signature.bytes(), SignatureForm::der));
    };
}

SpeedRow::Call PrepareCurveAgree(const CurveKey& key)
{
    return [key, point = key->publicPoint()] { static_cast<void>(key->agree(point.bytes())); };
}

const char* VariantOf(algorithm::Id curve)
{
    if (curve == algorithm::prime256v1)
        return ChooseVariant<PointCalls256>(Prime256Variants()).name;
    if (curve == algorithm::secp384r1)
        return ChooseVariant<PointCalls384>(Prime384Variants()).name;
    return curve == algorithm::secp521r1 ? ChooseVariant<PointCalls521>(Prime521Variants()).name : "portable";
}

void AddOperation(SpeedRows& rows, const CurveFacts& curve, const char* name, SpeedRow::Call (*prepare)(const CurveKey& key))
{
    rows.push_back({curve.name + std::string(name), VariantOf(curve.id), true, false, [id = curve.id, prepare](std::size_t) {
                        const CurveKey key = CCryptoEC::Generate(id);
                        return key != nullptr ? prepare(key) : SpeedRow::Call();
                    }});
}

void AddX25519(SpeedRows& rows, const CurveFacts& curve)
{
    ForEachUsable(X25519Variants(), [&](const Variant<X25519Ladder>& variant, bool isUsed) {
        rows.push_back({curve.name + std::string(" agree"), variant.name, isUsed, false,
                        [ladder = variant.calls](std::size_t) -> SpeedRow::Call {
                            return [ladder] {
                                constexpr std::array<std::uint8_t, 32> scalar = {8, 1, 2, 3};
                                constexpr std::array<std::uint8_t, 32> base = {9};
                                std::array<std::uint8_t, 32> result;
                                ladder(result.data(), scalar.data(), base.data());
                            };
                        }});
    });
}

} // namespace

void AddCurveRows(SpeedRows& rows)
{
    for (const CurveFacts& curve : Curves()) {
        if (curve.id == algorithm::x25519) {
            AddX25519(rows, curve);
        } else if (curve.signs) {
            AddOperation(rows, curve, " sign", PrepareCurveSign);
            AddOperation(rows, curve, " verify", PrepareCurveVerify);
        } else {
            AddOperation(rows, curve, " agree", PrepareCurveAgree);
        }
    }
}

} // namespace ccrypto
