#include "crypto/ec/curve_point.h"

#include "core/diagnostics/auto_logger.h"
#include "crypto/ec/curve_arithmetic.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::uint8_t bothCoordinatesForm = 4;
constexpr std::uint8_t evenYForm = 2; // and 3 for an odd y, without y

/// Whether a scalar may multiply a point of the curve.
bool IsScalar(const CurveFacts& facts, std::span<const std::uint8_t> scalar)
{
    return scalar.size() == facts.orderBytes && CurveArithmetic::Of(facts.id)->isScalar(scalar);
}

constexpr const char* notAScalar = "Scalar of %s is of a wrong length, 0 or not below the order";

} // namespace

std::optional<CurvePoint> CurvePoint::FromBytes(algorithm::Id curve, std::span<const std::uint8_t> bytes)
{
    CCryptoAutoLogger logger("CurvePoint::FromBytes");
    const CurveArithmetic* arithmetic = CurveArithmetic::Of(curve);
    if (arithmetic == nullptr)
        return logger.fail(std::optional<CurvePoint>(), "Not a Weierstrass curve: %u", static_cast<unsigned>(curve));
    CurvePoint point(*FindCurve(curve));
    const std::size_t length = point.facts_->fieldBytes;
    bool valid = false;
    if (bytes.size() == 1 + length && (bytes[0] & ~1u) == evenYForm) {
        std::ranges::copy(bytes.subspan(1), point.x_.begin());
        valid = arithmetic->findY(point.y(), bytes.subspan(1), (bytes[0] & 1) != 0);
    } else if (bytes.size() == 1 + 2 * length && bytes[0] == bothCoordinatesForm) {
        std::ranges::copy(bytes.subspan(1, length), point.x_.begin());
        std::ranges::copy(bytes.subspan(1 + length), point.y_.begin());
        valid = arithmetic->isPoint(point.x(), point.y());
    }
    if (!valid)
        return logger.fail(std::optional<CurvePoint>(), "Point is not on %s", point.facts_->name);
    logger.setResult(true);
    return point;
}

element CurvePoint::bytes(bool compressed) const
{
    element whole;
    whole.append(static_cast<std::uint8_t>(compressed ? evenYForm | (y().back() & 1) : bothCoordinatesForm));
    whole.append(x().data(), facts_->fieldBytes);
    if (!compressed)
        whole.append(y().data(), facts_->fieldBytes);
    return whole;
}

std::optional<CurvePoint> Multiply(const CurvePoint& point, std::span<const std::uint8_t> scalar)
{
    CCryptoAutoLogger logger("Multiply");
    if (!IsScalar(point.curve(), scalar))
        return logger.fail(std::optional<CurvePoint>(), notAScalar, point.curve().name);
    CurvePoint product(point.curve());
    CurveArithmetic::Of(point.curve().id)->multiply(product.x(), product.y(), point.x(), point.y(), scalar);
    logger.setResult(true);
    return product;
}

std::optional<CurvePoint> MultiplyBase(algorithm::Id curve, std::span<const std::uint8_t> scalar)
{
    CCryptoAutoLogger logger("MultiplyBase");
    const CurveArithmetic* arithmetic = CurveArithmetic::Of(curve);
    if (arithmetic == nullptr)
        return logger.fail(std::optional<CurvePoint>(), "Not a Weierstrass curve: %u", static_cast<unsigned>(curve));
    CurvePoint product(*FindCurve(curve));
    if (!IsScalar(product.curve(), scalar))
        return logger.fail(std::optional<CurvePoint>(), notAScalar, product.curve().name);
    arithmetic->multiplyBase(product.x(), product.y(), scalar);
    logger.setResult(true);
    return product;
}

std::optional<CurvePoint> Add(const CurvePoint& left, const CurvePoint& right)
{
    CCryptoAutoLogger logger("Add");
    if (left.curve().id != right.curve().id)
        return logger.fail(std::optional<CurvePoint>(), "A point of %s has no sum with one of %s", left.curve().name,
                           right.curve().name);
    CurvePoint sum(left.curve());
    if (!CurveArithmetic::Of(left.curve().id)->add(sum.x(), sum.y(), {left.x(), left.y()}, {right.x(), right.y()}))
        return logger.fail(std::optional<CurvePoint>(), "Sum of opposite points");
    logger.setResult(true);
    return sum;
}

} // namespace ccrypto
