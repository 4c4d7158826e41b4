#pragma once

#include "crypto/base/cpu_features.h"
#include "crypto/ec/point_multiples.h"

#include <span>

namespace ccrypto {

/// The multiples of points of prime256v1, secp384r1 and secp521r1, which are needed most, have code of their own in several
/// variants.
using PointCalls256 = const PointMultiples<4>& (*)();
using PointCalls384 = const PointMultiples<6>& (*)();
using PointCalls521 = const PointMultiples<9>& (*)();

std::span<const Variant<PointCalls256>> Prime256Variants();
std::span<const Variant<PointCalls384>> Prime384Variants();
std::span<const Variant<PointCalls521>> Prime521Variants();

/// Those of the variant in use.
const PointMultiples<4>& PrimePoints256();
const PointMultiples<6>& PrimePoints384();
const PointMultiples<9>& PrimePoints521();

const PointMultiples<4>& Prime256Adx();
const PointMultiples<6>& Prime384Adx();
const PointMultiples<9>& Prime521Adx();

} // namespace ccrypto
