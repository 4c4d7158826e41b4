#pragma once

#include "core/base/algorithm.h"
#include "tests/crypto/ec/affine_curve.h"

#include <vector>

namespace ccrypto {

/// The numbers of a curve of the library (crypto/ec/curve_domains.h) for those who compute with integers.
struct DomainNumbers {
    algorithm::Id id;
    CCryptoBigInteger p, a, b;
    affine::Point base;
    CCryptoBigInteger order;

    affine::Curve curve() const { return {p, a, b}; }
};

/// All Weierstrass curves.
const std::vector<DomainNumbers>& AllDomains();
const DomainNumbers& DomainOf(algorithm::Id curve);

} // namespace ccrypto
