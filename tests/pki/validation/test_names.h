#pragma once

#include "pki/x509/extensions.h"
#include "tests/pki/x509/test_authority.h"

#include <initializer_list>
#include <string_view>

// Alternative names as the tables of the tests write them.

namespace ccrypto {

/// "dns:example.com", "email:a@b", "uri:http://c/", "dir:C=FI,O=Example", "ip:" and octets in hexadecimal digits, "other:",
/// "x400:", "edi:", "id:" and any characters.
[[nodiscard]] GeneralName TestGeneralName(std::string_view text);
[[nodiscard]] GeneralNames TestGeneralNames(std::initializer_list<std::string_view> texts);

} // namespace ccrypto
