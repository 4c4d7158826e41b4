#include "crypto/ec/curve_point.h"
#include "fuzz/require.h"
#include "tests/crypto/ec/domain_numbers.h"

#include <algorithm>
#include <utility>
#include <vector>

using namespace ccrypto;

using affine::Number;

namespace {

using Bytes = std::span<const std::uint8_t>;

affine::Sum Plain(const std::optional<CurvePoint>& point)
{
    if (!point.has_value())
        return std::nullopt;
    return affine::Point{Number::FromBytes(std::as_const(*point).x()), Number::FromBytes(std::as_const(*point).y())};
}

/// Nothing for 0, which makes infinity.
std::optional<CurvePoint> Times(const std::optional<CurvePoint>& point, const Number& scalar)
{
    if (!point.has_value() || scalar.isZero())
        return std::nullopt;
    std::vector<std::uint8_t> bytes(point->curve().orderBytes);
    Require(scalar.toBytes(bytes));
    return Multiply(*point, bytes);
}

/// Nothing for infinity.
std::optional<CurvePoint> Sum(const std::optional<CurvePoint>& left, const std::optional<CurvePoint>& right)
{
    if (!left.has_value() || !right.has_value())
        return left.has_value() ? left : right;
    return Add(*left, *right);
}

/// Points that are taken come out as they went in.
std::optional<CurvePoint> Decode(algorithm::Id curve, Bytes bytes)
{
    const auto point = CurvePoint::FromBytes(curve, bytes);
    if (point.has_value())
        Require(std::ranges::equal(point->bytes(bytes[0] != 4).bytes(), bytes));
    return point;
}

} // namespace

/// The first byte names the curve, the second one a form of points; then come two scalars, each with its length before it, and
/// then a point. Where the rest is not one, the base point times the first scalar takes its place.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const DomainNumbers& domain = AllDomains()[data[0] % AllDomains().size()];
    const affine::Curve twin = domain.curve();
    Bytes rest(data + 2, size - 2);
    const auto takeScalar = [&] {
        const std::size_t length = rest.empty() ? 0 : std::min<std::size_t>(rest[0] % 80, rest.size() - 1);
        const Number scalar = rest.empty() ? Number() : Number::FromBytes(rest.subspan(1, length)).modulo(domain.order);
        rest = rest.subspan(rest.empty() ? 0 : 1 + length);
        return scalar;
    };
    const Number a = takeScalar();
    const Number b = takeScalar();

    std::optional<CurvePoint> point = Decode(domain.id, rest);
    if (!point.has_value()) {
        std::vector<std::uint8_t> scalar(FindCurve(domain.id)->orderBytes);
        Require(a.toBytes(scalar));
        point = MultiplyBase(domain.id, scalar);
        if (!point.has_value())
            return 0;
    }
    Require(twin.contains(*Plain(point)));
    Require(Plain(Decode(domain.id, point->bytes((data[1] & 1) != 0).bytes())) == Plain(point));

    const auto timesA = Times(point, a);
    const auto timesB = Times(point, b);
    const auto sum = Sum(timesA, timesB);
    Require(Plain(sum) == twin.add(Plain(timesA), Plain(timesB)));
    Require(Plain(sum) == Plain(Times(point, (a + b).modulo(domain.order))));
    Require(Plain(Times(timesA, b)) == Plain(Times(timesB, a)));
    // The twin takes a division for each bit.
    constexpr std::uint32_t maxBitsOfTwin = 24;
    if (b.bits() <= maxBitsOfTwin)
        Require(Plain(timesB) == twin.multiply(b, Plain(point)));
    return 0;
}
