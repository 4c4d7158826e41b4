#pragma once

#include <string_view>
#include <vector>

/// Readable names of published object identifiers, those of object_identifiers.txt. The texts live as long as the program.

namespace ccrypto {

/// The name of a dotted OID ("2.5.4.3" gives "commonName (CN)"); null when the table does not have it.
///
/// The row is the one that begins with the whole of `dotted` followed by a blank, so an arc never answers for what is registered
/// under it, and empty text has no answer.
[[nodiscard]] const char* FindOidName(std::string_view dotted);

struct OidName {
    std::string_view dotted;
    const char* name;
};

/// Every row whose name contains `part`, ASCII letters in either case, in the order of the numbers: "1.2.9" before "1.2.10". Empty
/// text is contained in every name.
[[nodiscard]] std::vector<OidName> FindOidsByName(std::string_view part);

} // namespace ccrypto
