#pragma once

#include "core/text/element.h"

namespace ccrypto {

/// The bytes of a value without its kind: a text filled in or found as an OCTET STRING.
inline element Octets(const element& value)
{
    return {value.data(), value.length()};
}

} // namespace ccrypto
