#pragma once

#include "core/text/element_type.h"

#include <string_view>

namespace ccrypto {

/// The code of a keyword, exactly as it is spelled; `identifier` for any other word.
ElementType KeywordType(std::string_view word);

} // namespace ccrypto
