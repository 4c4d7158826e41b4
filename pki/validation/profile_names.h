#pragma once

#include <cstdint>
#include <span>

namespace ccrypto {

/// Whether the octets of a name keep RFC 5280, 4.1.2.4, and the types of attributes in its appendix A: relative names in the
/// order of DER, string types that the attribute may have, text that the type can hold, lengths within the
/// upper bounds. Attributes that appendix A does not define may be anything.
/// \param name the SEQUENCE. \return what is wrong; null when nothing is.
[[nodiscard]] const char* NameFormFault(std::span<const std::uint8_t> name);

} // namespace ccrypto
