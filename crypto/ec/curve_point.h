#pragma once

#include "crypto/ec/ec.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace ccrypto {

/// A point of one of the Weierstrass curves of Curves(), never infinity. It may be secret: what is computed with it takes time that
/// does not depend on its coordinates, and they are wiped at the end.
class CurvePoint {
public:
    /// A point as SEC 1, 2.3.3 writes it: 04 x y, or 02 or 03 and x, in time that depends on it. \return nothing, logged, for
    /// another curve, a wrong length or form, a coordinate that is not below the prime, infinity, and a point off the curve.
    [[nodiscard]] static std::optional<CurvePoint> FromBytes(ccrypto::algorithm::Id curve, std::span<const std::uint8_t> bytes);

    [[nodiscard]] const ccrypto::CurveFacts& curve() const { return *facts_; }
    /// Big-endian and CurveFacts::fieldBytes long.
    [[nodiscard]] std::span<const std::uint8_t> x() const { return std::span(x_).first(facts_->fieldBytes); }
    [[nodiscard]] std::span<const std::uint8_t> y() const { return std::span(y_).first(facts_->fieldBytes); }
    /// 04 x y, or 02 or 03 and x.
    [[nodiscard]] element bytes(bool compressed = false) const;

private:
    friend std::optional<CurvePoint> Multiply(const CurvePoint& point, std::span<const std::uint8_t> scalar);
    friend std::optional<CurvePoint> MultiplyBase(ccrypto::algorithm::Id curve, std::span<const std::uint8_t> scalar);
    friend std::optional<CurvePoint> Add(const CurvePoint& left, const CurvePoint& right);

    using Coordinate = std::array<std::uint8_t, 72>;

    explicit CurvePoint(const ccrypto::CurveFacts& facts) : facts_(&facts) {}
    std::span<std::uint8_t> x() { return std::span(x_).first(facts_->fieldBytes); }
    std::span<std::uint8_t> y() { return std::span(y_).first(facts_->fieldBytes); }

    const ccrypto::CurveFacts* facts_;
    ccrypto::Wiped<Coordinate> x_{};
    ccrypto::Wiped<Coordinate> y_{};
};

/// scalar times the point. The scalar is secret, big-endian and CurveFacts::orderBytes long. \return nothing, logged, for another
/// length and unless it is from 1 to order - 1.
[[nodiscard]] std::optional<CurvePoint> Multiply(const CurvePoint& point, std::span<const std::uint8_t> scalar);

/// The same for the base point. \return nothing, logged, for an id that is not that of a Weierstrass curve, too.
[[nodiscard]] std::optional<CurvePoint> MultiplyBase(ccrypto::algorithm::Id curve, std::span<const std::uint8_t> scalar);

/// The sum of any two points of one curve, the same ones included. \return nothing, logged, for points of different curves and when
/// the sum is infinity, which may be known.
[[nodiscard]] std::optional<CurvePoint> Add(const CurvePoint& left, const CurvePoint& right);

} // namespace ccrypto
