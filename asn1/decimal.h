#pragma once

#include "core/element.h"

#include <string_view>

/// The integer element of decimal digits of any length: its big-endian magnitude without leading zeros; zero is one zero byte.
/// The time grows with the square of the length.
element IntegerFromDecimal(std::string_view digits);
