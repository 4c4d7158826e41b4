#pragma once

#include "crypto/base/cpu_features.h"
#include "crypto/ec/curve_points.h"

#include <span>

/// The multiples of points of prime256v1 and secp384r1, which are needed most, have code of their own in several variants.
using PointCalls256 = const CurvePoints<4>& (*)();
using PointCalls384 = const CurvePoints<6>& (*)();

std::span<const Variant<PointCalls256>> Prime256Variants();
std::span<const Variant<PointCalls384>> Prime384Variants();

/// Those of the variant in use.
const CurvePoints<4>& PrimePoints256();
const CurvePoints<6>& PrimePoints384();

const CurvePoints<4>& Prime256Adx();
const CurvePoints<6>& Prime384Adx();
