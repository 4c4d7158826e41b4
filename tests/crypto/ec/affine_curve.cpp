#include "tests/crypto/ec/affine_curve.h"

namespace ccrypto::affine {

bool Curve::contains(const Point& point) const
{
    const Number right = (point.x * point.x + a_) * point.x + b_;
    return point.x < p_ && point.y < p_ && (point.y * point.y - right).modulo(p_).isZero();
}

Sum Curve::add(const Sum& left, const Sum& right) const
{
    if (!left.has_value() || !right.has_value())
        return left.has_value() ? left : right;
    const bool same = *left == *right;
    if (left->x == right->x && (!same || left->y.isZero()))
        return std::nullopt;
    const Number rise = same ? Number(3) * left->x * left->x + a_ : right->y - left->y;
    const Number run = same ? Number(2) * left->y : right->x - left->x;
    const Number slope = (rise * run.modulo(p_).modInverse(p_)).modulo(p_);
    const Number x = (slope * slope - left->x - right->x).modulo(p_);
    return Point{x, (slope * (left->x - x) - left->y).modulo(p_)};
}

Sum Curve::multiply(const Number& scalar, const Sum& point) const
{
    Sum product;
    for (std::uint32_t bit = scalar.bits(); bit-- > 0;) {
        product = add(product, product);
        if (scalar.bit(bit))
            product = add(product, point);
    }
    return product;
}

Number Curve::discriminant() const
{
    return (Number(4) * a_ * a_ * a_ + Number(27) * b_ * b_).modulo(p_);
}

} // namespace ccrypto::affine
