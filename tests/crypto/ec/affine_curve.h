#pragma once

#include "crypto/bigint/big_integer.h"

#include <optional>

namespace ccrypto::affine {

using Number = CCryptoBigInteger;

struct Point {
    Number x, y;

    bool operator==(const Point&) const = default;
};

/// A sum may be infinity, which is no point here.
using Sum = std::optional<Point>;

/// The curve y^2 = x^3 + a * x + b modulo p by the formulas of any textbook: affine coordinates, one division for each addition,
/// one bit of the scalar after the other. It has nothing in common with the library's curves but the integers.
class Curve {
public:
    Curve(Number p, Number a, Number b) : p_(std::move(p)), a_(std::move(a)), b_(std::move(b)) {}

    /// Whether the coordinates are below p and satisfy the equation.
    [[nodiscard]] bool contains(const Point& point) const;
    [[nodiscard]] Point negate(const Point& point) const { return {point.x, (p_ - point.y).modulo(p_)}; }
    [[nodiscard]] Sum add(const Sum& left, const Sum& right) const;
    [[nodiscard]] Sum multiply(const Number& scalar, const Sum& point) const;
    /// 4 * a^3 + 27 * b^2 modulo p, which is 0 for a curve with a cusp or a node.
    [[nodiscard]] Number discriminant() const;

private:
    Number p_, a_, b_;
};

} // namespace ccrypto::affine
