#pragma once

#include <string_view>
#include <vector>

/// Readable names of published object identifiers. The texts live as long as the program.

/// The description of a dotted OID ("2.5.4.3" gives "commonName (CN)"); null when the table does not have it.
///
/// The row is the one that begins with the whole of `dotted` and goes on with a blank, so an arc never answers for what lies under
/// it, and empty text answers nothing.
const char* FindOidName(std::string_view dotted);

struct OidName {
    std::string_view dotted;
    const char* name;
};

/// Every row whose description contains `part`, ASCII letters in either case, in the order of the bytes of the dotted text. Empty
/// text is contained in every description.
std::vector<OidName> FindOidsByName(std::string_view part);
